#include "image/GenericSampler.h"

namespace Ond::Surfaces {

IGenericSampler::IGenericSampler(const SurfaceSPtr& surface)
    : m_surface(surface)
{
    if (!surface || surface->isEmpty())
        return;
    m_pixels = surface->data();
    m_maskX = surface->width() - 1;
    m_maskY = surface->height() - 1;
    m_strideComponents = surface->rowStride() / int64_t(bytesPerComponent(surface->format()));
    m_scale = Eigen::Vector2f(float(surface->width()), float(surface->height()));
}

namespace {

template <PixelFormat F> IGenericSampler* nearest(const SurfaceSPtr& s) { return new NearestSampler<F>(s); }

} // namespace

IGenericSampler* createSampler(const SurfaceSPtr& surface, bool bilinear)
{
    if (!surface || surface->isEmpty())
        return nullptr;
    using PF = PixelFormat;
    switch (surface->format()) {
    case PF::L8: return bilinear ? static_cast<IGenericSampler*>(new GreyBilinearSampler<PF::L8>(surface)) : nearest<PF::L8>(surface);
    case PF::L16: return bilinear ? static_cast<IGenericSampler*>(new GreyBilinearSampler<PF::L16>(surface)) : nearest<PF::L16>(surface);
    case PF::L16F: return bilinear ? static_cast<IGenericSampler*>(new GreyBilinearSampler<PF::L16F>(surface)) : nearest<PF::L16F>(surface);
    case PF::L32F: return bilinear ? static_cast<IGenericSampler*>(new GreyBilinearSampler<PF::L32F>(surface)) : nearest<PF::L32F>(surface);
    case PF::RGBA8: return bilinear ? static_cast<IGenericSampler*>(new RGBABilinearSampler<PF::RGBA8>(surface)) : nearest<PF::RGBA8>(surface);
    case PF::BGRA8: return bilinear ? static_cast<IGenericSampler*>(new RGBABilinearSampler<PF::BGRA8>(surface)) : nearest<PF::BGRA8>(surface);
    case PF::RGBA16: return bilinear ? static_cast<IGenericSampler*>(new RGBABilinearSampler<PF::RGBA16>(surface)) : nearest<PF::RGBA16>(surface);
    case PF::RGBA32F: return bilinear ? static_cast<IGenericSampler*>(new RGBABilinearSampler<PF::RGBA32F>(surface)) : nearest<PF::RGBA32F>(surface);
    case PF::LA8: return nearest<PF::LA8>(surface);
    case PF::LA16: return nearest<PF::LA16>(surface);
    case PF::LA16F: return nearest<PF::LA16F>(surface);
    case PF::LA32F: return nearest<PF::LA32F>(surface);
    case PF::RGB8: return nearest<PF::RGB8>(surface);
    case PF::BGR8: return nearest<PF::BGR8>(surface);
    case PF::RGB16: return nearest<PF::RGB16>(surface);
    case PF::RGB16F: return nearest<PF::RGB16F>(surface);
    case PF::RGB32F: return nearest<PF::RGB32F>(surface);
    case PF::RGBA16F: return nearest<PF::RGBA16F>(surface);
    default: return nullptr;
    }
}

} // namespace Ond::Surfaces
