#include "image/TGAGrayscaleCodec.h"

#include <cstring>
#include <vector>

namespace Ond::Image::Plugins {

using Surfaces::PixelFormat;

FREE_IMAGE_TYPE TGAGrayscaleCodec::bitmapType(const Surfaces::Surface&) const
{
    return FIT_BITMAP;
}

PixelFormat TGAGrayscaleCodec::surfaceFormat(const Surfaces::Surface& surface) const
{
    if (Surfaces::isGrayscale(surface.format()))
        return PixelFormat::L8;
    return surface.format();
}

namespace {

bool put(FreeImageIO* io, fi_handle handle, const void* data, unsigned size)
{
    return size == 0 || io->write_proc(const_cast<void*>(data), size, 1, handle) == 1;
}

void putLE16(std::vector<uint8_t>& out, unsigned v)
{
    out.push_back(uint8_t(v & 0xFF));
    out.push_back(uint8_t((v >> 8) & 0xFF));
}

// One row in RLE packets of at most 128 pixels; a run of two or more equal
// pixels becomes a run packet, anything else goes into raw packets.
void encodeRow(const uint8_t* row, unsigned width, unsigned bytesPerPixel, std::vector<uint8_t>& out)
{
    auto same = [&](unsigned a, unsigned b) {
        return std::memcmp(row + a * bytesPerPixel, row + b * bytesPerPixel, bytesPerPixel) == 0;
    };
    unsigned x = 0;
    while (x < width) {
        unsigned run = 1;
        while (x + run < width && run < 128 && same(x, x + run))
            ++run;
        if (run >= 2) {
            out.push_back(uint8_t(0x80 | (run - 1)));
            out.insert(out.end(), row + x * bytesPerPixel, row + (x + 1) * bytesPerPixel);
            x += run;
            continue;
        }
        unsigned raw = 1;
        while (x + raw < width && raw < 128 && !(x + raw + 1 < width && same(x + raw, x + raw + 1)))
            ++raw;
        out.push_back(uint8_t(raw - 1));
        out.insert(out.end(), row + x * bytesPerPixel, row + (x + raw) * bytesPerPixel);
        x += raw;
    }
}

} // namespace

bool TGAGrayscaleCodec::save(FreeImageIO* io, FIBITMAP* bitmap, fi_handle handle, int, int flags) const
{
    if (!io || !bitmap)
        return false;
    const unsigned width = FreeImage_GetWidth(bitmap);
    const unsigned height = FreeImage_GetHeight(bitmap);
    const unsigned bpp = FreeImage_GetBPP(bitmap);
    if ((bpp != 8 && bpp != 16) || width > 0xFFFF || height > 0xFFFF)
        return false;
    const bool rle = (flags & TARGA_SAVE_RLE) != 0;
    const unsigned bytesPerPixel = bpp / 8;

    std::vector<uint8_t> header;
    header.push_back(0);               // identification length
    header.push_back(0);               // colour map type
    header.push_back(rle ? 11 : 3);    // grey, uncompressed or RLE
    putLE16(header, 0);                // colour map first entry
    putLE16(header, 0);                // colour map length
    header.push_back(0);               // colour map entry size
    putLE16(header, 0);                // origin x
    putLE16(header, 0);                // origin y
    putLE16(header, width);
    putLE16(header, height);
    header.push_back(uint8_t(bpp));
    header.push_back(8);               // descriptor
    if (!put(io, handle, header.data(), unsigned(header.size())))
        return false;

    // The bitmap's scan line 0 is the bottom row, as TGA wants it.
    std::vector<uint8_t> packed;
    std::vector<uint8_t> temp(size_t(width) * bytesPerPixel);
    for (unsigned y = 0; y < height; ++y) {
        const uint8_t* line = FreeImage_GetScanLine(bitmap, int(y));
        if (bytesPerPixel == 2) {
            std::memcpy(temp.data(), line, temp.size());
            line = temp.data();
        }
        if (rle) {
            packed.clear();
            encodeRow(line, width, bytesPerPixel, packed);
            if (!put(io, handle, packed.data(), unsigned(packed.size())))
                return false;
        } else if (!put(io, handle, line, width * bytesPerPixel)) {
            return false;
        }
    }

    std::vector<uint8_t> footer(8, 0); // extension and developer offsets
    const char signature[] = "TRUEVISION-XFILE.";
    footer.insert(footer.end(), signature, signature + sizeof(signature)); // with its zero byte
    return put(io, handle, footer.data(), unsigned(footer.size()));
}

} // namespace Ond::Image::Plugins
