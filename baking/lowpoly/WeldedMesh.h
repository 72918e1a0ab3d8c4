#pragma once
// A triangle mesh with its vertices merged by exact position, as the
// per-vertex curvature needs it: one vertex per place, so that the faces on
// both sides of a hard edge or a UV seam become neighbours. The triangles
// keep their number and order, so per-triangle data stays valid over it.

#include <Eigen/Core>

#include <cstdint>
#include <vector>

namespace Ond::Baking {

struct WeldedMesh
{
    std::vector<Eigen::Vector4f> positions; // one per distinct position, w = 1
    std::vector<Eigen::Vector3f> normals;   // unit, one per welded vertex
    std::vector<uint32_t> indices;          // 3 per triangle, over the welded vertices
    std::vector<uint32_t> weldedVertex;     // for each input vertex, its welded vertex

    // positions: 4 floats per vertex (w unused); normals: 3 floats per
    // vertex, or null. The first vertex at a place stands for all others.
    // A welded normal is the mean of its vertices' normals; where there are
    // none or they cancel, the area-weighted mean of the faces around it.
    static WeldedMesh weld(const float* positions, const float* normals, uint32_t vertexCount,
                           const uint32_t* indices, uint32_t triangleCount);
};

} // namespace Ond::Baking
