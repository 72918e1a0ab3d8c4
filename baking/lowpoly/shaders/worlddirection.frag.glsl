OND_IN(vec2,uv0)
OND_IN(vec3,normal)
OND_IN(vec3,bitangent)
OND_IN(vec3,tangent)
OND_SAMPLER(directionmap_tex)
uniform vec3 world_direction;
uniform int invert_green;
uniform int const_direction;
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
    // Rows of the inverse of the matrix with columns T, B, N.
    vec3 NT = cross(N, T);
    vec3 BN = cross(B, N);
    vec3 TB = cross(T, B);
    float mdet = dot(T, BN);
    float invd = abs(mdet) > 1e-5 ? 1.0 / mdet : 1e5;
    mat3 world2local = transpose(mat3(BN, NT, TB)) * invd;

    vec4 result = vec4(0.0);
    if (const_direction != 0) {
        result = vec4(safe_normalize(world2local * world_direction), 1.0);
    } else {
        vec4 texel = OND_SAMPLE(directionmap_tex, uv0);
        if (texel.a > 0.0)
            result = vec4(safe_normalize(world2local * (texel.rgb * 2.0 - 1.0)), 1.0);
    }
    if (invert_green != 0)
        result.y = -result.y;
    OND_FRAGCOLOR = result.a > 0.0 ? vec4(0.5 * result.xyz + 0.5, 1.0) : vec4(0.0);
}
