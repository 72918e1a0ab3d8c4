#include "baking/lowpoly/GLTileTarget.h"

#include "program/LogChannel.h"

#include <GL/glew.h>

#include <cstring>
#include <vector>

namespace Ond::Baking {

using Surfaces::PixelFormat;

GLTileTarget::GLTileTarget(int width, int height) : m_width(width), m_height(height)
{
    if (width <= 0 || height <= 0)
        return;
    glGenTextures(1, &m_texture);
    glBindTexture(GL_TEXTURE_2D, m_texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F, width, height, 0, GL_RGBA, GL_FLOAT, nullptr);
    glBindTexture(GL_TEXTURE_2D, 0);

    glGenFramebuffers(1, &m_framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_texture, 0);
    const GLenum status = glCheckFramebufferStatus(GL_FRAMEBUFFER);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    if (status != GL_FRAMEBUFFER_COMPLETE) {
        Core::bakersChannel().error(QStringLiteral("Framebuffer incomplete: 0x%1").arg(status, 0, 16));
        glDeleteFramebuffers(1, &m_framebuffer);
        m_framebuffer = 0;
    }
}

GLTileTarget::~GLTileTarget()
{
    if (m_framebuffer)
        glDeleteFramebuffers(1, &m_framebuffer);
    if (m_texture)
        glDeleteTextures(1, &m_texture);
}

void GLTileTarget::bind() const
{
    glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    glViewport(0, 0, m_width, m_height);
}

void GLTileTarget::release()
{
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
}

bool readBack(unsigned framebuffer, Surfaces::Surface& surface)
{
    GLenum format = 0;
    GLenum type = 0;
    // A core profile has no luminance format; reading red gives the same
    // single channel.
    switch (surface.format()) {
    case PixelFormat::L8: format = GL_RED; type = GL_UNSIGNED_BYTE; break;
    case PixelFormat::RGBA8: format = GL_RGBA; type = GL_UNSIGNED_BYTE; break;
    case PixelFormat::BGRA8: format = GL_BGRA; type = GL_UNSIGNED_BYTE; break;
    case PixelFormat::L16: format = GL_RED; type = GL_UNSIGNED_SHORT; break;
    case PixelFormat::RGBA16: format = GL_RGBA; type = GL_UNSIGNED_SHORT; break;
    case PixelFormat::L32F: format = GL_RED; type = GL_FLOAT; break;
    case PixelFormat::RGBA32F: format = GL_RGBA; type = GL_FLOAT; break;
    default: return false;
    }
    if (surface.isEmpty())
        return false;
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glReadBuffer(GL_COLOR_ATTACHMENT0);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    const int width = int(surface.width());
    const int height = int(surface.height());
    if (surface.rowStride() == int64_t(surface.rowBytes())) {
        glReadPixels(0, 0, width, height, format, type, surface.data());
    } else {
        for (int y = 0; y < height; ++y)
            glReadPixels(0, y, width, 1, format, type, surface.row(uint32_t(y)));
    }
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    return true;
}

unsigned uploadTexture(const Surfaces::Surface& surface, bool linear, bool clampToEdge)
{
    if (surface.isEmpty())
        return 0;
    Surfaces::Surface converted;
    const Surfaces::Surface* source = &surface;
    if (surface.format() != PixelFormat::RGBA32F) {
        Surfaces::convert(surface, converted, PixelFormat::RGBA32F);
        source = &converted;
    }
    const uint32_t width = source->width();
    const uint32_t height = source->height();
    const size_t rowBytes = size_t(source->rowBytes());
    std::vector<float> pixels(size_t(width) * height * 4);
    for (uint32_t y = 0; y < height; ++y)
        std::memcpy(pixels.data() + size_t(height - 1 - y) * width * 4, source->row(y), rowBytes);

    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    const GLint filter = linear ? GL_LINEAR : GL_NEAREST;
    const GLint wrap = clampToEdge ? GL_CLAMP_TO_EDGE : GL_REPEAT;
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, wrap);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, wrap);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F, GLsizei(width), GLsizei(height), 0, GL_RGBA, GL_FLOAT,
                 pixels.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    return texture;
}

void deleteTexture(unsigned texture)
{
    if (texture)
        glDeleteTextures(1, &texture);
}

} // namespace Ond::Baking
