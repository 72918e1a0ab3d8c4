#pragma once
// The GL objects of one tile: a float colour target to draw into and read
// back, and the texture of a source map tile.

#include "image/Surface.h"

namespace Ond::Baking {

// A framebuffer with one GL_RGBA32F texture as colour attachment 0.
class GLTileTarget
{
public:
    GLTileTarget(int width, int height);
    ~GLTileTarget();
    GLTileTarget(const GLTileTarget&) = delete;
    GLTileTarget& operator=(const GLTileTarget&) = delete;

    bool isValid() const { return m_framebuffer != 0; }
    int width() const { return m_width; }
    int height() const { return m_height; }
    unsigned framebuffer() const { return m_framebuffer; }
    unsigned texture() const { return m_texture; }

    // Binds the framebuffer and sets the viewport to its size.
    void bind() const;
    static void release();

private:
    int m_width;
    int m_height;
    unsigned m_framebuffer = 0;
    unsigned m_texture = 0;
};

// Reads the framebuffer's pixels into `surface`, which must have the size of
// the framebuffer. Rows arrive in GL order: the first is the bottom one.
// False, and the surface untouched, for a pixel format GL cannot return.
bool readBack(unsigned framebuffer, Surfaces::Surface& surface);

// Uploads a surface as a GL_RGBA32F texture, its last row first, so that
// texture coordinate 0 lies at the bottom of the image. The surface is
// converted to RGBA float on the way if needed. Returns the texture name,
// 0 for an empty surface.
unsigned uploadTexture(const Surfaces::Surface& surface, bool linear, bool clampToEdge);
void deleteTexture(unsigned texture);

} // namespace Ond::Baking
