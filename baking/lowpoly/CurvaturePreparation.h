#pragma once
// What the low-poly curvature baker prepares on the CPU: the selected meshes
// gathered in world space, then, once, the mesh welded into normal groups,
// their neighbour lists and the hard-edge lines, packed into float arrays
// that become textures.

#include "baking/lowpoly/SceneVisitor.h"

#include <Eigen/Core>

#include <cstdint>
#include <vector>

namespace Ond::Baking {

struct CurvatureVertex
{
    Eigen::Vector3f position;
    Eigen::Vector3f normal;
    Eigen::Vector2f uv;
};
static_assert(sizeof(CurvatureVertex) == 32, "32 bytes per vertex");

struct CurvatureMesh
{
    std::vector<CurvatureVertex> vertices;
    std::vector<uint32_t> triangles; // 3 per triangle
};

// Selected meshes (mask 2 by default) in world space, their triangles over
// the chosen UV set, appended into one mesh.
class CollectMeshDataVisitor : public SceneVisitor
{
public:
    explicit CollectMeshDataVisitor(uint32_t uvSet, uint32_t meshMask = 2) : SceneVisitor(meshMask, uvSet) {}
    bool visitMesh(const MeshItem& item) override;

    CurvatureMesh mesh;
    // Cleared once a mesh brings any index.
    bool empty = true;
};

struct CurvatureGpuData
{
    // 8 floats per normal group: scaled position, packed start of its
    // connections; normal, connection count.
    std::vector<float> posNrm;
    // Packed indices of neighbour groups.
    std::vector<float> connections;
    int log2Width = 6;
    // Per mesh vertex, the packed index of its normal group.
    std::vector<float> vertexKeys;
    // Hard-edge lines: (u, v, l) per end, two ends per line.
    std::vector<float> seamLines;
    uint32_t groupCount = 0;
    // Connection entries counted while linking; what sizes the textures.
    uint32_t entryCount = 0;
};

// Packed index: row in the whole part, column + 0.25 over the width in the
// fraction, so that adding 1/width walks along a row into the next.
inline float packedIndex(uint32_t i, int log2Width)
{
    const uint32_t width = 1u << log2Width;
    return (float(i & (width - 1)) + 0.25f) * (1.0f / float(width)) + float(i >> log2Width);
}

// Width of the packed textures from the group count and connection entries:
// half the bits of the larger of 2 x groups and entries, in 6..12.
int packedLog2Width(uint64_t groups, uint64_t entries);

// 200 over the largest extent of the vertices' box; 1 for an empty or flat
// point set.
float curvatureScale(const CurvatureMesh& mesh);

// Welds by exact position, groups the vertices of a place by normal, links
// the groups of each triangle edge (perVertex), and draws a line along
// each hard edge with the sign of its fold (seams).
CurvatureGpuData prepareCurvatureMesh(const CurvatureMesh& mesh, bool perVertex, bool seams, float scale);

} // namespace Ond::Baking
