// Fills what this level lacks from the coarser one, in proportion to the
// missing coverage (colours are premultiplied).
OND_IN(vec2,position)
OND_IN(vec2,texCoord)
OND_SAMPLER(prev_tex)
OND_SAMPLER(base_tex)
uniform vec2 uv_clamp;

void main()
{
    vec4 prev = OND_SAMPLE(prev_tex, position);
    vec4 base = OND_SAMPLE(base_tex, min(texCoord, uv_clamp));
    OND_FRAGCOLOR = (1.0 - base.a) * prev + base;
}
