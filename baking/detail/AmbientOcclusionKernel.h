#pragma once
// Ambient occlusion: the share of the hemisphere (or cone) around the
// normal that is open up to the occluder distance, attenuated by how near
// the occluders are, with an optional infinite ground plane.

#include "baking/detail/SampleTable.h"
#include "baking/detail/SecondaryRay.h"
#include "baking/detail/SecondaryRayParams.h"

namespace Ond::Baking {

struct AOTraits
{
    static constexpr TexelClose close = TexelClose::Color;
    static constexpr bool reduces = false;

    AOTraits(const DetailBakeJob& job, const EmbreeScene& scene);
    void hit(const PrimaryHit& h, float* acc) const;

    AOParams params;
    SampleTable table;
    bool filterById;
    float inv;
};

void registerAmbientOcclusionKernel();

} // namespace Ond::Baking
