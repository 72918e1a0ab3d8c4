#pragma once
// The system's own lossless dump of a Surface, suffix "surface".
//
// A QDataStream (version 17, big-endian) of:
//   int32 magic 0xa134568a, int32 version 1 (2 and above are refused),
//   int32 depth, int32 flags, int32 userData (the further SurfaceDesc fields),
//   int32 format, int32 height, int64 rowStride, int32 width,
//   then height rows of |rowStride| bytes in ascending address order.
// A null surface is stored as magic and version only and reads back empty.

#include "image/SurfaceCodec.h"

namespace Ond::Surfaces {

class RawSurfaceCodec : public SurfaceCodec
{
public:
    static constexpr quint32 magic = 0xa134568au;
    static constexpr qint32 version = 1;

    using SurfaceCodec::SurfaceCodec;

    bool read(QSharedPointer<Surface>& result) override;
    bool write(const QSharedPointer<Surface>& surface) override;

private:
    bool readStream(QSharedPointer<Surface>& result);
    bool writeStream(const QSharedPointer<Surface>& surface);
};

} // namespace Ond::Surfaces
