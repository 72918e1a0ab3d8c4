// Seeds of one raster tile: world position, ray direction, mesh id.
#define output0 OND_FRAGCOLOR

OND_IN(vec3,position)
#ifndef POS_ONLY
OND_IN(vec3,normal)
layout(location = 1) out vec4 output1;
layout(location = 2) out vec4 output2;
uniform vec4 meshIdColor;
#endif
#if defined(USE_NORMAL_SMOOTH) || defined(USE_SKEW_MAP)
OND_IN(vec3,normalSmooth)
#endif
#if defined(USE_SKEW_MAP) || defined(USE_CAGE)
OND_IN(vec2,texCoords)
#endif
#ifdef USE_SKEW_MAP
OND_SAMPLER(skew_tex)
uniform float invertSkew;
#endif
#ifdef USE_CAGE
OND_SAMPLER(cagePosTex)
#endif

void main()
{
    output0 = vec4(position, 1.0);
#ifndef POS_ONLY
#if defined(USE_SKEW_MAP)
    vec4 skew = OND_SAMPLE(skew_tex, texCoords);
    float skewValue = mix(skew.x, 1.0 - skew.x, invertSkew);
    output1 = vec4(safe_normalize(mix(normalSmooth, normal, skewValue)), 1.0);
#elif defined(USE_CAGE)
    output1 = vec4(OND_SAMPLE(cagePosTex, texCoords).xyz - position, 1.0);
#elif defined(USE_NORMAL_SMOOTH)
    output1 = vec4(normalize(normalSmooth), 1.0);
#else
    output1 = vec4(normalize(normal), 1.0);
#endif
    output2 = meshIdColor;
#endif
}
