#pragma once
// Writes 8- and 16-bit grey, RGB and RGBA surfaces as PNG files, filtering
// and deflating horizontal bands of rows on every thread the run may use.
// The bands form one zlib stream: each starts with the previous band's last
// 32 KiB as its dictionary and ends on a byte boundary, so the file is as
// small as one written by a single deflate at the same level, and any
// reader sees an ordinary PNG. The image library's writer deflates on one
// core, which for a 16-bit map of 2048² is a second at the end of a bake.

#include "image/PixelFormat.h"

#include <QByteArray>

#include <cstdint>

class QIODevice;

namespace Ond::Surfaces {
class Surface;
}

namespace Ond::Image {

struct PngMetadata
{
    // pHYs, in pixels per metre; none when either is 0.
    uint32_t pixelsPerMeterX = 0;
    uint32_t pixelsPerMeterY = 0;
    QByteArray xmp;     // an uncompressed iTXt "XML:com.adobe.xmp" when not empty
    QByteArray comment; // a tEXt "Comment" when not empty (Latin-1 in the file)
};

class PngEncoder
{
public:
    // L8, RGB8, RGBA8, L16, RGB16 and RGBA16: the formats PNG stores as they are.
    static bool canEncode(Surfaces::PixelFormat format);

    // level: 0 (stored) to 9, as zlib. bandRows: rows per band, 0 picks
    // them from the thread count (tests pass small bands to cross seams).
    // False when the format is not one of the above or the device fails.
    static bool encode(const Surfaces::Surface& surface, const PngMetadata& metadata, int level, QIODevice& device,
                       uint32_t bandRows = 0);
};

} // namespace Ond::Image
