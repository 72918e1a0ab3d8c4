#include "image/FreeimageFormatTable.h"

#include "program/LogChannel.h"

#include <algorithm>
#include <map>

namespace Ond::Image::Plugins {

using PF = PixelFormat;

BitmapLayout FreeimageFormatTable::bitmapLayout(PixelFormat format)
{
    switch (format) {
    case PF::L8: return {FIT_BITMAP, 8};
    case PF::RGB8: case PF::BGR8: return {FIT_BITMAP, 24};
    case PF::RGBA8: case PF::BGRA8: return {FIT_BITMAP, 32};
    case PF::L16: return {FIT_UINT16, 16};
    case PF::RGB16: return {FIT_RGB16, 48};
    case PF::RGBA16: return {FIT_RGBA16, 64};
    case PF::L32F: return {FIT_FLOAT, 32};
    case PF::RGB32F: return {FIT_RGBF, 96};
    case PF::RGBA32F: return {FIT_RGBAF, 128};
    default: return {};
    }
}

std::vector<FREE_IMAGE_TYPE> FreeimageFormatTable::holdingTypes(PixelFormat format)
{
    if (format == PF::RGBA16)
        return {FIT_RGBA16, FIT_RGB16};
    if (format == PF::RGBA32F)
        return {FIT_RGBAF, FIT_RGBF};
    const BitmapLayout layout = bitmapLayout(format);
    if (layout.type == FIT_UNKNOWN)
        return {};
    return {layout.type};
}

const std::vector<PixelFormat>* FreeimageFormatTable::priorityList(PixelFormat format)
{
    static const std::map<PixelFormat, std::vector<PixelFormat>> lists{
        {PF::RGBA32F, {PF::RGBA16F, PF::RGBA16, PF::BGRA8, PF::L32F, PF::L16, PF::L8}},
        {PF::RGBA16F, {PF::RGBA32F, PF::RGBA16, PF::BGRA8, PF::L32F, PF::L16, PF::L8}},
        {PF::RGB32F, {PF::RGB16F, PF::RGB16, PF::RGB8, PF::BGR8, PF::L32F, PF::L16F, PF::L16, PF::L8}},
        {PF::RGB16F, {PF::RGB32F, PF::RGB16, PF::BGRA8, PF::L32F, PF::L16, PF::L8}},
        {PF::L32F, {PF::L16, PF::L8, PF::RGBA32F, PF::RGBA16, PF::BGRA8}},
        {PF::L16F, {PF::L32F, PF::L16, PF::L8, PF::RGBA32F, PF::RGBA16, PF::BGRA8}},
        {PF::RGBA16, {PF::RGBA32F, PF::BGRA8, PF::L16, PF::L32F, PF::L8}},
        {PF::RGB16, {PF::RGB32F, PF::BGR8, PF::L16, PF::L32F, PF::L8}},
        {PF::L16, {PF::L32F, PF::L8, PF::RGBA16, PF::RGBA32F, PF::BGRA8}},
        {PF::BGRA8, {PF::RGBA8, PF::RGBA16, PF::RGBA32F, PF::L8, PF::L16, PF::L32F}},
        {PF::RGBA8, {PF::BGRA8, PF::RGBA16, PF::RGBA32F, PF::L8, PF::L16, PF::L32F}},
        {PF::L8, {PF::L16, PF::L32F, PF::BGRA8, PF::RGBA16, PF::RGBA32F}},
        {PF::RGB8, {PF::BGR8, PF::RGB16, PF::RGB32F, PF::L8, PF::L16, PF::L32F}},
        {PF::BGR8, {PF::RGB8, PF::RGB16, PF::RGB32F, PF::L8, PF::L16, PF::L32F}},
        {PF::LA32F, {PF::LA16F, PF::LA16, PF::LA8, PF::RGBA32F, PF::L32F}},
    };
    const auto it = lists.find(format);
    return it == lists.end() ? nullptr : &it->second;
}

TargetChoice FreeimageFormatTable::chooseTarget(FREE_IMAGE_FORMAT fif, PixelFormat format)
{
    // Bitmap types the library exports for this file type, restricted to
    // BITMAP, UINT16, FLOAT, RGB16, RGBA16, RGBF and RGBAF (mask 7750).
    constexpr unsigned usableTypes = 7750;
    std::vector<FREE_IMAGE_TYPE> exportable;
    for (int t = 0; t < 13; ++t) {
        if (((usableTypes >> t) & 1u) && FreeImage_FIFSupportsExportType(fif, FREE_IMAGE_TYPE(t)))
            exportable.push_back(FREE_IMAGE_TYPE(t));
    }
    if (exportable.empty())
        return {};
    const std::vector<PixelFormat>* list = priorityList(format);
    if (!list) {
        Ond::Core::zmfBakerChannel().info(
            QStringLiteral("No priority map defined for format '%1'").arg(uint32_t(format)));
        return {};
    }
    // The format itself first: a file type that stores it as it is needs
    // no conversion.
    std::vector<PixelFormat> candidates{format};
    candidates.insert(candidates.end(), list->begin(), list->end());
    for (PixelFormat candidate : candidates) {
        for (FREE_IMAGE_TYPE type : holdingTypes(candidate)) {
            if (std::find(exportable.begin(), exportable.end(), type) != exportable.end())
                return {candidate, type};
        }
    }
    return {};
}

PixelFormat FreeimageFormatTable::surfaceFormat(FIBITMAP* bitmap)
{
    const unsigned bpp = FreeImage_GetBPP(bitmap);
    switch (FreeImage_GetImageType(bitmap)) {
    case FIT_BITMAP:
#if FREEIMAGE_COLORORDER == FREEIMAGE_COLORORDER_BGR
        if (bpp == 24) return PF::BGR8;
        if (bpp == 32) return PF::BGRA8;
#else
        if (bpp == 24) return PF::RGB8;
        if (bpp == 32) return PF::RGBA8;
#endif
        if (bpp == 8) return PF::L8;
        return PF::Invalid;
    case FIT_UINT16: return bpp == 16 ? PF::L16 : PF::Invalid;
    case FIT_RGB16: return bpp == 48 ? PF::RGB16 : PF::Invalid;
    case FIT_RGBA16: return bpp == 64 ? PF::RGBA16 : PF::Invalid;
    case FIT_FLOAT: return bpp == 32 ? PF::L32F : PF::Invalid;
    case FIT_RGBF: return bpp == 96 ? PF::RGB32F : PF::Invalid;
    case FIT_RGBAF: return bpp == 128 ? PF::RGBA32F : PF::Invalid;
    default: return PF::Invalid;
    }
}

} // namespace Ond::Image::Plugins
