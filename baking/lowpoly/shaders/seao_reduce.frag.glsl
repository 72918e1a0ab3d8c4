// Mean of the red channel over blocks of `factor` texels a side, from
// linear taps at the centres of 2 x 2 texels (or of the texel itself on a
// side of factor 1).
OND_IN(vec2,uv)
OND_SAMPLER(smpsrc)
uniform vec2 srcsize;
uniform vec2 dstsize;
uniform int factorx;
uniform int factory;
void main()
{
    vec2 corner = floor(uv * dstsize) * vec2(factorx, factory);
    int tapsx = max(factorx / 2, 1);
    int tapsy = max(factory / 2, 1);
    float sum = 0.0;
    for (int j = 0; j < tapsy; ++j)
        for (int i = 0; i < tapsx; ++i) {
            vec2 offset = vec2(factorx == 1 ? 0.5 : float(2 * i + 1), factory == 1 ? 0.5 : float(2 * j + 1));
            sum += OND_SAMPLE(smpsrc, (corner + offset) / srcsize).r;
        }
    OND_FRAGCOLOR = vec4(sum / float(tapsx * tapsy));
}
