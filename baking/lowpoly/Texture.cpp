#include "baking/lowpoly/Texture.h"

#include <GL/glew.h>

#include <algorithm>
#include <vector>

namespace Ond::Baking {

using Surfaces::PixelFormat;
using Surfaces::Surface;

TextureFormat TextureFormat::of(PixelFormat pixelFormat)
{
    switch (pixelFormat) {
    case PixelFormat::L8: return {GL_R8, GL_RED, GL_UNSIGNED_BYTE};
    case PixelFormat::LA8: return {GL_RG8, GL_RG, GL_UNSIGNED_BYTE};
    case PixelFormat::RGB8: return {GL_RGB8, GL_RGB, GL_UNSIGNED_BYTE};
    case PixelFormat::BGR8: return {GL_RGB8, GL_BGR, GL_UNSIGNED_BYTE};
    case PixelFormat::RGBA8: return {GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE};
    case PixelFormat::BGRA8: return {GL_RGBA8, GL_BGRA, GL_UNSIGNED_BYTE};
    case PixelFormat::L16: return {GL_R16, GL_RED, GL_UNSIGNED_SHORT};
    case PixelFormat::LA16: return {GL_RG16, GL_RG, GL_UNSIGNED_SHORT};
    case PixelFormat::RGB16: return {GL_RGB16, GL_RGB, GL_UNSIGNED_SHORT};
    case PixelFormat::RGBA16: return {GL_RGBA16, GL_RGBA, GL_UNSIGNED_SHORT};
    case PixelFormat::L16F: return {GL_R16F, GL_RED, GL_HALF_FLOAT};
    case PixelFormat::LA16F: return {GL_RG16F, GL_RG, GL_HALF_FLOAT};
    case PixelFormat::RGB16F: return {GL_RGB16F, GL_RGB, GL_HALF_FLOAT};
    case PixelFormat::RGBA16F: return {GL_RGBA16F, GL_RGBA, GL_HALF_FLOAT};
    case PixelFormat::L32F: return {GL_R32F, GL_RED, GL_FLOAT};
    case PixelFormat::LA32F: return {GL_RG32F, GL_RG, GL_FLOAT};
    case PixelFormat::RGB32F: return {GL_RGB32F, GL_RGB, GL_FLOAT};
    case PixelFormat::RGBA32F: return {GL_RGBA32F, GL_RGBA, GL_FLOAT};
    default: return {};
    }
}

unsigned bindNewTexture2D(int filter)
{
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    return texture;
}

void Texture::create()
{
    name = bindNewTexture2D(GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
    glTexImage2D(GL_TEXTURE_2D, 0, GLint(format.internalFormat), GLsizei(width), GLsizei(height), 0, format.format,
                 format.type, nullptr);
}

void Texture::destroy()
{
    if (name)
        glDeleteTextures(1, &name);
    name = 0;
}

namespace {

// The lowest address of the pixel block: the first row for a positive
// stride, the last logical row for a negative one.
template <typename Byte> Byte* lowestRow(Byte* data, const Surfaces::SurfaceDesc& desc)
{
    const int64_t stride = desc.effectiveStride();
    return stride < 0 ? data + (int64_t(desc.height) - 1) * stride : data;
}

} // namespace

Texture Texture::upload(const Surface& surface)
{
    Texture texture{0, surface.width(), surface.height(), TextureFormat::of(surface.format())};
    if (!texture.format.isValid() || surface.isEmpty())
        return Texture{};
    texture.create();

    const auto& desc = surface.desc();
    const uint32_t bpp = desc.bytesPerPixel();
    const uint8_t* base = lowestRow(surface.data(), desc);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    if (desc.absStride() % bpp == 0) {
        glPixelStorei(GL_UNPACK_ROW_LENGTH, GLint(desc.absStride() / bpp));
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, GLsizei(texture.width), GLsizei(texture.height), texture.format.format,
                        texture.format.type, base);
        glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    } else {
        for (uint32_t y = 0; y < texture.height; ++y)
            glTexSubImage2D(GL_TEXTURE_2D, 0, 0, GLint(y), GLsizei(texture.width), 1, texture.format.format,
                            texture.format.type, base + uint64_t(y) * desc.absStride());
    }
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    return texture;
}

void Texture::download(Surface& surface) const
{
    const auto& desc = surface.desc();
    const uint32_t bpp = desc.bytesPerPixel();
    uint8_t* base = lowestRow(surface.data(), desc);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    glBindTexture(GL_TEXTURE_2D, name);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    if (desc.absStride() % bpp == 0) {
        glPixelStorei(GL_PACK_ROW_LENGTH, GLint(desc.absStride() / bpp));
        glGetTexImage(GL_TEXTURE_2D, 0, format.format, format.type, base);
        glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    } else {
        std::vector<uint8_t> packed(desc.rowBytes() * desc.height);
        glGetTexImage(GL_TEXTURE_2D, 0, format.format, format.type, packed.data());
        for (uint32_t y = 0; y < desc.height; ++y)
            std::copy_n(packed.data() + y * desc.rowBytes(), desc.rowBytes(), base + uint64_t(y) * desc.absStride());
    }
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
}

} // namespace Ond::Baking
