// The walk state of a tile as occlusion: grey from the running result,
// alpha from the finished flag, 0 where no fragment was drawn.
OND_IN(vec2,uv)
OND_SAMPLER(smp0)
void main()
{
    OND_FRAGCOLOR = OND_SAMPLE(smp0, uv).aaab;
}
