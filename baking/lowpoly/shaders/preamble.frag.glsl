#define OND_SAMPLER(name) uniform sampler2D name;
#define OND_IN(type,name) in type name;
#define OND_OUT(type,name) out type name;
#define OND_SAMPLE(smp,uv) texture(smp,uv)
#define OND_SAMPLELOD(smp,uv,l) textureLod(smp,uv,l)
#define OND_SAMPLEGRAD(smp,uv0,uv1,uv2) textureGrad(smp,uv0,uv1,uv2)
#define OND_FRAGCOLOR ocolor0
OND_OUT(vec4,ocolor0)
vec3 hnormalize(vec4 v) { return v.xyz / v.w; }
// Zero for a vector too short to have a direction.
vec3 safe_normalize(vec3 v)
{
    float l = length(v);
    return l > 1e-5 ? v / l : vec3(0.0);
}
