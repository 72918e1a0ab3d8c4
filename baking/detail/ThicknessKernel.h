#pragma once
// Thickness: rays into the mesh around the reversed normal; the nearer the
// far side, the lower the value (1 when nothing lies within reach).

#include "baking/detail/SampleTable.h"
#include "baking/detail/SecondaryRay.h"
#include "baking/detail/SecondaryRayParams.h"

namespace Ond::Baking {

struct ThicknessTraits
{
    static constexpr TexelClose close = TexelClose::Color;
    static constexpr bool reduces = true;

    ThicknessTraits(const DetailBakeJob& job, const EmbreeScene& scene);
    void hit(const PrimaryHit& h, float* acc) const;

    ThicknessParams params;
    SampleTable table;
    bool filterById;
    float inv;
};

void registerThicknessKernel();

} // namespace Ond::Baking
