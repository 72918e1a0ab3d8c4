// One growth step, in place. The alpha of a texel written at step s is
// (256 - (s + 1)) / 256, so a neighbour counts only when its alpha is that
// of the step before: a write of this same step, seen through another
// group's halo, is never mistaken for a source. SRC_STEP_KEY compares alphas
// as the image stores them, so that 16-bit maps match their own steps.
layout(local_size_x = 14, local_size_y = 14) in;
layout(SRC_LAYOUT) uniform SRC_IMAGE usrc;
uniform uint stepindex;

// The group's 14 x 14 texels with a one-texel halo.
shared vec4 block[256];

vec4 loadTexel(ivec2 p)
{
    return vec4(imageLoad(usrc, p)) / SRC_MAX;
}

void main()
{
    ivec2 origin = ivec2(gl_WorkGroupID.xy) * 14;
    ivec2 local = ivec2(gl_LocalInvocationID.xy);
    ivec2 pos = origin + local;
    block[(local.y + 1) * 16 + local.x + 1] = loadTexel(pos);

    // The first 60 invocations walk the 60 texels of the halo ring.
    int index = int(gl_LocalInvocationIndex);
    if (index < (14 + 1) * 4) {
        int base = -abs(index - 30);
        int v0 = min(15, base + 30);
        int v1 = max(0, base + 15);
        int midpoint = index / 30;
        int x = (1 - midpoint) * v0 + midpoint * v1;
        int y = (1 - midpoint) * v1 + midpoint * v0;
        block[y * 16 + x] = loadTexel(origin + ivec2(x - 1, y - 1));
    }
    barrier();

    if (block[(local.y + 1) * 16 + local.x + 1].a != 0.0)
        return;

    const ivec2 offsets[8] = ivec2[8](ivec2(-1, -1), ivec2(-1, 0), ivec2(-1, 1), ivec2(0, 1),
                                      ivec2(1, 1), ivec2(1, 0), ivec2(1, -1), ivec2(0, -1));
    float lastStepAlpha = (256.0 - float(stepindex)) / 256.0;
    vec4 sum = vec4(0.0);
    int taken = 0;
    for (int i = 0; i < 8; ++i) {
        ivec2 q = local + ivec2(1) + offsets[i];
        vec4 neighbour = block[q.y * 16 + q.x];
        if (SRC_STEP_KEY(neighbour.a) == SRC_STEP_KEY(lastStepAlpha)) {
            sum += neighbour;
            ++taken;
        }
    }
    vec4 result = vec4(0.0);
    if (sum.a != 0.0) {
        result.rgb = sum.rgb / float(taken);
        result.a = (256.0 - float(stepindex + 1u)) / 256.0;
    }
    imageStore(usrc, pos, SRC_VEC4(result * SRC_MAX));
}
