#pragma once
// Walks the mesh entities of a scene that pass a selection mask. Base of
// the GL scene builders, the filtered draw and the bounding box.

#include "scene/graph/Mesh.h"
#include "scene/graph/Scene.h"

#include <Eigen/Core>
#include <Eigen/LU>

#include <cmath>
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

// A mesh's vertices in world space: positions through its transform, normals
// through the inverse transpose, brought back to unit length unless zero.
struct WorldTransform
{
    explicit WorldTransform(const Eigen::Matrix4f& transform)
        : linear(transform.topLeftCorner<3, 3>()),
          translation(transform.topRightCorner<3, 1>()),
          normalMatrix(linear.inverse().transpose())
    {
    }

    Eigen::Vector3f position(const Eigen::Vector3f& p) const { return linear * p + translation; }

    Eigen::Vector3f normal(const Eigen::Vector3f& n) const
    {
        Eigen::Vector3f out = normalMatrix * n;
        const float squared = out.squaredNorm();
        if (squared > 1e-5f && std::abs(squared - 1.0f) > 0.0001f)
            out /= std::sqrt(squared);
        return out;
    }

    Eigen::Matrix3f linear;
    Eigen::Vector3f translation;
    Eigen::Matrix3f normalMatrix;
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
