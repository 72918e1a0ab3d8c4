#pragma once
// Pull-push fill of every texel a texture leaves empty: colour flows in from
// the covered texels (alpha not 0, colour premultiplied) through a pyramid
// of half-size images, and every texel ends with alpha one. Maps above 1024
// on a side are first reduced by plain halving, so that the recursive pull
// works on textures of at most 1024. Runs in the current context with the
// post-process's frame buffer and vertex array bound.

#include "baking/lowpoly/GLProgram.h"
#include "baking/lowpoly/Texture.h"

#include <cstdint>

namespace Ond::Baking {

class Diffusion
{
public:
    explicit Diffusion(unsigned framebuffer);

    // False when a program did not build (the compiler's text is logged).
    bool isValid() const { return m_copy && m_pull && m_push && m_resolve && m_upsample; }

    void run(Texture& texture);

private:
    void fill(const Texture& level);
    void pull(const Texture& base, const Texture& target, uint32_t w, uint32_t h);
    void bindTarget(const Texture& target, uint32_t w, uint32_t h) const;
    static void bindSampler(int unit, const Texture& texture);
    static void draw();

    unsigned m_framebuffer;
    GLProgramSPtr m_copy;
    GLProgramSPtr m_pull;
    GLProgramSPtr m_push;
    GLProgramSPtr m_resolve;
    GLProgramSPtr m_upsample;
};

} // namespace Ond::Baking
