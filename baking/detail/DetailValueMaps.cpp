#include "baking/detail/DetailValueMaps.h"

#include <algorithm>
#include <cmath>

namespace Ond::Baking {

namespace {

template <typename F>
void forEachValue(Surfaces::Surface& gray, F&& f)
{
    for (uint32_t y = 0; y < gray.height(); ++y) {
        float* row = gray.pixel<float>(0, y);
        for (uint32_t x = 0; x < gray.width(); ++x)
            row[x] = f(row[x]);
    }
}

} // namespace

Surfaces::SurfaceSPtr toGray(const Surfaces::SurfaceSPtr& surface)
{
    if (!surface || surface->isEmpty() || surface->format() == Surfaces::PixelFormat::L32F)
        return surface;
    if (surface->format() != Surfaces::PixelFormat::RGBA32F) {
        auto gray = Surfaces::SurfaceSPtr::create();
        Surfaces::convert(*surface, *gray, Surfaces::PixelFormat::L32F);
        return gray;
    }
    // The red channel as it is: a weighted grey would round r = g = b.
    Surfaces::SurfaceDesc desc(surface->width(), surface->height(), Surfaces::PixelFormat::L32F);
    Surfaces::SurfaceSPtr gray(new Surfaces::Surface(desc, 64));
    for (uint32_t y = 0; y < surface->height(); ++y) {
        const float* in = surface->pixel<float>(0, y);
        float* out = gray->pixel<float>(0, y);
        for (uint32_t x = 0; x < surface->width(); ++x)
            out[x] = in[size_t(x) * 4];
    }
    return gray;
}

void scaleValues(Surfaces::Surface& gray, float factor)
{
    forEachValue(gray, [factor](float v) { return v * factor; });
}

float remapValue(float v, float lo, float hi, bool symmetric)
{
    v = std::min(std::max(v, lo), hi);
    if (symmetric)
        return v * (0.5f / std::max(std::fabs(hi), std::fabs(lo))) + 0.5f;
    return (v - lo) * (1.0f / (hi - lo));
}

void remapValues(Surfaces::Surface& gray, float lo, float hi, bool symmetric)
{
    forEachValue(gray, [=](float v) { return remapValue(v, lo, hi, symmetric); });
}

float logTonemapValue(float v, float lo, float hi, float k)
{
    if (v == 0.0f)
        return 0.0f;
    const float m = v >= 0.0f ? hi : -lo;
    const float x = m * k;
    const float sign = v < 0.0f ? -1.0f : 1.0f;
    return sign * (std::log(x + std::fabs(v)) - std::log(x)) / (std::log(x + m) - std::log(x));
}

void logTonemapValues(Surfaces::Surface& gray, float lo, float hi, float k)
{
    forEachValue(gray, [=](float v) { return logTonemapValue(v, lo, hi, k); });
}

} // namespace Ond::Baking
