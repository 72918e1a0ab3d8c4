#include "baking/lowpoly/SourceMap.h"

#include "baking/AbstractBakingContext.h"
#include "baking/lowpoly/SurfaceTileGrid.h"

#include <algorithm>
#include <cmath>

namespace Ond::Baking {

namespace {

bool isPowerOfTwo(uint32_t v)
{
    return v != 0 && (v & (v - 1)) == 0;
}

} // namespace

Surfaces::SurfaceSPtr loadSourceMap(AbstractBakingContext& context, const QString& path)
{
    if (path.isEmpty())
        return {};
    Surfaces::SurfaceSPtr surface;
    if (!context.loadSurface(path, surface) || !surface || surface->isEmpty())
        return {};
    return resampleToPowerOfTwo(surface);
}

Surfaces::SurfaceSPtr resampleToPowerOfTwo(const Surfaces::SurfaceSPtr& surface)
{
    if (!surface || surface->isEmpty() || (isPowerOfTwo(surface->width()) && isPowerOfTwo(surface->height())))
        return surface;
    Surfaces::Surface floats;
    const Surfaces::Surface* source = surface.data();
    if (surface->format() != Surfaces::PixelFormat::RGBA32F) {
        Surfaces::convert(*surface, floats, Surfaces::PixelFormat::RGBA32F);
        source = &floats;
    }
    const int sw = int(source->width());
    const int sh = int(source->height());
    const int dw = powerOfTwoSide(sw);
    const int dh = powerOfTwoSide(sh);
    auto result = Surfaces::SurfaceSPtr::create(
        Surfaces::SurfaceDesc(uint32_t(dw), uint32_t(dh), Surfaces::PixelFormat::RGBA32F));
    // Texel centres map onto texel centres; edges clamp.
    const float scaleX = float(sw) / float(dw);
    const float scaleY = float(sh) / float(dh);
    for (int y = 0; y < dh; ++y) {
        const float fy = std::clamp((float(y) + 0.5f) * scaleY - 0.5f, 0.0f, float(sh - 1));
        const int y0 = int(fy);
        const int y1 = std::min(y0 + 1, sh - 1);
        const float ty = fy - float(y0);
        const float* row0 = reinterpret_cast<const float*>(source->row(uint32_t(y0)));
        const float* row1 = reinterpret_cast<const float*>(source->row(uint32_t(y1)));
        float* out = reinterpret_cast<float*>(result->row(uint32_t(y)));
        for (int x = 0; x < dw; ++x) {
            const float fx = std::clamp((float(x) + 0.5f) * scaleX - 0.5f, 0.0f, float(sw - 1));
            const int x0 = int(fx);
            const int x1 = std::min(x0 + 1, sw - 1);
            const float tx = fx - float(x0);
            for (int k = 0; k < 4; ++k) {
                const float top = row0[x0 * 4 + k] + (row0[x1 * 4 + k] - row0[x0 * 4 + k]) * tx;
                const float bottom = row1[x0 * 4 + k] + (row1[x1 * 4 + k] - row1[x0 * 4 + k]) * tx;
                out[x * 4 + k] = top + (bottom - top) * ty;
            }
        }
    }
    return result;
}

} // namespace Ond::Baking
