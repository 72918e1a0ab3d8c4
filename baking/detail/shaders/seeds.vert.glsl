// The low mesh (or the cage) drawn in UV space for one raster tile. Image
// rows are flipped here, so that the read-back starts with the top row.
OND_IN(vec3,in_position)
OND_IN(vec2,in_uv0)
#ifndef POS_ONLY
OND_IN(vec3,in_normal)
#endif
#if defined(USE_NORMAL_SMOOTH) || defined(USE_SKEW_MAP)
layout(location = 5) in vec3 in_normalSmooth;
#endif

uniform vec4 uvWindow;
uniform mat3 normalMatrix;
uniform mat4 model;

OND_OUT(vec3,position)
#ifndef POS_ONLY
OND_OUT(vec3,normal)
#endif
#if defined(USE_NORMAL_SMOOTH) || defined(USE_SKEW_MAP)
OND_OUT(vec3,normalSmooth)
#endif
#if defined(USE_SKEW_MAP) || defined(USE_CAGE)
OND_OUT(vec2,texCoords)
#endif

void main()
{
    vec4 p = vec4(in_uv0 * uvWindow.zw - uvWindow.xy, 0.0, 1.0);
    vec4 pflip = vec4(p.x, -p.y, p.z, p.w);
    gl_Position = pflip;
    position = (model * vec4(in_position, 1.0)).xyz;
#ifndef POS_ONLY
    normal = normalize(normalMatrix * in_normal);
#endif
#if defined(USE_NORMAL_SMOOTH) || defined(USE_SKEW_MAP)
    normalSmooth = normalize(normalMatrix * in_normalSmooth);
#endif
#if defined(USE_SKEW_MAP)
    texCoords = p.xy * 0.5 + 0.5;
#elif defined(USE_CAGE)
    // The cage target was itself written through the flip.
    texCoords = pflip.xy * 0.5 + 0.5;
#endif
}
