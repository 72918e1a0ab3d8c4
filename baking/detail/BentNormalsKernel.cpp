#include "baking/detail/BentNormalsKernel.h"

#include "baking/detail/StripJob.h"
#include "baking/detail/SurfaceFrame.h"


namespace Ond::Baking {

BentNormalsTraits::BentNormalsTraits(const DetailBakeJob& job, const EmbreeScene&)
    : params(SecondaryRay::paramsOf<BentNormalsParams>(job)),
      table(SecondaryRay::sampleTableOf(params)),
      filterById((job.flags & BakeJobFlags::FilterSecondaryById) != 0)
{
}

void BentNormalsTraits::hit(const PrimaryHit& h, float* acc) const
{
    float n[3];
    SecondaryRay::shadingNormal(h.scene->mesh(), h.primID, h.u, h.v, n);
    float origin[3];
    SecondaryRay::hitPoint(h, origin);
    const SurfaceFrame frame(n, h.sampleX, h.sampleY);
    const uint32_t id = SecondaryRay::rayId(h, filterById);
    HitContext context(params.cullMode, filterById);
    RTCRayHit rh;

    float sum[3] = {0.0f, 0.0f, 0.0f};
    unsigned open = 0;
    for (unsigned i = 0; i < table.count(); ++i) {
        float d[3];
        frame.toWorld(table.sample(i), d);
        const float t = SecondaryRay::trace(*h.scene, context, rh, origin, d, params.minDistance,
                                            params.maxDistance, id);
        if (t >= params.maxDistance) {
            sum[0] += d[0];
            sum[1] += d[1];
            sum[2] += d[2];
            ++open;
        }
    }
    if (open == 0) {
        acc[0] += n[0];
        acc[1] += n[1];
        acc[2] += n[2];
        return;
    }
    const float inv = 1.0f / float(open);
    acc[0] += sum[0] * inv;
    acc[1] += sum[1] * inv;
    acc[2] += sum[2] * inv;
}

void registerBentNormalsKernel()
{
    registerStripKernel(BakeJobKind::BentNormals, &makeStripJob<BentNormalsTraits>);
}

} // namespace Ond::Baking
