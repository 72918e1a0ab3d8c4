#include "baking/lowpoly/Diffusion.h"

#include "baking/lowpoly/GLSLSource.h"

#include <GL/glew.h>

#include <algorithm>
#include <vector>

namespace Ond::Baking {

namespace {

constexpr uint32_t pyramidLimit = 1024;

GLProgramSPtr postProcessProgram(const char* fragmentFile)
{
    return GLProgramCache::instance().program(GLSLSource::vertexText("postprocess.vert.glsl"),
                                              GLSLSource::fragmentText(fragmentFile));
}

} // namespace

Diffusion::Diffusion(unsigned framebuffer)
    : m_framebuffer(framebuffer)
    , m_copy(postProcessProgram("diffusion_copy.frag.glsl"))
    , m_pull(postProcessProgram("diffusion_pull.frag.glsl"))
    , m_push(postProcessProgram("diffusion_push.frag.glsl"))
    , m_resolve(postProcessProgram("diffusion_resolve.frag.glsl"))
    , m_upsample(postProcessProgram("diffusion_upsample.frag.glsl"))
{
}

void Diffusion::run(Texture& texture)
{
    if (!isValid())
        return;

    // Levels above the pyramid limit, level 0 being the caller's texture.
    std::vector<Texture> levels{texture};
    while (levels.back().width > pyramidLimit || levels.back().height > pyramidLimit) {
        const Texture& finer = levels.back();
        Texture coarser = finer.withSize(std::max(finer.width >> 1, 1u), std::max(finer.height >> 1, 1u));
        coarser.create();
        levels.push_back(coarser);
    }
    m_copy->bind();
    m_copy->setInt("base_tex", 0);
    m_copy->setVec2("uv_size", 1.0f, 1.0f);
    for (size_t i = 1; i < levels.size(); ++i) {
        bindTarget(levels[i], levels[i].width, levels[i].height);
        bindSampler(0, levels[i - 1]);
        draw();
    }

    fill(levels.back());

    m_upsample->bind();
    m_upsample->setInt("prev_tex", 0);
    m_upsample->setVec2("uv_size", 1.0f, 1.0f);
    for (size_t i = levels.size() - 1; i-- > 0;) {
        bindTarget(levels[i], levels[i].width, levels[i].height);
        // What the finer level covers stays; the coarser colour fills the rest.
        glEnable(GL_BLEND);
        glBlendEquation(GL_FUNC_ADD);
        glBlendFunc(GL_ONE_MINUS_DST_ALPHA, GL_ONE);
        bindSampler(0, levels[i + 1]);
        draw();
    }

    glFinish();
    glDisable(GL_BLEND);
    glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture.name, 0);
    levels.front().name = 0;
    for (Texture& level : levels)
        level.destroy();
    GLProgram::release();
}

void Diffusion::fill(const Texture& level)
{
    Texture pulled = level.withSize(level.width, level.height);
    pulled.create();
    pull(level, pulled, level.width, level.height);

    bindTarget(level, level.width, level.height);
    m_resolve->bind();
    m_resolve->setInt("prev_tex", 0);
    m_resolve->setVec2("uv_size", 1.0f, 1.0f);
    bindSampler(0, pulled);
    draw();
    pulled.destroy();
}

void Diffusion::pull(const Texture& base, const Texture& target, uint32_t w, uint32_t h)
{
    const uint32_t w2 = std::max((w + 1) / 2, 1u);
    const uint32_t h2 = std::max((h + 1) / 2, 1u);
    Texture coarser = base.withSize(w2, h2);
    coarser.create();

    const float usedW = float(std::max(w, 1u));
    const float usedH = float(std::max(h, 1u));
    const float clampU = (usedW - 0.5f) / float(base.width);
    const float clampV = (usedH - 0.5f) / float(base.height);
    const float sizeU = usedW / float(base.width);
    const float sizeV = usedH / float(base.height);

    if (w > 1 || h > 1) {
        // The half-size image goes to the corner of `target`, whose own
        // contents are written only after the recursion has read it.
        bindTarget(target, w2, h2);
        m_pull->bind();
        m_pull->setInt("base_tex", 0);
        m_pull->setVec2("uv_size", sizeU, sizeV);
        m_pull->setVec2("uv_clamp", clampU, clampV);
        bindSampler(0, base);
        draw();
        pull(target, coarser, w2, h2);
    } else {
        bindTarget(coarser, 1, 1);
        glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
        glClear(GL_COLOR_BUFFER_BIT);
    }

    bindTarget(target, uint32_t(usedW), uint32_t(usedH));
    m_push->bind();
    m_push->setInt("prev_tex", 0);
    m_push->setInt("base_tex", 1);
    m_push->setVec2("uv_size", sizeU, sizeV);
    m_push->setVec2("uv_clamp", clampU, clampV);
    bindSampler(0, coarser);
    bindSampler(1, base);
    draw();
    glActiveTexture(GL_TEXTURE1);
    glBindTexture(GL_TEXTURE_2D, 0);
    glActiveTexture(GL_TEXTURE0);
    coarser.destroy();
}

void Diffusion::bindTarget(const Texture& target, uint32_t w, uint32_t h) const
{
    glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, target.name, 0);
    glViewport(0, 0, GLsizei(w), GLsizei(h));
}

void Diffusion::bindSampler(int unit, const Texture& texture)
{
    glActiveTexture(GLenum(GL_TEXTURE0 + unit));
    glBindTexture(GL_TEXTURE_2D, texture.name);
}

void Diffusion::draw()
{
    glDrawArrays(GL_TRIANGLES, 0, 3);
    glActiveTexture(GL_TEXTURE0);
}

} // namespace Ond::Baking
