#include "baking/detail/StripJob.h"

namespace Ond::Baking {

namespace {

// Distance from the low surface along its ray, positive in front of it. With
// a cage maxHeight is 1 and the direction reaches the cage.
struct HeightKernel
{
    static constexpr TexelClose close = TexelClose::Color;
    static constexpr bool reduces = true;

    float maxHeight;

    HeightKernel(const DetailBakeJob& job, const EmbreeScene&) : maxHeight(job.maxHeight) {}

    void hit(const PrimaryHit& h, float* acc) const
    {
        const float* d = h.direction;
        const float len = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
        const float value = (maxHeight - h.t) * len;
        acc[0] += value;
        acc[1] += value;
        acc[2] += value;
    }
};

} // namespace

void registerHeightKernel()
{
    registerStripKernel(BakeJobKind::Height, &makeStripJob<HeightKernel>);
}

} // namespace Ond::Baking
