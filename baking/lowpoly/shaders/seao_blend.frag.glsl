// The last two element passes over- and under-shade in turn; their weighted
// mean is what the texels see.
OND_IN(vec2,uv)
OND_SAMPLER(smpocc0)
OND_SAMPLER(smpocc1)
uniform vec2 weights;
void main()
{
    float o0 = OND_SAMPLE(smpocc0, uv).r;
    float o1 = OND_SAMPLE(smpocc1, uv).r;
    OND_FRAGCOLOR = vec4(weights.x * min(o0, o1) + weights.y * max(o0, o1));
}
