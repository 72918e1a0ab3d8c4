#pragma once
// Uncompressed DirectDraw Surface files, suffix "dds".
//
// Written with the published 128-byte header ("DDS " and DDS_HEADER), one
// surface level, rows top-down and tightly packed:
//   L8, LA8          luminance (and alpha) pixel format, 8 or 16 bits
//   RGB8/BGR8        24-bit RGB, masks R 0xff0000 G 0xff00 B 0xff
//   RGBA8/BGRA8      32-bit A8R8G8B8
//   L16, LA16        luminance (and alpha) 16 or 32 bits
//   RGBA16, RGB16    FourCC 36 (A16B16G16R16), RGB16 with opaque alpha
//   L16F, LA16F      FourCC 111 (R16F), 112 (G16R16F)
//   RGBA16F, RGB16F  FourCC 113 (A16B16G16R16F), RGB16F with opaque alpha
//   L32F, LA32F      FourCC 114 (R32F), 115 (G32R32F)
//   RGBA32F          FourCC 116 (A32B32G32R32F)
//   RGB32F           FourCC "DX10" with the extension header,
//                    DXGI_FORMAT_R32G32B32_FLOAT
// Reading also takes any uncompressed mask layout of 8 to 32 bits and the
// common DXGI formats of the extension header; block-compressed files are
// refused. Only the first image (top mip level, first face) is read.

#include "image/SurfaceCodec.h"

namespace Ond::Image::Plugins {

class DDSSurfaceCodec : public Surfaces::SurfaceCodec
{
public:
    using SurfaceCodec::SurfaceCodec;

    bool read(QSharedPointer<Surfaces::Surface>& result) override;
    bool write(const QSharedPointer<Surfaces::Surface>& surface) override;

    // The format a surface is stored as: RGB16 and RGB16F gain alpha.
    static Surfaces::PixelFormat storedFormat(Surfaces::PixelFormat format);
    // Whether the first bytes of a file (at least the 148 of both headers,
    // fewer for a legacy header) describe a layout this codec reads.
    // Block-compressed files are left to other codecs.
    static bool canRead(const QByteArray& header);

private:
    bool readStream(QSharedPointer<Surfaces::Surface>& result);
    bool writeStream(const Surfaces::Surface& surface);
};

} // namespace Ond::Image::Plugins
