// Bilinear half-size copy for the levels above the pull-push pyramid.
OND_IN(vec2,texCoord)
OND_SAMPLER(base_tex)

void main()
{
    OND_FRAGCOLOR = OND_SAMPLE(base_tex, texCoord);
}
