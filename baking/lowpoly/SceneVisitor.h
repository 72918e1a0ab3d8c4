#pragma once
// Walks the mesh entities of a scene that pass a selection mask. Base of
// the GL scene builders, the filtered draw and the bounding box.

#include "scene/graph/Mesh.h"
#include "scene/graph/Scene.h"

#include <Eigen/Core>

#include <cstdint>

namespace Ond::Baking {

class SceneVisitor
{
public:
    struct MeshItem
    {
        const SceneGraph::Entity* entity = nullptr;
        SceneGraph::Mesh::DataSPtr data;
        Eigen::Matrix4f transform = Eigen::Matrix4f::Identity();
        // OR of the selection bits of the mesh's parts.
        uint32_t selectionMask = 0;
    };

    // A mask of all ones takes every mesh.
    SceneVisitor(uint32_t meshMask, uint32_t uvSet) : m_meshMask(meshMask), m_uvSet(uvSet) {}
    virtual ~SceneVisitor() = default;
    // Once per selected mesh, in scene order. False stops the walk.
    virtual bool visitMesh(const MeshItem& item) = 0;

    // False if a visit stopped the walk.
    bool walk(const SceneGraph::Scene& scene);

    uint32_t meshMask() const { return m_meshMask; }
    uint32_t uvSet() const { return m_uvSet; }

protected:
    uint32_t m_meshMask;
    uint32_t m_uvSet;
};

// World-space box of the selected meshes' vertices. Empty: minimum above
// maximum.
class BBoxVisitor : public SceneVisitor
{
public:
    using SceneVisitor::SceneVisitor;
    bool visitMesh(const MeshItem& item) override;

    Eigen::Vector3f minimum = Eigen::Vector3f::Constant(3.4028235e38f);
    Eigen::Vector3f maximum = Eigen::Vector3f::Constant(-3.4028235e38f);
};

} // namespace Ond::Baking
