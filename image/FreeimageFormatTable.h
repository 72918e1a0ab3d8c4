#pragma once
// How surface formats and the library's bitmap types meet: the direct
// mapping both ways, and the choice of a target that a file type can store.

#include "image/PixelFormat.h"

#include <FreeImage.h>

#include <vector>

namespace Ond::Image::Plugins {

using Surfaces::PixelFormat;

struct BitmapLayout
{
    FREE_IMAGE_TYPE type = FIT_UNKNOWN;
    int bitsPerPixel = 0;
};

struct TargetChoice
{
    PixelFormat format = PixelFormat::Invalid;
    FREE_IMAGE_TYPE type = FIT_UNKNOWN;
};

class FreeimageFormatTable
{
public:
    // The bitmap a surface format copies into without conversion; type
    // FIT_UNKNOWN for formats that must be converted first.
    static BitmapLayout bitmapLayout(PixelFormat format);
    // Bitmap types that can hold a format, best first: a four-channel
    // 16-bit or float surface can also go to the three-channel type.
    static std::vector<FREE_IMAGE_TYPE> holdingTypes(PixelFormat format);
    // The fallback formats of a surface format, first choice first; null
    // for formats without a list.
    static const std::vector<PixelFormat>* priorityList(PixelFormat format);
    // The format and bitmap type to save `format` as for file type `fif`.
    // The format itself is the first candidate, then its priority list.
    // Fails (type FIT_UNKNOWN) when the library exports none of them.
    static TargetChoice chooseTarget(FREE_IMAGE_FORMAT fif, PixelFormat format);
    // The surface format whose pixels lie in the bitmap as they are, or
    // Invalid. FIT_BITMAP colour is in the library's memory order.
    static PixelFormat surfaceFormat(FIBITMAP* bitmap);
};

} // namespace Ond::Image::Plugins
