#pragma once
// IEEE 754 binary16. 1.0 has the bits 0x3C00. Conversions round to nearest
// even, keep infinities and NaN, and produce subnormals.

#include <cstdint>
#include <cstring>

namespace Ond::Surfaces {

union ONDHalf16
{
    uint16_t bits;

    ONDHalf16() = default;
    explicit ONDHalf16(float value) : bits(fromFloat(value)) {}

    static ONDHalf16 fromBits(uint16_t b)
    {
        ONDHalf16 h;
        h.bits = b;
        return h;
    }

    operator float() const { return toFloat(bits); }
    float toFloat() const { return toFloat(bits); }

    static inline uint16_t fromFloat(float value);
    static inline float toFloat(uint16_t bits);
};

static_assert(sizeof(ONDHalf16) == 2, "ONDHalf16 must be 16 bits");

inline uint16_t ONDHalf16::fromFloat(float value)
{
    uint32_t f;
    std::memcpy(&f, &value, 4);
    const uint32_t sign = (f >> 16) & 0x8000u;
    const uint32_t absf = f & 0x7FFFFFFFu;
    if (absf >= 0x7F800000u) // inf or NaN
        return uint16_t(sign | 0x7C00u | (absf > 0x7F800000u ? 0x200u | ((absf >> 13) & 0x3FFu) : 0u));
    if (absf >= 0x477FF000u) // rounds to beyond 65504
        return uint16_t(sign | 0x7C00u);
    if (absf < 0x38800000u) { // subnormal half or zero
        if (absf < 0x33000000u) // below half of the smallest subnormal
            return uint16_t(sign);
        const uint32_t exp = absf >> 23;
        const uint32_t mant = (absf & 0x7FFFFFu) | 0x800000u;
        const uint32_t shift = 126u - exp; // 14..24
        uint32_t h = mant >> shift;
        const uint32_t rem = mant & ((1u << shift) - 1u);
        const uint32_t halfway = 1u << (shift - 1u);
        if (rem > halfway || (rem == halfway && (h & 1u)))
            ++h;
        return uint16_t(sign | h);
    }
    uint32_t h = ((absf - 0x38000000u) >> 13);
    const uint32_t rem = absf & 0x1FFFu;
    if (rem > 0x1000u || (rem == 0x1000u && (h & 1u)))
        ++h;
    return uint16_t(sign | h);
}

inline float ONDHalf16::toFloat(uint16_t h)
{
    const uint32_t sign = uint32_t(h & 0x8000u) << 16;
    uint32_t exp = (h >> 10) & 0x1Fu;
    uint32_t mant = h & 0x3FFu;
    uint32_t f;
    if (exp == 0x1Fu) {
        f = sign | 0x7F800000u | (mant << 13);
    } else if (exp != 0) {
        f = sign | ((exp + 112u) << 23) | (mant << 13);
    } else if (mant == 0) {
        f = sign;
    } else {
        // Subnormal: normalise the mantissa.
        exp = 113;
        while (!(mant & 0x400u)) {
            mant <<= 1;
            --exp;
        }
        f = sign | (exp << 23) | ((mant & 0x3FFu) << 13);
    }
    float out;
    std::memcpy(&out, &f, 4);
    return out;
}

} // namespace Ond::Surfaces
