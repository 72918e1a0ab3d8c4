#include "baking/lowpoly/PostProcess.h"

#include "baking/lowpoly/Diffusion.h"
#include "baking/lowpoly/Dilation.h"
#include "baking/lowpoly/Texture.h"
#include "program/LogChannel.h"

#include <GL/glew.h>

#include <QElapsedTimer>

#include <algorithm>

namespace Ond::Baking {

namespace {

// Logs the time spent in a stage when it goes out of scope.
class StageTimer
{
public:
    explicit StageTimer(const char* label) : m_label(label) { m_timer.start(); }
    ~StageTimer()
    {
        Core::bakersChannel().info(QStringLiteral("%1: %2 ms").arg(QLatin1String(m_label)).arg(m_timer.elapsed()));
    }
    StageTimer(const StageTimer&) = delete;
    StageTimer& operator=(const StageTimer&) = delete;

private:
    const char* m_label;
    QElapsedTimer m_timer;
};

} // namespace

bool dilationUsesCompute(Surfaces::PixelFormat format)
{
    Texture probe;
    probe.format = TextureFormat::of(format);
    return Dilation::canUseCompute(probe);
}

void postProcess(Surfaces::SurfaceSPtr& surface, uint32_t dilationWidth, bool applyDiffusion, DilationPath path)
{
    if (dilationWidth == 0 && !applyDiffusion)
        return;
    // Without an alpha channel every texel is covered: nothing would change.
    if (!surface || surface->isEmpty() || Surfaces::channelCount(surface->format()) != 4)
        return;

    // Past the map's width plus height every texel is reached; more steps
    // change nothing and only a huge option would ask for them.
    dilationWidth = uint32_t(std::min<uint64_t>(dilationWidth, uint64_t(surface->width()) + surface->height()));

    Texture texture = Texture::upload(*surface);
    if (!texture.name)
        return;

    GLint previousFramebuffer = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &previousFramebuffer);
    GLuint framebuffer = 0;
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture.name, 0);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);

    GLuint vertexArray = 0;
    glGenVertexArrays(1, &vertexArray);
    glBindVertexArray(vertexArray);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glDisable(GL_BLEND);

    if (dilationWidth != 0) {
        StageTimer timer("dilation");
        if (path != DilationPath::Fragment && Dilation::canUseCompute(texture))
            Dilation::runCompute(texture, dilationWidth);
        else
            Dilation::runFragment(texture, dilationWidth, framebuffer);
    }
    if (applyDiffusion) {
        StageTimer timer("diffusion");
        Diffusion(framebuffer).run(texture);
    }

    {
        StageTimer timer("Download tex");
        const Surfaces::SurfaceDesc desc = surface->desc();
        // Released before the new one is made, so both never live at once
        // unless the caller holds another reference.
        surface.reset();
        surface = Surfaces::SurfaceSPtr::create(desc);
        texture.download(*surface);
    }

    glDisable(GL_BLEND);
    glBindFramebuffer(GL_FRAMEBUFFER, GLuint(previousFramebuffer));
    glDeleteFramebuffers(1, &framebuffer);
    glBindVertexArray(0);
    glDeleteVertexArrays(1, &vertexArray);
    glBindTexture(GL_TEXTURE_2D, 0);
    texture.destroy();
}

} // namespace Ond::Baking
