#pragma once
// Reads a surface at texel or UV coordinates without knowing its pixel
// format. Read-only after construction: one sampler may serve all ray
// threads. Sizes must be powers of two (Log2RepeatBottomLeft).

#include "image/Surface.h"

#include <Eigen/Core>

namespace Ond::Surfaces {

class IGenericSampler
{
public:
    IGenericSampler(const IGenericSampler&) = delete;
    IGenericSampler& operator=(const IGenericSampler&) = delete;
    virtual ~IGenericSampler() = default;

    // Texel coordinates; row 0 is the bottom row of the image, both wrap.
    virtual Eigen::Vector4f sample(int x, int y) const = 0;
    // UV coordinates; (0, 0) is the bottom left corner, both wrap.
    virtual Eigen::Vector4f sample(float u, float v) const = 0;

    const SurfaceSPtr& surface() const { return m_surface; }

protected:
    explicit IGenericSampler(const SurfaceSPtr& surface);

    SurfaceSPtr m_surface;          // keeps the pixels alive
    const uint8_t* m_pixels = nullptr;
    uint32_t m_maskX = 0;           // width − 1
    uint32_t m_maskY = 0;           // height − 1
    int64_t m_strideComponents = 0; // row stride in components
    Eigen::Vector2f m_scale{0.0f, 0.0f}; // (width, height)
};

// The member of the GenericSampler family for the surface's format; formats
// without a bilinear form get the nearest one. Null for an empty surface or
// an invalid format. The caller owns the result.
IGenericSampler* createSampler(const SurfaceSPtr& surface, bool bilinear);

} // namespace Ond::Surfaces
