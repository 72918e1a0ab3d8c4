#pragma once
// The plain description of a Surface's pixel block.

#include "image/PixelFormat.h"

#include <cstdint>
#include <cstdlib>

namespace Ond::Surfaces {

struct SurfaceDesc
{
    uint32_t width = 0;
    uint32_t height = 0;
    // Bytes from one row to the next. 0 means tightly packed. Negative means
    // bottom-up storage: data addresses the first logical row and the rows
    // proceed to lower addresses.
    int64_t rowStride = 0;
    PixelFormat format = PixelFormat::Invalid;
    // Carried unchanged by every copy and by the raw codec; nothing in the
    // bake interprets them.
    uint32_t depth = 1;
    uint32_t flags = 0;
    uint32_t userData = 0;

    SurfaceDesc() = default;
    SurfaceDesc(uint32_t w, uint32_t h, PixelFormat f, int64_t stride = 0)
        : width(w), height(h), rowStride(stride), format(f) {}

    uint32_t bytesPerPixel() const { return Surfaces::bytesPerPixel(format); }
    uint32_t channelCount() const { return Surfaces::channelCount(format); }
    // Bytes of pixels in a row, without padding.
    uint64_t rowBytes() const { return uint64_t(bytesPerPixel()) * width; }
    // The stride a surface made from this description uses: 0 resolves to
    // rowBytes, keeping the sign.
    int64_t effectiveStride() const { return rowStride != 0 ? rowStride : int64_t(rowBytes()); }
    uint64_t absStride() const { return uint64_t(std::llabs(effectiveStride())); }
    // Bytes a surface of this description allocates.
    uint64_t byteSize() const { return absStride() * height; }
    bool isEmpty() const { return width == 0 || height == 0 || bytesPerPixel() == 0; }

    bool operator==(const SurfaceDesc& o) const
    {
        return width == o.width && height == o.height && rowStride == o.rowStride && format == o.format
            && depth == o.depth && flags == o.flags && userData == o.userData;
    }
    bool operator!=(const SurfaceDesc& o) const { return !(*this == o); }
};

} // namespace Ond::Surfaces
