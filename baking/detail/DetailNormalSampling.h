#pragma once
// Reading the detail normal texture of the low mesh at a hit: the normal,
// and for ambient occlusion a crease factor from the texture's gradient
// that darkens grooves the low geometry doesn't have.

#include "baking/detail/RaytraceStrip.h"
#include "baking/detail/SecondaryRayParams.h"

namespace Ond::Baking {

// The texture's normal at the hit's UV, normalised (2 rgb - 1). False when
// the mesh has no UVs to look it up with.
bool detailNormal(const DetailNormals& detail, const GrabbedMesh& mesh, unsigned primID, float u, float v, float* n);

// As detailNormal, and `crease` (at most 0) from the texture's gradient
// along the triangle's UV directions, weighted down near island borders.
bool detailNormalAndCrease(const DetailNormals& detail, const GrabbedMesh& mesh, unsigned primID, float u, float v,
                           float* n, float& crease);

} // namespace Ond::Baking
