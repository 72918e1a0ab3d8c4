#include "baking/lowpoly/SeAOGeometry.h"

#include "baking/lowpoly/GLBakeParameters.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>

namespace Ond::Baking::SeAO {

void Geometry::normalizeToUnitFrame()
{
    if (vertices.empty())
        return;
    const Eigen::Vector3f extent = boxMaximum - boxMinimum;
    float largest = extent.x();
    if (extent.y() > largest)
        largest = extent.y();
    if (extent.z() > largest)
        largest = extent.z();
    const Eigen::Vector3f centre = (boxMinimum + boxMaximum) * 0.5f;
    // A mesh shrunk to a point keeps its scale rather than dividing by 0.
    const float scale = largest > 0.0f ? 1.0f / largest : 1.0f;
    for (Vertex& v : vertices)
        v.position = (v.position - centre) * scale;
}

CollectMeshDataVisitor::CollectMeshDataVisitor(uint32_t meshMask, uint32_t uvSet, bool invert)
    : SceneVisitor(meshMask, uvSet), m_invert(invert)
{
}

bool CollectMeshDataVisitor::visitMesh(const MeshItem& item)
{
    const SceneGraph::Mesh::Data& data = *item.data;
    const size_t n = data.getVertexCount();
    const SceneGraph::Vec3Buffer& positions = *data.getPositions();
    const SceneGraph::Vec3Buffer* normals = data.getNormals();
    const SceneGraph::Vec2Buffer* uvs = data.getUvSet(m_uvSet);
    if (!uvs)
        uvs = data.getUvSet(0);

    const WorldTransform world(item.transform);
    const float normalSign = m_invert ? -1.0f : 1.0f;
    const uint32_t base = uint32_t(geometry.vertices.size());
    geometry.vertices.reserve(geometry.vertices.size() + n);
    for (size_t i = 0; i < n; ++i) {
        Vertex v;
        v.position = world.position(positions[i]);
        const Eigen::Vector3f normal =
            normals && normals->size() > i ? world.normal((*normals)[i]) : Eigen::Vector3f::Zero();
        v.normal = normal * normalSign;
        v.uv = uvs && uvs->size() > i ? (*uvs)[i] : Eigen::Vector2f::Zero();
        geometry.boxMinimum = geometry.boxMinimum.cwiseMin(v.position);
        geometry.boxMaximum = geometry.boxMaximum.cwiseMax(v.position);
        geometry.vertices.push_back(v);
    }

    for (const SceneGraph::SubMesh& sub : data.getSubMeshes()) {
        if (sub.primitiveType != SceneGraph::PrimitiveType::Triangles || sub.indicesPerPrimitive != 3 || !sub.indices)
            continue;
        const uint32_t partMask = selectionMaskFromRenderFlags(sub.renderFlags.value());
        if (!passesMeshMask(partMask, m_meshMask))
            continue;
        const bool drawn = passesMeshMask(partMask, 2u);
        const size_t count = sub.indices->size() / 3 * 3;
        for (size_t i = 0; i < count; i += 3) {
            uint32_t corners[3] = {(*sub.indices)[i], (*sub.indices)[i + 1], (*sub.indices)[i + 2]};
            if (corners[0] >= n || corners[1] >= n || corners[2] >= n)
                continue;
            if (m_invert)
                std::swap(corners[1], corners[2]);
            for (uint32_t c : corners) {
                geometry.triangles.push_back(base + c);
                if (drawn)
                    geometry.drawnTriangles.push_back(base + c);
            }
        }
    }
    return true;
}

} // namespace Ond::Baking::SeAO
