// Half-size image of the w x h corner of base_tex; the clamp keeps the
// bilinear footprint inside the corner.
OND_IN(vec2,texCoord)
OND_SAMPLER(base_tex)
uniform vec2 uv_clamp;

void main()
{
    OND_FRAGCOLOR = OND_SAMPLE(base_tex, min(texCoord, uv_clamp));
}
