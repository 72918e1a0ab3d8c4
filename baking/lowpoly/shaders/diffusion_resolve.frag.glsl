// Back from premultiplied colour: every texel leaves fully covered.
OND_IN(vec2,texCoord)
OND_SAMPLER(prev_tex)

void main()
{
    vec4 prev = OND_SAMPLE(prev_tex, texCoord);
    vec3 colour = prev.rgb;
    if (prev.a != 0.0)
        colour /= prev.a;
    OND_FRAGCOLOR = vec4(colour, 1.0);
}
