#include "image/Surface.h"

#include "image/PixelCodec.h"

#include <cstring>
#include <new>
#include <utility>
#include <vector>

namespace Ond::Surfaces {

Surface::Surface(const SurfaceDesc& desc, size_t alignment)
    : m_desc(desc)
{
    if (m_desc.rowStride == 0)
        m_desc.rowStride = int64_t(m_desc.rowBytes());
    const uint64_t size = m_desc.byteSize();
    if (size == 0 || m_desc.isEmpty())
        return;
    if (alignment < alignof(std::max_align_t))
        alignment = alignof(std::max_align_t);
    const std::align_val_t al{alignment};
    uint8_t* block = static_cast<uint8_t*>(::operator new(size, al));
    m_deleter = [block, al]() { ::operator delete(block, al); };
    m_data = block;
    if (m_desc.rowStride < 0)
        m_data = block + (size - m_desc.absStride());
}

Surface::Surface(void* data, const SurfaceDesc& desc)
    : m_data(static_cast<uint8_t*>(data))
    , m_desc(desc)
{
    if (m_desc.rowStride == 0)
        m_desc.rowStride = int64_t(m_desc.rowBytes());
}

Surface::Surface(void* data, const SurfaceDesc& desc, std::function<void()> deleter)
    : m_data(static_cast<uint8_t*>(data))
    , m_desc(desc)
    , m_deleter(std::move(deleter))
{
    if (m_desc.rowStride == 0)
        m_desc.rowStride = int64_t(m_desc.rowBytes());
}

Surface::Surface(const Surface& parent, uint32_t x, uint32_t y, uint32_t width, uint32_t height)
    : m_desc(parent.m_desc)
{
    m_desc.width = width;
    m_desc.height = height;
    if (parent.isEmpty())
        return;
    m_data = parent.m_data + int64_t(y) * parent.m_desc.rowStride + int64_t(x) * parent.bytesPerPixel();
}

Surface::Surface(Surface&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr))
    , m_desc(other.m_desc)
    , m_deleter(std::move(other.m_deleter))
{
    other.m_deleter = nullptr;
}

Surface& Surface::operator=(Surface&& other) noexcept
{
    if (this != &other) {
        if (m_deleter)
            m_deleter();
        m_data = std::exchange(other.m_data, nullptr);
        m_desc = other.m_desc;
        m_deleter = std::move(other.m_deleter);
        other.m_deleter = nullptr;
    }
    return *this;
}

Surface::~Surface()
{
    if (m_deleter)
        m_deleter();
}

void Surface::flipVertical()
{
    if (m_data && m_desc.height > 0)
        m_data += int64_t(m_desc.height - 1) * m_desc.rowStride;
    m_desc.rowStride = -m_desc.rowStride;
}

Eigen::Vector4f Surface::readPixel(uint32_t x, uint32_t y) const
{
    Eigen::Vector4f out;
    PixelCodec::decode(pixel<uint8_t>(x, y), m_desc.format, out.data());
    return out;
}

void Surface::writePixel(uint32_t x, uint32_t y, const Eigen::Vector4f& rgba)
{
    PixelCodec::encode(pixel<uint8_t>(x, y), m_desc.format, rgba.data());
}

Surface Surface::clone() const
{
    SurfaceDesc d = m_desc;
    d.rowStride = m_desc.rowStride < 0 ? -int64_t(m_desc.rowBytes()) : 0;
    Surface copy(d);
    if (!isEmpty())
        copyPixels(*this, copy);
    return copy;
}

void copyPixels(const Surface& source, Surface& target)
{
    if (source.isEmpty() || target.isEmpty())
        return;
    const uint64_t bytes = source.rowBytes();
    for (uint32_t y = 0; y < source.height(); ++y)
        std::memcpy(target.row(y), source.row(y), bytes);
}

