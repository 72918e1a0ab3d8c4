#pragma once
// A GL_TEXTURE_2D seen by the post-process: name, size and the GL form of a
// surface's pixel format. A copy with another size describes a new texture of
// the same format; create() gives it storage. The context must be current.

#include "image/Surface.h"

#include <cstdint>

namespace Ond::Baking {

struct TextureFormat
{
    unsigned internalFormat = 0; // 0: the surface format has no GL form here
    unsigned format = 0;
    unsigned type = 0;

    bool isValid() const { return internalFormat != 0; }
    static TextureFormat of(Surfaces::PixelFormat pixelFormat);
};

// A new texture name, bound to GL_TEXTURE_2D, filtered with filter both ways
// and clamped to edge.
unsigned bindNewTexture2D(int filter);

struct Texture
{
    unsigned name = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    TextureFormat format;

    Texture withSize(uint32_t w, uint32_t h) const { return Texture{0, w, h, format}; }

    // Storage without contents; linear filtering, clamp to edge, one level.
    void create();
    void destroy();

    // A texture with the surface's size, format and pixels; name 0 when the
    // format has no GL form. Rows go up in memory order, so that download()
    // into a surface of the same layout gives back the same bytes.
    static Texture upload(const Surfaces::Surface& surface);
    // Reads the whole texture into `surface`, which has its size and format.
    void download(Surfaces::Surface& surface) const;
};

} // namespace Ond::Baking
