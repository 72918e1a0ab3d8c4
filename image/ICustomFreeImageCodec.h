#pragma once
// A save path for a case the library can't write itself. It picks the
// bitmap type and surface format to convert to, then writes the bitmap.

#include "image/Surface.h"

#include <FreeImage.h>

namespace Ond::Image::Plugins {

class ICustomFreeImageCodec
{
public:
    virtual ~ICustomFreeImageCodec() = default;
    virtual FREE_IMAGE_TYPE bitmapType(const Surfaces::Surface& surface) const = 0;
    virtual Surfaces::PixelFormat surfaceFormat(const Surfaces::Surface& surface) const = 0;
    virtual bool save(FreeImageIO* io, FIBITMAP* bitmap, fi_handle handle, int page, int flags) const = 0;
};

} // namespace Ond::Image::Plugins
