#pragma once
// Bent normals: the mean of the open directions around the normal, in world
// space; a point with no open direction keeps its normal.

#include "baking/detail/SampleTable.h"
#include "baking/detail/SecondaryRay.h"
#include "baking/detail/SecondaryRayParams.h"

namespace Ond::Baking {

struct BentNormalsTraits
{
    static constexpr TexelClose close = TexelClose::Direction;
    static constexpr bool reduces = false;

    BentNormalsTraits(const DetailBakeJob& job, const EmbreeScene& scene);
    void hit(const PrimaryHit& h, float* acc) const;

    BentNormalsParams params;
    SampleTable table;
    bool filterById;
};

void registerBentNormalsKernel();

} // namespace Ond::Baking
