#pragma once
// The grabbed high mesh as the per-vertex curvature needs it: vertices
// merged by position, so that the faces on both sides of a hard edge or a
// UV seam are neighbours, and its curvature per vertex.

#include "baking/detail/GrabbedMesh.h"

#include <memory>
#include <vector>

namespace Ond::Baking {

// Positions, normals and indices over the welded vertices; triangle ids and
// culling marks kept in order. Throws ErrorCode 1 when out of memory.
std::shared_ptr<GrabbedMesh> weldGrabbedMesh(const GrabbedMesh& mesh);

// One value per vertex of `mesh`: welded, repaired, then computed in chunks
// of 1000 vertices on the global thread pool, under the scale that makes
// meshes of any size comparable (200 over the largest extent).
std::vector<float> vertexCurvatureOf(const GrabbedMesh& mesh);

} // namespace Ond::Baking
