// A world-space normal map of the low mesh (from the detail bake) brought
// into the low mesh's tangent frame: the exact inverse of the transform a
// renderer applies with the same interpolated, unnormalised frame.
OND_IN(vec2,uv0)
OND_IN(vec3,normal)
OND_IN(vec3,bitangent)
OND_IN(vec3,tangent)
OND_SAMPLER(worldnormal_tex)
uniform int invert_green;
#ifdef PER_FRAG_BINORMAL
uniform int per_frag_binormal;
#endif

void main()
{
    vec3 N = normal;
    vec3 T = tangent;
    vec3 B = bitangent;
#ifdef PER_FRAG_BINORMAL
    if (per_frag_binormal != 0)
        interpolateTangent(N, T, B);
#endif
    vec4 texel = OND_SAMPLE(worldnormal_tex, uv0);
    if (texel.a < 0.5) {
        OND_FRAGCOLOR = vec4(0.0);
        return;
    }
    vec3 w = texel.rgb * 2.0 - 1.0;
    mat3 frame = mat3(T, B, N);
    vec3 t = abs(determinant(frame)) > 1e-12 ? inverse(frame) * w : vec3(dot(w, T), dot(w, B), dot(w, N));
    float l = length(t);
    t = l > 1e-12 ? t / l : vec3(0.0, 0.0, 1.0);
    if (invert_green != 0)
        t.y = -t.y;
    OND_FRAGCOLOR = vec4(0.5 * t + 0.5, 1.0);
}
