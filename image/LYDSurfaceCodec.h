#pragma once
// Kestrel Layerdoc, suffix "lyd": a stack of named surfaces, each lossless
// in its own pixel format. A surface written through the codec interface is
// one layer named "Background"; reading gives the first layer.
//
// Layout, all integers little-endian:
//   header   char[4] "KLYD", uint32 version (1), uint32 canvas width,
//            uint32 canvas height, uint32 layer count
//   layer    uint32 name length, name bytes (UTF-8),
//   (each)   int32 x, int32 y (placement on the canvas, top-left origin),
//            uint32 format (PixelFormat value), uint32 width, uint32 height,
//            uint32 depth, uint32 flags, uint32 userData (SurfaceDesc's
//            further fields), uint32 encoding (0 raw, 1 zlib),
//            uint64 stored size, then the stored bytes: height rows of
//            width × bytesPerPixel bytes, top row first, raw or as one
//            qCompress block (4-byte big-endian length, then zlib data).
// Version 2 and above, unknown encodings and short data are refused.

#include "image/SurfaceCodec.h"

#include <QList>

namespace Ond::Image::Plugins {

class LYDSurfaceCodec : public Surfaces::SurfaceCodec
{
public:
    struct Layer
    {
        QString name;
        int32_t x = 0;
        int32_t y = 0;
        QSharedPointer<Surfaces::Surface> surface;
    };

    using SurfaceCodec::SurfaceCodec;

    bool read(QSharedPointer<Surfaces::Surface>& result) override;
    bool write(const QSharedPointer<Surfaces::Surface>& surface) override;

    // The whole stack. The canvas is the size of the union of the layers.
    bool readLayers(QList<Layer>& layers, uint32_t* canvasWidth = nullptr, uint32_t* canvasHeight = nullptr);
    bool writeLayers(const QList<Layer>& layers);

private:
    bool readStream(QList<Layer>& layers, uint32_t* canvasWidth, uint32_t* canvasHeight);
    bool writeStream(const QList<Layer>& layers);
};

} // namespace Ond::Image::Plugins
