#pragma once
// The 256 by 256 tile of 8-bit blue noise by which the ray kernels turn
// their shared sample set around each primary hit, so that neighbouring
// texels get different rotations without a random table per texel. Every
// value 0..255 appears 256 times: the mean is exactly 127.5. The bytes are
// built into the program (made by bench/make_blue_noise) and shared by all
// backends.

#include <cstdint>

namespace Ond::Baking {

class BlueNoiseTile
{
public:
    static constexpr int Size = 256;
    static constexpr int ByteCount = Size * Size;

    // The tile, row after row: ByteCount bytes.
    static const uint8_t* data();

    // The value at sample (x, y), repeating every 256 samples both ways.
    static uint8_t value(int x, int y) { return data()[(x & (Size - 1)) + ((y & (Size - 1)) << 8)]; }

    // The rotation angle of sample (x, y) in radians, in [0, 2 pi).
    static float angle(int x, int y) { return float(value(x, y)) * 0.00390625f * 6.2831855f; }
};

} // namespace Ond::Baking
