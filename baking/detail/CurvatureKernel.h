#pragma once
// Kind 12: the high mesh's per-vertex curvature, interpolated at the hit.
// The scene for this kind is built over the welded mesh; the values are
// computed once and kept with the scene.

#include "baking/detail/CurvatureParams.h"
#include "baking/detail/StripJob.h"

namespace Ond::Baking {

struct CurvatureKernel
{
    static constexpr TexelClose close = TexelClose::Color;
    static constexpr bool reduces = true;

    const uint32_t* indices;
    const float* curvature;  // one per vertex of the scene's mesh
    CurvatureParams params;

    // Fills the scene's curvature slot when it is not filled yet.
    CurvatureKernel(const DetailBakeJob& job, const EmbreeScene& scene);

    void hit(const PrimaryHit& h, float* acc) const
    {
        const uint32_t* tri = indices + size_t(h.primID) * 3;
        const float w = 1.0f - h.u - h.v;
        const float c = w * curvature[tri[0]] + h.u * curvature[tri[1]] + h.v * curvature[tri[2]];
        const float value = params.softSaturate ? std::tanh(c) : c * params.intensity + 0.5f;
        acc[0] += value;
        acc[1] += value;
        acc[2] += value;
    }
};

void registerCurvatureKernel();

} // namespace Ond::Baking
