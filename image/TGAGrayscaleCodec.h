#pragma once
// Writes one-channel TGA files (image type 3, or 11 with RLE), which the
// library has no path for: the 18-byte header, bottom-up rows, and the
// TGA 2.0 footer, all by hand.

#include "image/ICustomFreeImageCodec.h"

namespace Ond::Image::Plugins {

class TGAGrayscaleCodec : public ICustomFreeImageCodec
{
public:
    FREE_IMAGE_TYPE bitmapType(const Surfaces::Surface& surface) const override;
    // 8-bit grey for every grey surface: TGA has no deeper grey.
    Surfaces::PixelFormat surfaceFormat(const Surfaces::Surface& surface) const override;
    // flags: TARGA_SAVE_RLE selects run-length packets.
    bool save(FreeImageIO* io, FIBITMAP* bitmap, fi_handle handle, int page, int flags) const override;
};

} // namespace Ond::Image::Plugins
