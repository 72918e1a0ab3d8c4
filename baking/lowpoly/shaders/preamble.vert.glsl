#ifdef OND_SL_330
#define OND_SAMPLER(name) uniform sampler2D name;
#define OND_IN(type,name) in type name;
#define OND_OUT(type,name) out type name;
#define OND_SAMPLE(smp,uv) texture(smp,uv)
#else
#define OND_SAMPLER(name) uniform sampler2D name;
#define OND_IN(type,name) attribute type name;
#define OND_OUT(type,name) varying type name;
#define OND_SAMPLE(smp,uv) texture2D(smp,uv)
#endif
#define OND_SAMPLELOD(smp,uv,l) textureLod(smp,uv,l)
#define OND_SAMPLEGRAD(smp,uv0,uv1,uv2) textureGrad(smp,uv0,uv1,uv2)
vec3 hnormalize(vec4 v) { return v.xyz / v.w; }
