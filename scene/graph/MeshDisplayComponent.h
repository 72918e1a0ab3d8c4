#pragma once
// Shows a shared Mesh. Several entities may show the same Mesh.

#include "scene/graph/DisplayComponent.h"
#include "scene/graph/Mesh.h"

#include <Eigen/Core>

#include <cstdint>
#include <memory>
#include <vector>

namespace Ond::SceneGraph {

class MeshDisplayComponent : public DisplayComponent
{
    Q_OBJECT

public:
    enum ParameterId { All = 0, SubdivisionMethod = 1, SubdivisionLength = 2, SubdivisionNumber = 3 };
    Q_ENUM(ParameterId)
    static QString parameterName(int id);

    explicit MeshDisplayComponent(Mesh::SPtr mesh = nullptr);

    const Mesh::SPtr& getMesh() const { return m_mesh; }
    void setMesh(Mesh::SPtr mesh);

    uint32_t getSubdivisionMethod() const { return m_subdivisionMethod; }
    float getSubdivisionLength() const { return m_subdivisionLength; }
    uint32_t getSubdivisionNumber() const { return m_subdivisionNumber; }
    // Each setter does nothing, and raises nothing, for an unchanged value.
    void setSubdivisionMethod(uint32_t method);
    void setSubdivisionLength(float length);
    void setSubdivisionNumber(uint32_t number);

    // The entity's global transforms with its geometric transform; identity
    // and an empty list without an entity or a location.
    Eigen::Matrix4f getGlobalTransform() const;
    const std::vector<Eigen::Matrix4f>& getGlobalTransforms() const;

    void copyFrom(const EntityComponent& other) override;
    // The box of the Mesh::Data, or the shared empty box.
    const BoundingBox& getBoundingBox() const override;
    void accept(ISceneVisitor& visitor) override;
    // OR of all SubMeshes' flags; 0 without a mesh.
    BitField<int> getRenderFlags() const override;
    // Stores the flags in every SubMesh.
    void setRenderFlags(BitField<int> flags) override;

signals:
    void parameterChanged(Ond::SceneGraph::MeshDisplayComponent::ParameterId id);

private:
    Mesh::SPtr m_mesh;
    uint32_t m_subdivisionMethod = 0;
    float m_subdivisionLength = 10.0f;
    uint32_t m_subdivisionNumber = 1;
};

} // namespace Ond::SceneGraph