bool blit(const Surface& source, Surface& target, uint32_t x, uint32_t y)
{
    if (source.isEmpty() || target.isEmpty())
        return false;
    if (uint64_t(x) + source.width() > target.width() || uint64_t(y) + source.height() > target.height())
        return false;
    Surface window(target, x, y, source.width(), source.height());
    if (source.format() == target.format()) {
        copyPixels(source, window);
        return true;
    }
    float rgba[4];
    for (uint32_t j = 0; j < source.height(); ++j) {
        const uint8_t* s = source.row(j);
        uint8_t* t = window.row(j);
        for (uint32_t i = 0; i < source.width(); ++i) {
            PixelCodec::decode(s + uint64_t(i) * source.bytesPerPixel(), source.format(), rgba);
            PixelCodec::encode(t + uint64_t(i) * window.bytesPerPixel(), window.format(), rgba);
        }
    }
    return true;
}

void convert(const Surface& source, Surface& target, PixelFormat format)
{
    SurfaceDesc d = source.desc();
    d.format = format;
    d.rowStride = source.rowStride() < 0 ? -int64_t(d.rowBytes()) : 0;
    target = Surface(d);
    if (source.isEmpty() || target.isEmpty())
        return;
    if (source.format() == format) {
        copyPixels(source, target);
        return;
    }
    const PixelFormat sf = source.format();
    const uint32_t sb = source.bytesPerPixel();
    const uint32_t tb = target.bytesPerPixel();
    float rgba[4];
    for (uint32_t y = 0; y < source.height(); ++y) {
        const uint8_t* s = source.row(y);
        uint8_t* t = target.row(y);
        for (uint32_t x = 0; x < source.width(); ++x, s += sb, t += tb) {
            PixelCodec::decode(s, sf, rgba);
            PixelCodec::encode(t, format, rgba);
        }
    }
}

bool hasTransparency(const Surface& surface)
{
    if (surface.isEmpty() || channelCount(surface.format()) != 4)
        return false;
    const ComponentType t = componentType(surface.format());
    for (uint32_t y = 0; y < surface.height(); ++y) {
        const uint8_t* r = surface.row(y);
        for (uint32_t x = 0; x < surface.width(); ++x) {
            switch (t) {
            case ComponentType::UInt8:
                if (r[x * 4 + 3] != 255) return true;
                break;
            case ComponentType::UInt16: {
                uint16_t a;
                std::memcpy(&a, r + x * 8 + 6, 2);
                if (a != 65535) return true;
                break;
            }
            case ComponentType::Half: {
                // Opaque is exactly 1.0; anything else counts as transparent.
                uint16_t a;
                std::memcpy(&a, r + x * 8 + 6, 2);
                if (a != 0x3C00) return true;
                break;
            }
            case ComponentType::Float: {
                float a;
                std::memcpy(&a, r + x * 16 + 12, 4);
                if (a < 1.0f) return true;
                break;
            }
            default:
                return false;
            }
        }
    }
    return false;
}

void fill(Surface& surface, const Eigen::Vector4f& color)
{
    if (surface.isEmpty())
        return;
    const uint32_t bpp = surface.bytesPerPixel();
    uint8_t pixel[16];
    PixelCodec::encode(pixel, surface.format(), color.data());
    for (uint32_t y = 0; y < surface.height(); ++y) {
        uint8_t* r = surface.row(y);
        for (uint32_t x = 0; x < surface.width(); ++x, r += bpp)
            std::memcpy(r, pixel, bpp);
    }
}

const char* pixelFormatName(PixelFormat f)
{
    static const char* const names[pixelFormatCount] = {
        "Invalid", "L8", "LA8", "RGB8", "BGR8", "RGBA8", "BGRA8", "L16", "LA16", "RGB16", "RGBA16",
        "L16F", "LA16F", "RGB16F", "RGBA16F", "L32F", "LA32F", "RGB32F", "RGBA32F"};
    return isValid(f) ? names[uint32_t(f)] : names[0];
}

} // namespace Ond::Surfaces
