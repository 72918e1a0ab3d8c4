#pragma once
// The suffix a codec fuzz input is read as: its first byte picks one. Fixed,
// so that seeds and kept findings keep their meaning.

#include <cstddef>
#include <cstdint>

namespace Fuzz {

inline const char* codecSuffix(uint8_t selector)
{
    static const char* const suffixes[] = {"png", "tga", "bmp", "tif", "jpg", "dds", "hdr", "exr",
                                           "lyd", "psd", "gif", "webp", "j2k", "pfm", "ppm", "ico"};
    return suffixes[selector % (sizeof(suffixes) / sizeof(suffixes[0]))];
}

} // namespace Fuzz
