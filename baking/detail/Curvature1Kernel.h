#pragma once
// Curvature by surface fit: neighbours of the hit within a small radius are
// found by rays over a sphere that touches the surface, and an algebraic
// sphere is fitted to their positions and normals. Its signed inverse
// radius is the value: positive on convex, negative on concave surfaces.

#include "baking/detail/SampleTable.h"
#include "baking/detail/SecondaryRay.h"
#include "baking/detail/SecondaryRayParams.h"

namespace Ond::Baking {

struct Curvature1Traits
{
    static constexpr TexelClose close = TexelClose::Color;
    static constexpr bool reduces = true;

    Curvature1Traits(const DetailBakeJob& job, const EmbreeScene& scene);
    void hit(const PrimaryHit& h, float* acc) const;

    Curvature1Params params;
    SampleTable table;
    bool filterById;
};

// The curvature of the algebraic sphere fitted to weighted sums of the
// neighbours' offsets q and normals m (the point itself included with weight
// one): W = sum g, SP = sum g q, SN = sum g m, SPP = sum g q.q,
// SPN = sum g m.q. 0 when there was no neighbour or the fit degenerates.
float fitSphereCurvature(double W, const double* SP, const double* SN, double SPP, double SPN);

void registerCurvature1Kernel();

} // namespace Ond::Baking
