#pragma once
// The low mesh as the occlusion by surface elements sees it: every selected
// mesh in world space, gathered into one vertex list and one triangle list,
// then put in a unit frame so that the tree's distances and the bias do not
// depend on the size of the model.

#include "baking/lowpoly/SceneVisitor.h"

#include <Eigen/Core>

#include <cstdint>
#include <vector>

namespace Ond::Baking::SeAO {

// 32 bytes, as uploaded.
struct Vertex
{
    Eigen::Vector3f position;
    Eigen::Vector3f normal;
    Eigen::Vector2f uv;
};
static_assert(sizeof(Vertex) == 32);

struct Geometry
{
    std::vector<Vertex> vertices;
    // Three indices a triangle: every collected triangle; these make the tree.
    std::vector<uint32_t> triangles;
    // The triangles of the selected parts, those the map covers. The same as
    // `triangles` unless unselected parts were collected as occluders.
    std::vector<uint32_t> drawnTriangles;
    Eigen::Vector3f boxMinimum = Eigen::Vector3f::Constant(3.4028235e38f);
    Eigen::Vector3f boxMaximum = Eigen::Vector3f::Constant(-3.4028235e38f);

    size_t triangleCount() const { return triangles.size() / 3; }
    bool empty() const { return triangles.empty(); }

    // Moves the box's centre to the origin and scales by 1 / its largest
    // extent (the first axis of equal ones). Normals keep their direction.
    void normalizeToUnitFrame();
};

// Gathers the meshes that pass the mask: 1 takes every part of the scene (the
// unselected ones occlude too), 2 the selected parts. With `invert` the
// triangles are gathered with the other winding and the normals negated, so
// that the elements face the way of an inverted normal map.
class CollectMeshDataVisitor : public SceneVisitor
{
public:
    CollectMeshDataVisitor(uint32_t meshMask, uint32_t uvSet, bool invert);
    bool visitMesh(const MeshItem& item) override;

    Geometry geometry;

private:
    bool m_invert;
};

} // namespace Ond::Baking::SeAO
