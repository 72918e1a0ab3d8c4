OND_IN(vec2,uv0)
OND_IN(vec3,normal)
OND_IN(vec3,bitangent)
OND_IN(vec3,tangent)
OND_SAMPLER(normalmap_tex)
uniform int invert_green;
uniform int normalmap_type;
uniform int use_normalmap;
#ifdef PER_FRAG_BINORMAL
uniform int per_frag_binormal;
#endif

void main()
{
    // The frame as interpolated: renormalising would change what the
    // tangent-space map was baked against.
    vec3 N = normal;
    vec3 T = tangent;
    vec3 B = bitangent;
#ifdef PER_FRAG_BINORMAL
    if (per_frag_binormal != 0)
        interpolateTangent(N, T, B);
#endif
    vec3 outputData = vec3(0.0, 1.0, 0.0);
    if (use_normalmap != 0) {
        vec4 texel = OND_SAMPLE(normalmap_tex, uv0);
        if (texel.a < 0.5) {
            OND_FRAGCOLOR = vec4(0.0);
            return;
        }
        vec3 n = texel.rgb * 2.0 - 1.0;
        if (invert_green != 0)
            n.g = -n.g;
        outputData = T * n.x + B * n.y + N * n.z;
    } else if (normalmap_type == 0) {
        outputData = N;
    } else if (normalmap_type == 1) {
        outputData = T;
    } else if (normalmap_type == 2) {
        outputData = B;
    }
    OND_FRAGCOLOR = vec4(0.5 * safe_normalize(outputData) + 0.5, 1.0);
}
