#pragma once
// Decoding and encoding of one pixel to and from (r, g, b, a) floats, by
// format. Shared by Surface's conversions and the codecs; the samplers have
// their own compile-time forms.

#include "image/ONDHalf16.h"
#include "image/PixelFormat.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace Ond::Surfaces::PixelCodec {

inline float decodeComponent(const uint8_t* p, ComponentType t)
{
    switch (t) {
    case ComponentType::UInt8: return float(*p) * (1.0f / 255.0f);
    case ComponentType::UInt16: { uint16_t v; std::memcpy(&v, p, 2); return float(v) * (1.0f / 65535.0f); }
    case ComponentType::Half: { uint16_t v; std::memcpy(&v, p, 2); return ONDHalf16::toFloat(v); }
    case ComponentType::Float: { float v; std::memcpy(&v, p, 4); return v; }
    default: return 0.0f;
    }
}

inline void encodeComponent(uint8_t* p, ComponentType t, float v)
{
    switch (t) {
    case ComponentType::UInt8: {
        const float c = std::isnan(v) ? 0.0f : std::clamp(v, 0.0f, 1.0f);
        *p = uint8_t(c * 255.0f + 0.5f);
        break;
    }
    case ComponentType::UInt16: {
        const float c = std::isnan(v) ? 0.0f : std::clamp(v, 0.0f, 1.0f);
        const uint16_t u = uint16_t(c * 65535.0f + 0.5f);
        std::memcpy(p, &u, 2);
        break;
    }
    case ComponentType::Half: { const uint16_t h = ONDHalf16::fromFloat(v); std::memcpy(p, &h, 2); break; }
    case ComponentType::Float: std::memcpy(p, &v, 4); break;
    default: break;
    }
}

inline float luminance(const float* rgba)
{
    // Grey stays exact: the weights don't sum to 1 in float.
    if (rgba[0] == rgba[1] && rgba[1] == rgba[2])
        return rgba[0];
    return 0.2126f * rgba[0] + 0.7152f * rgba[1] + 0.0722f * rgba[2];
}

// One pixel to (r, g, b, a): grey repeats, missing alpha is 1, BGR swaps.
inline void decode(const uint8_t* p, PixelFormat f, float* rgba)
{
    const ComponentType t = componentType(f);
    const uint32_t b = bytesPerComponent(t);
    switch (channelCount(f)) {
    case 1:
        rgba[0] = rgba[1] = rgba[2] = decodeComponent(p, t);
        rgba[3] = 1.0f;
        break;
    case 2:
        rgba[0] = rgba[1] = rgba[2] = decodeComponent(p, t);
        rgba[3] = decodeComponent(p + b, t);
        break;
    case 3:
    case 4:
        for (uint32_t c = 0; c < 3; ++c)
            rgba[c] = decodeComponent(p + c * b, t);
        rgba[3] = channelCount(f) == 4 ? decodeComponent(p + 3 * b, t) : 1.0f;
        if (isBGR(f))
            std::swap(rgba[0], rgba[2]);
        break;
    default:
        rgba[0] = rgba[1] = rgba[2] = 0.0f;
        rgba[3] = 1.0f;
        break;
    }
}

// (r, g, b, a) to one pixel: colour to grey by luminance.
inline void encode(uint8_t* p, PixelFormat f, const float* rgba)
{
    const ComponentType t = componentType(f);
    const uint32_t b = bytesPerComponent(t);
    switch (channelCount(f)) {
    case 1:
        encodeComponent(p, t, luminance(rgba));
        break;
    case 2:
        encodeComponent(p, t, luminance(rgba));
        encodeComponent(p + b, t, rgba[3]);
        break;
    case 3:
    case 4: {
        const bool swap = isBGR(f);
        encodeComponent(p, t, rgba[swap ? 2 : 0]);
        encodeComponent(p + b, t, rgba[1]);
        encodeComponent(p + 2 * b, t, rgba[swap ? 0 : 2]);
        if (channelCount(f) == 4)
            encodeComponent(p + 3 * b, t, rgba[3]);
        break;
    }
    default:
        break;
    }
}

} // namespace Ond::Surfaces::PixelCodec
