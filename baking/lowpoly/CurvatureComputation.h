#pragma once
// Convexity at each vertex of a repaired, welded mesh: a least-squares fit
// of Euler's formula to the normal curvatures towards the vertex's ring of
// neighbours, with the largest of them as the first axis. Only the concave
// part of the smaller principal curvature and the convex part of the larger
// are kept. The value is positive where the surface bulges along its
// normals: a sphere of radius R with outward normals gives 1/R (times the
// position scale), a plane 0.
//
// Chunks of vertices are independent: they run on the global thread pool
// and write disjoint ranges of the result, without locks.

#include "baking/lowpoly/DirectedEdgeStructure.h"

#include <Eigen/Core>

#include <cstdint>
#include <vector>

namespace Ond::Baking {

struct WeldedMesh;

class CurvatureComputation
{
public:
    static constexpr uint32_t ChunkSize = 1000;

    // positions and normals are indexed by the structure's vertex numbers
    // (copies made by the repair included); all three must outlive this.
    // Positions are multiplied by positionScale before the fit.
    CurvatureComputation(const std::vector<Eigen::Vector4f>& positions, const std::vector<Eigen::Vector3f>& normals,
                         const DirectedEdgeStructure& structure, float positionScale = 1.0f);

    // Entries [begin, end) of the structure's vertex list, each written to
    // out[its vertex number]. A vertex on no face, or without a neighbour
    // apart from itself, gets 0.
    void computeRange(uint32_t begin, uint32_t end, float* out) const;

    // All vertices, chunkSize entries per task; one value per position.
    std::vector<float> compute(uint32_t chunkSize = ChunkSize) const;

    // The whole road for a welded mesh: a copy is repaired into a directed
    // edge structure (the repair reports on "Mesh sanity check"), then
    // computed. One value per welded vertex; where the repair split a
    // vertex, the value of the fan it kept.
    static std::vector<float> ofWeldedMesh(const WeldedMesh& mesh, float positionScale = 1.0f,
                                           uint32_t chunkSize = ChunkSize);

    // 200 over the largest extent of the positions' bounding box: the
    // scale under which curvatures of meshes of any size are comparable.
    static float normalizingScale(const std::vector<Eigen::Vector4f>& positions);

private:
    const std::vector<Eigen::Vector4f>& positions;
    const std::vector<Eigen::Vector3f>& normals;
    const DirectedEdgeStructure& structure;
    float scale;
};

} // namespace Ond::Baking
