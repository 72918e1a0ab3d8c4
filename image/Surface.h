#pragma once
// The raster image of the system: one block of pixels described by a
// SurfaceDesc, freed by its deleter. A surface without deleter is a view.
// Move-only; share it through SurfaceSPtr.

#include "image/SurfaceDesc.h"

#include <Eigen/Core>
#include <QSharedPointer>

#include <cstddef>
#include <cstdint>
#include <functional>

namespace Ond::Surfaces {

class Surface
{
public:
    static constexpr size_t defaultAlignment = 64;

    // Empty surface.
    Surface() = default;
    // Allocates height × |stride| bytes aligned to `alignment` (uninitialised).
    // A zero rowStride becomes bytesPerPixel × width; a negative one keeps its
    // sign and data points at the last row of the block. A size of 0
    // allocates nothing. Throws std::bad_alloc.
    explicit Surface(const SurfaceDesc& desc, size_t alignment = defaultAlignment);
    // Foreign pixels, no copy. Without deleter the surface is a view.
    Surface(void* data, const SurfaceDesc& desc);
    Surface(void* data, const SurfaceDesc& desc, std::function<void()> deleter);
    // View of a rectangle of the parent, same stride and format. The parent
    // must outlive it. An empty parent gives an empty view.
    Surface(const Surface& parent, uint32_t x, uint32_t y, uint32_t width, uint32_t height);

    Surface(Surface&& other) noexcept;
    Surface& operator=(Surface&& other) noexcept;
    Surface(const Surface&) = delete;
    Surface& operator=(const Surface&) = delete;
    ~Surface();

    bool isEmpty() const { return m_data == nullptr; }
    bool isView() const { return !m_deleter; }

    uint8_t* data() { return m_data; }
    const uint8_t* data() const { return m_data; }
    const SurfaceDesc& desc() const { return m_desc; }
    uint32_t width() const { return m_desc.width; }
    uint32_t height() const { return m_desc.height; }
    PixelFormat format() const { return m_desc.format; }
    int64_t rowStride() const { return m_desc.rowStride; }
    uint32_t bytesPerPixel() const { return m_desc.bytesPerPixel(); }
    // Bytes of pixels in one row, without padding.
    uint64_t rowBytes() const { return m_desc.rowBytes(); }

    // Row y in logical order (0 is the first row of the image).
    uint8_t* row(uint32_t y) { return m_data + int64_t(y) * m_desc.rowStride; }
    const uint8_t* row(uint32_t y) const { return m_data + int64_t(y) * m_desc.rowStride; }
    template <typename T> T* pixel(uint32_t x, uint32_t y)
    {
        return reinterpret_cast<T*>(row(y) + uint64_t(x) * bytesPerPixel());
    }
    template <typename T> const T* pixel(uint32_t x, uint32_t y) const
    {
        return reinterpret_cast<const T*>(row(y) + uint64_t(x) * bytesPerPixel());
    }

    // Constant time: data moves to the last row and the stride is negated.
    void flipVertical();

    // Slow per-pixel access for tests, tools and one-off work, never for
    // bake loops. Reads decode to (r, g, b, a) in the rules of the samplers:
    // grey is repeated, a missing alpha reads 1. Writes take (r, g, b, a),
    // colour to grey by luminance, clamping and rounding integer components.
    Eigen::Vector4f readPixel(uint32_t x, uint32_t y) const;
    void writePixel(uint32_t x, uint32_t y, const Eigen::Vector4f& rgba);

    // A tightly packed, owned copy with the same stride sign.
    Surface clone() const;

private:
    uint8_t* m_data = nullptr;
    SurfaceDesc m_desc;
    std::function<void()> m_deleter;
};

using SurfaceSPtr = QSharedPointer<Surface>;

// Copies rowBytes of each source row into the target, each side with its
// own stride. Sizes are not compared: the caller guarantees the fit.
void copyPixels(const Surface& source, Surface& target);

// Copies source into target at (x, y), converting pixels when the formats
// differ. Does nothing unless source is not empty and lies wholly inside
// target there. Returns whether it copied.
bool blit(const Surface& source, Surface& target, uint32_t x, uint32_t y);

// Allocates target with the source's size, `format` and a stride of the
// source's sign, and converts every pixel. Colour to grey uses Rec. 709
// luminance; a missing alpha is opaque.
void convert(const Surface& source, Surface& target, PixelFormat format);

// For 4-channel formats: true if any alpha is below opaque (255, 65535,
// half bits 0x3C00, 1.0f). False for every other format.
bool hasTransparency(const Surface& surface);

// Sets every pixel from (r, g, b, a) as writePixel does.
void fill(Surface& surface, const Eigen::Vector4f& color);

} // namespace Ond::Surfaces
