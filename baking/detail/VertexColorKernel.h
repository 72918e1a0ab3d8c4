#pragma once
// Kind 3: the high mesh's vertex colours, interpolated at the hit.

#include "baking/detail/StripJob.h"

namespace Ond::Baking {

struct VertexColorKernel
{
    static constexpr TexelClose close = TexelClose::Color;
    static constexpr bool reduces = false;

    const uint32_t* indices;
    const float* colors;  // 3 per vertex; null when the grab took none

    VertexColorKernel(const DetailBakeJob&, const EmbreeScene& scene)
        : indices(scene.mesh().indices.data())
        , colors(scene.mesh().colors.size() >= size_t(scene.mesh().vertexCount) * 3 ? scene.mesh().colors.data()
                                                                                       : nullptr)
    {
    }

    void hit(const PrimaryHit& h, float* acc) const
    {
        if (!colors)
            return;
        const uint32_t* tri = indices + size_t(h.primID) * 3;
        const float w = 1.0f - h.u - h.v;
        const float* c0 = colors + size_t(tri[0]) * 3;
        const float* c1 = colors + size_t(tri[1]) * 3;
        const float* c2 = colors + size_t(tri[2]) * 3;
        for (int c = 0; c < 3; ++c)
            acc[c] += w * c0[c] + h.u * c1[c] + h.v * c2[c];
    }
};

void registerVertexColorKernel();

} // namespace Ond::Baking
