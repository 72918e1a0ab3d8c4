// Turns the step-coded alphas of the growth into full coverage.
layout(local_size_x = 16, local_size_y = 16) in;
layout(SRC_LAYOUT) uniform SRC_IMAGE usrc;

void main()
{
    ivec2 pos = ivec2(gl_GlobalInvocationID.xy);
    SRC_VEC4 texel = imageLoad(usrc, pos);
    if (texel.a != SRC_ZERO) {
        texel.a = SRC_MAX;
        imageStore(usrc, pos, texel);
    }
}
