#include "baking/detail/StripJob.h"

namespace Ond::Baking {

namespace {

// The high mesh's interpolated world-space normal; the driver turns it into
// tangent space on the low mesh afterwards.
struct NormalKernel
{
    static constexpr TexelClose close = TexelClose::Direction;
    static constexpr bool reduces = false;

    const uint32_t* indices;
    const float* normals;

    NormalKernel(const DetailBakeJob&, const EmbreeScene& scene)
        : indices(scene.mesh().indices.data()), normals(scene.mesh().normals.data())
    {
    }

    void hit(const PrimaryHit& h, float* acc) const
    {
        const uint32_t* tri = indices + size_t(h.primID) * 3;
        const float w = 1.0f - h.u - h.v;
        const float* n0 = normals + size_t(tri[0]) * 3;
        const float* n1 = normals + size_t(tri[1]) * 3;
        const float* n2 = normals + size_t(tri[2]) * 3;
        for (int c = 0; c < 3; ++c)
            acc[c] += w * n0[c] + h.u * n1[c] + h.v * n2[c];
    }
};

} // namespace

void registerNormalKernel()
{
    registerStripKernel(BakeJobKind::Normal, &makeStripJob<NormalKernel>);
}

} // namespace Ond::Baking
