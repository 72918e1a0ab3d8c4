#pragma once
// Pixel formats of a Surface. The table of channels and component type per
// value below is the only definition; every helper derives from it.

#include <cstdint>

namespace Ond::Surfaces {

enum class PixelFormat : uint32_t {
    Invalid = 0,
    L8 = 1,        // grey
    LA8 = 2,       // grey, alpha
    RGB8 = 3,
    BGR8 = 4,
    RGBA8 = 5,
    BGRA8 = 6,
    L16 = 7,
    LA16 = 8,
    RGB16 = 9,
    RGBA16 = 10,
    L16F = 11,     // ONDHalf16 components
    LA16F = 12,
    RGB16F = 13,
    RGBA16F = 14,
    L32F = 15,     // float components
    LA32F = 16,
    RGB32F = 17,
    RGBA32F = 18,
};

// The number of a component type is the value of its one-channel format.
enum class ComponentType : uint32_t {
    None = 0,
    UInt8 = 1,
    UInt16 = 7,
    Half = 11,
    Float = 15,
};

constexpr uint32_t pixelFormatCount = 19;

constexpr bool isValid(PixelFormat f)
{
    return uint32_t(f) >= 1 && uint32_t(f) < pixelFormatCount;
}

constexpr ComponentType componentType(PixelFormat f)
{
    const uint32_t v = uint32_t(f);
    if (v >= 1 && v <= 6) return ComponentType::UInt8;
    if (v >= 7 && v <= 10) return ComponentType::UInt16;
    if (v >= 11 && v <= 14) return ComponentType::Half;
    if (v >= 15 && v <= 18) return ComponentType::Float;
    return ComponentType::None;
}

constexpr uint32_t channelCount(PixelFormat f)
{
    switch (f) {
    case PixelFormat::L8: case PixelFormat::L16: case PixelFormat::L16F: case PixelFormat::L32F:
        return 1;
    case PixelFormat::LA8: case PixelFormat::LA16: case PixelFormat::LA16F: case PixelFormat::LA32F:
        return 2;
    case PixelFormat::RGB8: case PixelFormat::BGR8: case PixelFormat::RGB16:
    case PixelFormat::RGB16F: case PixelFormat::RGB32F:
        return 3;
    case PixelFormat::RGBA8: case PixelFormat::BGRA8: case PixelFormat::RGBA16:
    case PixelFormat::RGBA16F: case PixelFormat::RGBA32F:
        return 4;
    default:
        return 0;
    }
}

constexpr uint32_t bytesPerComponent(ComponentType t)
{
    switch (t) {
    case ComponentType::UInt8: return 1;
    case ComponentType::UInt16: return 2;
    case ComponentType::Half: return 2;
    case ComponentType::Float: return 4;
    default: return 0;
    }
}

constexpr uint32_t bytesPerComponent(PixelFormat f) { return bytesPerComponent(componentType(f)); }
constexpr uint32_t bitsPerComponent(PixelFormat f) { return 8 * bytesPerComponent(f); }
constexpr uint32_t bytesPerPixel(PixelFormat f) { return channelCount(f) * bytesPerComponent(f); }
constexpr uint32_t bitsPerPixel(PixelFormat f) { return 8 * bytesPerPixel(f); }
constexpr bool isColor(PixelFormat f) { return channelCount(f) >= 3; }
constexpr bool isGrayscale(PixelFormat f) { return isValid(f) && channelCount(f) < 3; }
constexpr bool hasAlpha(PixelFormat f) { return channelCount(f) == 2 || channelCount(f) == 4; }
constexpr bool isBGR(PixelFormat f) { return f == PixelFormat::BGR8 || f == PixelFormat::BGRA8; }
constexpr bool isFloatingPoint(PixelFormat f)
{
    return componentType(f) == ComponentType::Half || componentType(f) == ComponentType::Float;
}

// (component type, 1..4 channels) to format. Never yields a BGR order.
constexpr PixelFormat pixelFormatFor(ComponentType t, uint32_t channels)
{
    if (t == ComponentType::None || channels < 1 || channels > 4)
        return PixelFormat::Invalid;
    if (t == ComponentType::UInt8) {
        constexpr PixelFormat u8[4] = {PixelFormat::L8, PixelFormat::LA8, PixelFormat::RGB8, PixelFormat::RGBA8};
        return u8[channels - 1];
    }
    return PixelFormat(uint32_t(t) + channels - 1);
}

// Same component type, other channel count.
constexpr PixelFormat withChannels(PixelFormat f, uint32_t channels)
{
    if (isBGR(f) && channels >= 3)
        return channels == 3 ? PixelFormat::BGR8 : PixelFormat::BGRA8;
    return pixelFormatFor(componentType(f), channels);
}

// Short name for log lines and test output, "RGBA32F" and the like.
const char* pixelFormatName(PixelFormat f);

} // namespace Ond::Surfaces
