// One pass of the occlusion of the surface elements themselves: each
// element texel walks the tree, taking whole subtrees as one disc when they
// are far enough, and sums what the discs hide of its hemisphere, each
// weighted by how visible that disc was found in the previous pass.
OND_IN(vec2,uv)
OND_SAMPLER(smppos)
OND_SAMPLER(smpnrm)
OND_SAMPLER(smpind)
OND_SAMPLER(smpocc)
uniform vec2 rootind;
uniform float epsi;
// The packed coordinates are texel centres: fetching the texel they name
// gives what nearest filtering would, without the filtering.
vec2 packsize;
#define PACKED(smp, c) texelFetch(smp, ivec2((c) * packsize), 0)
uniform float distfade;

void main()
{
    packsize = vec2(textureSize(smppos, 0));
    vec2 vuv0 = uv;
    vec3 curpos = PACKED(smppos, vuv0).xyz;
    vec3 curnrm = PACKED(smpnrm, vuv0).xyz;
    // A texel without element (padding, empty triangle) sees nothing.
    if (dot(curnrm, curnrm) == 0.0) {
        OND_FRAGCOLOR = vec4(1.0);
        return;
    }
    float result = 0.0;
    vec4 seind = vec4(rootind, 0.0, 0.0);
    while (seind.x != 0.0) {
        vec2 curind = seind.xy;
        vec4 sepos = PACKED(smppos, curind);
        seind = PACKED(smpind, curind).zwxy; // left, next
        vec3 v = sepos.xyz - curpos;
        float d2 = dot(v, v) + 1e-16;
        if (d2 >= -epsi * sepos.w) {
            seind.xy = seind.zw;
            v /= sqrt(d2);
            vec4 senrm = PACKED(smpnrm, curind);
            float occ = PACKED(smpocc, curind).r;
            float area = abs(sepos.w);
            result += occ * area * clamp(dot(senrm.xyz, -v), 0.0, 1.0) * clamp(dot(curnrm, v), 0.0, 1.0)
                / ((d2 * 3.14159265 + area) * (1.0 + distfade * sqrt(d2)));
        }
    }
    OND_FRAGCOLOR = vec4(max(1.0 - result, 0.0));
}
