#pragma once
// Growth of the covered texels of a texture (alpha not 0) by a number of
// one-texel steps, each empty texel taking the mean colour of the neighbours
// filled one step before. Runs in the current context with the post-process's
// frame buffer and vertex array bound.

#include "baking/lowpoly/Texture.h"

#include <cstdint>

namespace Ond::Baking {

class Dilation
{
public:
    // Whether the in-place compute growth can run on this texture in the
    // current context: GLSL 4.30 and an RGBA32F or RGBA16 texture.
    static bool canUseCompute(const Texture& texture);

    // One dispatch per step on the texture itself; alpha codes the step
    // until the last pass sets every covered alpha to one.
    static void runCompute(Texture& texture, uint32_t width);

    // One draw per step between the texture and a second one; afterwards
    // `texture` holds the result, possibly under the other name.
    static void runFragment(Texture& texture, uint32_t width, unsigned framebuffer);
};

} // namespace Ond::Baking
