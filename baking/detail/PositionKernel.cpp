#include "baking/detail/PositionParams.h"
#include "baking/detail/StripJob.h"

namespace Ond::Baking {

namespace {

// The high mesh's interpolated position, normalised by the params.
struct PositionKernel
{
    static constexpr TexelClose close = TexelClose::Color;
    static constexpr bool reduces = false;

    const uint32_t* indices;
    const float* positions;
    PositionParams params;

    PositionKernel(const DetailBakeJob& job, const EmbreeScene& scene)
        : indices(scene.mesh().indices.data()), positions(scene.mesh().positions.data())
    {
        if (job.params)
            params = *static_cast<const PositionParams*>(job.params);
    }

    void hit(const PrimaryHit& h, float* acc) const
    {
        const uint32_t* tri = indices + size_t(h.primID) * 3;
        const float w = 1.0f - h.u - h.v;
        const float* p0 = positions + size_t(tri[0]) * 4;
        const float* p1 = positions + size_t(tri[1]) * 4;
        const float* p2 = positions + size_t(tri[2]) * 4;
        float q[3];
        for (int c = 0; c < 3; ++c)
            q[c] = (w * p0[c] + h.u * p1[c] + h.v * p2[c] - params.offset[c]) * params.scale[c];
        if (params.axis >= 0 && params.axis < 3)
            q[0] = q[1] = q[2] = q[params.axis];
        acc[0] += q[0];
        acc[1] += q[1];
        acc[2] += q[2];
    }
};

} // namespace

void registerPositionKernel()
{
    registerStripKernel(BakeJobKind::Position, &makeStripJob<PositionKernel>);
}

} // namespace Ond::Baking
