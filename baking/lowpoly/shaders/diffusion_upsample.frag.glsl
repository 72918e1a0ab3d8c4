// The coarser level, drawn under blending into the finer one.
OND_IN(vec2,position)
OND_SAMPLER(prev_tex)

void main()
{
    OND_FRAGCOLOR = OND_SAMPLE(prev_tex, position);
}
