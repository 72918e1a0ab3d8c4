#include "image/DDSSurfaceCodec.h"

#include "program/LogChannel.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

namespace Ond::Image::Plugins {

using Surfaces::PixelFormat;
using Surfaces::Surface;
using Surfaces::SurfaceDesc;

namespace {

constexpr uint32_t fourCC(char a, char b, char c, char d)
{
    return uint32_t(uint8_t(a)) | (uint32_t(uint8_t(b)) << 8) | (uint32_t(uint8_t(c)) << 16)
        | (uint32_t(uint8_t(d)) << 24);
}

constexpr uint32_t ddsMagic = fourCC('D', 'D', 'S', ' ');
constexpr uint32_t dx10FourCC = fourCC('D', 'X', '1', '0');

// DDS_HEADER flags.
constexpr uint32_t DDSD_CAPS = 0x1, DDSD_HEIGHT = 0x2, DDSD_WIDTH = 0x4, DDSD_PITCH = 0x8,
                   DDSD_PIXELFORMAT = 0x1000;
constexpr uint32_t DDSCAPS_TEXTURE = 0x1000;
// DDS_PIXELFORMAT flags.
constexpr uint32_t DDPF_ALPHAPIXELS = 0x1, DDPF_FOURCC = 0x4, DDPF_RGB = 0x40, DDPF_LUMINANCE = 0x20000;
// Legacy D3DFORMAT codes stored as FourCC.
constexpr uint32_t D3D_A16B16G16R16 = 36, D3D_R16F = 111, D3D_G16R16F = 112, D3D_A16B16G16R16F = 113,
                   D3D_R32F = 114, D3D_G32R32F = 115, D3D_A32B32G32R32F = 116;
// DXGI formats of the extension header.
constexpr uint32_t DXGI_R32G32B32A32_FLOAT = 2, DXGI_R32G32B32_FLOAT = 6, DXGI_R16G16B16A16_FLOAT = 10,
                   DXGI_R16G16B16A16_UNORM = 11, DXGI_R32G32_FLOAT = 16, DXGI_R8G8B8A8_UNORM = 28,
                   DXGI_R8G8B8A8_UNORM_SRGB = 29, DXGI_R16G16_FLOAT = 34, DXGI_R16G16_UNORM = 35,
                   DXGI_R32_FLOAT = 41, DXGI_R8G8_UNORM = 49, DXGI_R16_FLOAT = 54, DXGI_R16_UNORM = 56,
                   DXGI_R8_UNORM = 61, DXGI_B8G8R8A8_UNORM = 87, DXGI_B8G8R8A8_UNORM_SRGB = 91;
constexpr uint32_t D3D10_RESOURCE_DIMENSION_TEXTURE2D = 3;

// Header words after the magic, by index.
enum HeaderWord {
    hSize = 0, hFlags, hHeight, hWidth, hPitch, hDepth, hMipMapCount,
    pfSize = 18, pfFlags, pfFourCC, pfBitCount, pfRMask, pfGMask, pfBMask, pfAMask,
    hCaps, hCaps2, hCaps3, hCaps4, hReserved2, headerWords
};
static_assert(headerWords == 31, "DDS_HEADER is 124 bytes");

struct PixelLayout
{
    uint32_t flags = 0;
    uint32_t fourCC = 0;
    uint32_t bitCount = 0;
    uint32_t masks[4] = {0, 0, 0, 0};
    uint32_t dxgi = 0; // non-zero: the extension header is written
};

PixelLayout layoutFor(PixelFormat f)
{
    PixelLayout l;
    switch (f) {
    case PixelFormat::L8: l = {DDPF_LUMINANCE, 0, 8, {0xFF, 0, 0, 0}}; break;
    case PixelFormat::LA8: l = {DDPF_LUMINANCE | DDPF_ALPHAPIXELS, 0, 16, {0xFF, 0, 0, 0xFF00}}; break;
    case PixelFormat::BGR8: l = {DDPF_RGB, 0, 24, {0xFF0000, 0xFF00, 0xFF, 0}}; break;
    case PixelFormat::BGRA8: l = {DDPF_RGB | DDPF_ALPHAPIXELS, 0, 32, {0xFF0000, 0xFF00, 0xFF, 0xFF000000u}}; break;
    case PixelFormat::L16: l = {DDPF_LUMINANCE, 0, 16, {0xFFFF, 0, 0, 0}}; break;
    case PixelFormat::LA16: l = {DDPF_LUMINANCE | DDPF_ALPHAPIXELS, 0, 32, {0xFFFF, 0, 0, 0xFFFF0000u}}; break;
    case PixelFormat::RGBA16: l.flags = DDPF_FOURCC; l.fourCC = D3D_A16B16G16R16; break;
    case PixelFormat::L16F: l.flags = DDPF_FOURCC; l.fourCC = D3D_R16F; break;
    case PixelFormat::LA16F: l.flags = DDPF_FOURCC; l.fourCC = D3D_G16R16F; break;
    case PixelFormat::RGBA16F: l.flags = DDPF_FOURCC; l.fourCC = D3D_A16B16G16R16F; break;
    case PixelFormat::L32F: l.flags = DDPF_FOURCC; l.fourCC = D3D_R32F; break;
    case PixelFormat::LA32F: l.flags = DDPF_FOURCC; l.fourCC = D3D_G32R32F; break;
    case PixelFormat::RGBA32F: l.flags = DDPF_FOURCC; l.fourCC = D3D_A32B32G32R32F; break;
    case PixelFormat::RGB32F: l.flags = DDPF_FOURCC; l.fourCC = dx10FourCC; l.dxgi = DXGI_R32G32B32_FLOAT; break;
    default: break;
    }
    return l;
}

PixelFormat formatFromFourCC(uint32_t code)
{
    switch (code) {
    case D3D_A16B16G16R16: return PixelFormat::RGBA16;
    case D3D_R16F: return PixelFormat::L16F;
    case D3D_G16R16F: return PixelFormat::LA16F;
    case D3D_A16B16G16R16F: return PixelFormat::RGBA16F;
    case D3D_R32F: return PixelFormat::L32F;
    case D3D_G32R32F: return PixelFormat::LA32F;
    case D3D_A32B32G32R32F: return PixelFormat::RGBA32F;
    default: return PixelFormat::Invalid;
    }
}

PixelFormat formatFromDxgi(uint32_t dxgi)
{
    switch (dxgi) {
    case DXGI_R32G32B32A32_FLOAT: return PixelFormat::RGBA32F;
    case DXGI_R32G32B32_FLOAT: return PixelFormat::RGB32F;
    case DXGI_R16G16B16A16_FLOAT: return PixelFormat::RGBA16F;
    case DXGI_R16G16B16A16_UNORM: return PixelFormat::RGBA16;
    case DXGI_R32G32_FLOAT: return PixelFormat::LA32F;
    case DXGI_R8G8B8A8_UNORM: case DXGI_R8G8B8A8_UNORM_SRGB: return PixelFormat::RGBA8;
    case DXGI_R16G16_FLOAT: return PixelFormat::LA16F;
    case DXGI_R16G16_UNORM: return PixelFormat::LA16;
    case DXGI_R32_FLOAT: return PixelFormat::L32F;
    case DXGI_R8G8_UNORM: return PixelFormat::LA8;
    case DXGI_R16_FLOAT: return PixelFormat::L16F;
    case DXGI_R16_UNORM: return PixelFormat::L16;
    case DXGI_R8_UNORM: return PixelFormat::L8;
    case DXGI_B8G8R8A8_UNORM: case DXGI_B8G8R8A8_UNORM_SRGB: return PixelFormat::BGRA8;
    default: return PixelFormat::Invalid;
    }
}

// A legacy layout whose pixels are one of our formats byte for byte.
PixelFormat formatFromMasks(uint32_t flags, uint32_t bits, const uint32_t* m)
{
    const bool alpha = flags & DDPF_ALPHAPIXELS;
    if (flags & DDPF_LUMINANCE) {
        if (bits == 8 && m[0] == 0xFF && !alpha) return PixelFormat::L8;
        if (bits == 16 && m[0] == 0xFF && alpha && m[3] == 0xFF00) return PixelFormat::LA8;
        if (bits == 16 && m[0] == 0xFFFF && !alpha) return PixelFormat::L16;
        if (bits == 32 && m[0] == 0xFFFF && alpha && m[3] == 0xFFFF0000u) return PixelFormat::LA16;
        return PixelFormat::Invalid;
    }
    if (!(flags & DDPF_RGB))
        return PixelFormat::Invalid;
    if (bits == 24 && m[0] == 0xFF0000 && m[1] == 0xFF00 && m[2] == 0xFF) return PixelFormat::BGR8;
    if (bits == 24 && m[0] == 0xFF && m[1] == 0xFF00 && m[2] == 0xFF0000) return PixelFormat::RGB8;
    if (bits == 32 && alpha && m[0] == 0xFF0000 && m[1] == 0xFF00 && m[2] == 0xFF && m[3] == 0xFF000000u)
        return PixelFormat::BGRA8;
    if (bits == 32 && alpha && m[0] == 0xFF && m[1] == 0xFF00 && m[2] == 0xFF0000 && m[3] == 0xFF000000u)
        return PixelFormat::RGBA8;
    return PixelFormat::Invalid;
}

// Any other uncompressed layout of 8 to 32 bits decodes through its masks
// to 8-bit RGBA (or grey with alpha for luminance).
void decodeMasked(const uint8_t* in, uint32_t count, uint32_t bytes, const uint32_t* masks, bool luminance,
                  bool alpha, uint8_t* out)
{
    auto extract = [](uint32_t v, uint32_t mask) -> uint8_t {
        if (!mask)
            return 255;
        uint32_t shift = 0;
        while (!((mask >> shift) & 1u))
            ++shift;
        const uint32_t max = mask >> shift;
        return uint8_t(((v & mask) >> shift) * 255u / max);
    };
    for (uint32_t i = 0; i < count; ++i, in += bytes) {
        uint32_t v = 0;
        for (uint32_t b = 0; b < bytes; ++b)
            v |= uint32_t(in[b]) << (8 * b);
        const uint8_t a = alpha ? extract(v, masks[3]) : 255;
        if (luminance) {
            *out++ = extract(v, masks[0]);
            *out++ = a;
        } else {
            *out++ = extract(v, masks[0]);
            *out++ = extract(v, masks[1]);
            *out++ = extract(v, masks[2]);
            *out++ = a;
        }
    }
}

// The format a header describes, and whether it needs mask decoding.
// Invalid for layouts this codec doesn't read.
PixelFormat headerFormat(const uint32_t* h, uint32_t dxgi, bool& masked)
{
    masked = false;
    const uint32_t flags = h[pfFlags];
    if (flags & DDPF_FOURCC)
        return h[pfFourCC] == dx10FourCC ? formatFromDxgi(dxgi) : formatFromFourCC(h[pfFourCC]);
    PixelFormat format = formatFromMasks(flags, h[pfBitCount], h + pfRMask);
    if (format != PixelFormat::Invalid)
        return format;
    const uint32_t bits = h[pfBitCount];
    if (!(flags & (DDPF_RGB | DDPF_LUMINANCE)) || (bits != 8 && bits != 16 && bits != 24 && bits != 32))
        return PixelFormat::Invalid;
    masked = true;
    return (flags & DDPF_LUMINANCE) ? PixelFormat::LA8 : PixelFormat::RGBA8;
}

bool readExact(QIODevice* device, void* data, qint64 size)
{
    return device->read(static_cast<char*>(data), size) == size;
}

} // namespace

bool DDSSurfaceCodec::canRead(const QByteArray& header)
{
    uint32_t words[1 + headerWords + 5] = {};
    if (header.size() < qsizetype(4 * (1 + headerWords)))
        return false;
    std::memcpy(words, header.constData(), std::min<size_t>(sizeof(words), size_t(header.size())));
    for (uint32_t& w : words)
        w = qFromLittleEndian(w);
    const uint32_t* h = words + 1;
    if (words[0] != ddsMagic || h[hSize] != 124)
        return false;
    bool masked = false;
    return headerFormat(h, words[1 + headerWords], masked) != PixelFormat::Invalid;
}

PixelFormat DDSSurfaceCodec::storedFormat(PixelFormat format)
{
    switch (format) {
    case PixelFormat::RGB8: return PixelFormat::BGR8;
    case PixelFormat::RGBA8: return PixelFormat::BGRA8;
    case PixelFormat::RGB16: return PixelFormat::RGBA16;
    case PixelFormat::RGB16F: return PixelFormat::RGBA16F;
    default: return format;
    }
}

bool DDSSurfaceCodec::write(const QSharedPointer<Surface>& surface)
{
    if (!surface || surface->isEmpty())
        return false;
    if (!prepareDevice(QIODevice::WriteOnly))
        return false;
    const bool ok = writeStream(*surface);
    finishDevice();
    return ok;
}

bool DDSSurfaceCodec::writeStream(const Surface& source)
{
    const PixelFormat stored = storedFormat(source.format());
    const PixelLayout layout = layoutFor(stored);
    if (layout.flags == 0)
        return false;
    Surface converted;
    const Surface* pixels = &source;
    if (stored != source.format()) {
        try {
            Surfaces::convert(source, converted, stored);
        } catch (const std::bad_alloc&) {
            return false;
        }
        pixels = &converted;
    }

    uint32_t words[1 + headerWords] = {};
    uint32_t* h = words + 1;
    words[0] = ddsMagic;
    h[hSize] = 124;
    h[hFlags] = DDSD_CAPS | DDSD_HEIGHT | DDSD_WIDTH | DDSD_PITCH | DDSD_PIXELFORMAT;
    h[hHeight] = pixels->height();
    h[hWidth] = pixels->width();
    h[hPitch] = uint32_t(pixels->rowBytes());
    h[pfSize] = 32;
    h[pfFlags] = layout.flags;
    h[pfFourCC] = layout.fourCC;
    h[pfBitCount] = layout.bitCount;
    for (int i = 0; i < 4; ++i)
        h[pfRMask + i] = layout.masks[i];
    h[hCaps] = DDSCAPS_TEXTURE;
    for (uint32_t& w : words)
        w = qToLittleEndian(w);
    if (m_device->write(reinterpret_cast<const char*>(words), sizeof(words)) != qint64(sizeof(words)))
        return false;
    if (layout.dxgi) {
        uint32_t ext[5] = {layout.dxgi, D3D10_RESOURCE_DIMENSION_TEXTURE2D, 0, 1, 0};
        for (uint32_t& w : ext)
            w = qToLittleEndian(w);
        if (m_device->write(reinterpret_cast<const char*>(ext), sizeof(ext)) != qint64(sizeof(ext)))
            return false;
    }
    const qint64 rowBytes = qint64(pixels->rowBytes());
    for (uint32_t y = 0; y < pixels->height(); ++y) {
        if (m_device->write(reinterpret_cast<const char*>(pixels->row(y)), rowBytes) != rowBytes)
            return false;
    }
    return true;
}

bool DDSSurfaceCodec::read(QSharedPointer<Surface>& result)
{
    result.reset();
    if (!prepareDevice(QIODevice::ReadOnly))
        return false;
    const bool ok = readStream(result);
    finishDevice();
    if (!ok)
        result.reset();
    return ok;
}

bool DDSSurfaceCodec::readStream(QSharedPointer<Surface>& result)
{
    uint32_t words[1 + headerWords];
    if (!readExact(m_device, words, sizeof(words)))
        return false;
    for (uint32_t& w : words)
        w = qFromLittleEndian(w);
    const uint32_t* h = words + 1;
    if (words[0] != ddsMagic || h[hSize] != 124 || h[pfSize] != 32)
        return false;
    const uint32_t width = h[hWidth], height = h[hHeight];
    if (width == 0 || height == 0 || width > (1u << 16) || height > (1u << 16))
        return false;

    const uint32_t flags = h[pfFlags];
    uint32_t dxgi = 0;
    if ((flags & DDPF_FOURCC) && h[pfFourCC] == dx10FourCC) {
        uint32_t ext[5];
        if (!readExact(m_device, ext, sizeof(ext)))
            return false;
        dxgi = qFromLittleEndian(ext[0]);
    }
    bool masked = false;
    const PixelFormat format = headerFormat(h, dxgi, masked);
    if (format == PixelFormat::Invalid) {
        Ond::Core::zmfBakerChannel().warning(
            QStringLiteral("DDSSurfaceCodec >> Unsupported pixel format (compressed or unknown)"));
        return false;
    }

    const uint32_t fileBytesPerPixel = masked ? h[pfBitCount] / 8 : Surfaces::bytesPerPixel(format);
    const qint64 fileRowBytes = qint64(fileBytesPerPixel) * width;
    if (!m_device->isSequential() && m_device->bytesAvailable() < fileRowBytes * height)
        return false;

    QSharedPointer<Surface> surface;
    try {
        surface = QSharedPointer<Surface>::create(SurfaceDesc(width, height, format));
    } catch (const std::bad_alloc&) {
        return false;
    }
    std::vector<uint8_t> raw(masked ? size_t(fileRowBytes) : 0);
    for (uint32_t y = 0; y < height; ++y) {
        if (!masked) {
            if (!readExact(m_device, surface->row(y), fileRowBytes))
                return false;
            continue;
        }
        if (!readExact(m_device, raw.data(), fileRowBytes))
            return false;
        decodeMasked(raw.data(), width, fileBytesPerPixel, h + pfRMask, flags & DDPF_LUMINANCE,
                     flags & DDPF_ALPHAPIXELS, surface->row(y));
    }
    result = surface;
    return true;
}

} // namespace Ond::Image::Plugins
