// The encoded normal turned round; coverage stays.
OND_IN(vec2,uv)
OND_SAMPLER(normalmap_tex)
void main()
{
    vec4 texel = OND_SAMPLE(normalmap_tex, uv);
    OND_FRAGCOLOR = vec4(1.0 - texel.rgb, texel.a);
}
