#include "baking/detail/AmbientOcclusionKernel.h"

#include "baking/detail/DetailNormalSampling.h"
#include "baking/detail/StripJob.h"
#include "baking/detail/SurfaceFrame.h"

#include <algorithm>

namespace Ond::Baking {

AOTraits::AOTraits(const DetailBakeJob& job, const EmbreeScene&)
    : params(SecondaryRay::paramsOf<AOParams>(job)),
      table(SecondaryRay::sampleTableOf(params)),
      filterById((job.flags & BakeJobFlags::FilterSecondaryById) != 0),
      inv(params.maxDistance > 1e-7f ? 1.0f / params.maxDistance : 1.0f)
{
}

void AOTraits::hit(const PrimaryHit& h, float* acc) const
{
    const GrabbedMesh& mesh = h.scene->mesh();
    float n[3];
    float crease = 0.0f;
    if (!params.detailNormals || !detailNormalAndCrease(*params.detailNormals, mesh, h.primID, h.u, h.v, n, crease))
        SecondaryRay::shadingNormal(mesh, h.primID, h.u, h.v, n);
    float origin[3];
    SecondaryRay::hitPoint(h, origin);
    const SurfaceFrame frame(n, h.sampleX, h.sampleY);
    const uint32_t id = SecondaryRay::rayId(h, filterById);
    HitContext context(params.cullMode, filterById);
    RTCRayHit rh;

    const unsigned count = table.count();
    const float maxDistance = params.maxDistance;
    float open = float(count);
    for (unsigned i = 0; i < count; ++i) {
        float d[3];
        frame.toWorld(table.sample(i), d);
        float t = SecondaryRay::trace(*h.scene, context, rh, origin, d, params.minDistance, maxDistance, id);
        if (params.groundPlane) {
            const float dy = -d[1];
            if (dy > 1e-5f)
                t = std::min((origin[1] - params.groundY) / dy, t);
        }
        if (t < maxDistance) {
            switch (params.attenuation) {
            case 1: {
                const float r = t * inv;
                open -= 1.0f - r * r;
                break;
            }
            case 2:
                open -= (maxDistance - t) * inv;
                break;
            default:
                open -= 1.0f;
                break;
            }
        }
    }
    const float ao = open * (1.0f + crease) / float(count);
    acc[0] += ao;
    acc[1] += ao;
    acc[2] += ao;
}

void registerAmbientOcclusionKernel()
{
    registerStripKernel(BakeJobKind::AmbientOcclusion, &makeStripJob<AOTraits>);
}

} // namespace Ond::Baking
