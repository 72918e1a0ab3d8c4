#include "baking/detail/ThicknessKernel.h"

#include "baking/detail/StripJob.h"
#include "baking/detail/SurfaceFrame.h"


namespace Ond::Baking {

ThicknessTraits::ThicknessTraits(const DetailBakeJob& job, const EmbreeScene&)
    : params(SecondaryRay::paramsOf<ThicknessParams>(job)),
      table(SecondaryRay::sampleTableOf(params)),
      filterById((job.flags & BakeJobFlags::FilterSecondaryById) != 0),
      inv(params.maxDistance > 1e-7f ? 1.0f / params.maxDistance : 1.0f)
{
}

void ThicknessTraits::hit(const PrimaryHit& h, float* acc) const
{
    float m[3];
    SecondaryRay::shadingNormal(h.scene->mesh(), h.primID, h.u, h.v, m);
    m[0] = -m[0];
    m[1] = -m[1];
    m[2] = -m[2];
    float origin[3];
    SecondaryRay::hitPoint(h, origin);
    const SurfaceFrame frame(m, h.sampleX, h.sampleY);
    const uint32_t id = SecondaryRay::rayId(h, filterById);
    HitContext context(params.cullMode, filterById);
    RTCRayHit rh;

    const unsigned count = table.count();
    float value = float(count);
    for (unsigned i = 0; i < count; ++i) {
        float d[3];
        frame.toWorld(table.sample(i), d);
        const float t = SecondaryRay::trace(*h.scene, context, rh, origin, d, params.minDistance,
                                            params.maxDistance, id);
        if (t < params.maxDistance)
            value -= (params.maxDistance - t) * inv;
    }
    value /= float(count);
    acc[0] += value;
    acc[1] += value;
    acc[2] += value;
}

void registerThicknessKernel()
{
    registerStripKernel(BakeJobKind::Thickness, &makeStripJob<ThicknessTraits>);
}

} // namespace Ond::Baking
