// One growth step: an empty texel (alpha below one half) takes the
// alpha-weighted mean of its eight neighbours.
OND_IN(vec2,position)
OND_SAMPLER(base_tex)
uniform vec2 uv_step;

void main()
{
    vec4 texel = OND_SAMPLE(base_tex, position);
    if (texel.a >= 0.5) {
        OND_FRAGCOLOR = texel;
        return;
    }
    vec4 sum = OND_SAMPLE(base_tex, position + uv_step * vec2(1.0, 0.0));
    sum += OND_SAMPLE(base_tex, position + uv_step * vec2(1.0, 1.0));
    sum += OND_SAMPLE(base_tex, position + uv_step * vec2(0.0, 1.0));
    sum += OND_SAMPLE(base_tex, position + uv_step * vec2(-1.0, 1.0));
    sum += OND_SAMPLE(base_tex, position + uv_step * vec2(-1.0, 0.0));
    sum += OND_SAMPLE(base_tex, position + uv_step * vec2(-1.0, -1.0));
    sum += OND_SAMPLE(base_tex, position + uv_step * vec2(0.0, -1.0));
    sum += OND_SAMPLE(base_tex, position + uv_step * vec2(1.0, -1.0));
    if (sum.a != 0.0)
        sum /= sum.a;
    OND_FRAGCOLOR = sum;
}
