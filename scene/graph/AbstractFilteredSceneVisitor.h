#pragma once
// A scene visitor that sees only the meshes, and SubMeshes, whose render
// flags meet a mask, and only meshes that have a given UV set. Derived
// classes fill in the hooks.

#include "scene/graph/BitField.h"
#include "scene/graph/ISceneVisitor.h"

#include <cstdint>

namespace Ond::SceneGraph {

struct SubMesh;

class AbstractFilteredSceneVisitor : public ISceneVisitor
{
public:
    // A mask of all ones lets everything through without asking the
    // components for their flags.
    AbstractFilteredSceneVisitor(BitField<int> flags, int32_t uvIndex);

    bool visitEntity(Entity& entity) override;
    bool visitScene(Scene& scene) override;
    void endVisitEntity(Entity& entity) override;
    void endVisitScene(Scene& scene) override;
    void visit(const MeshDisplayComponent* component) override;

    virtual bool beginMesh(const MeshDisplayComponent* component, int uvIndex);
    virtual bool beginEntity(Entity& entity, int entityIndex);
    virtual bool beginScene(Scene& scene);
    virtual void endMesh(const MeshDisplayComponent* component, int uvIndex);
    virtual void endEntity(Entity& entity, int entityIndex);
    virtual void endScene(Scene& scene);
    // subMeshIndex counts every SubMesh of the mesh, filtered or not.
    virtual void visitSubMesh(SubMesh& subMesh, int subMeshIndex);

    BitField<int> getFlags() const { return m_flags; }
    int32_t getUvIndex() const { return m_uvIndex; }
    int32_t getEntityIndex() const { return m_entityIndex; }

protected:
    BitField<int> m_flags;
    int32_t m_uvIndex;
    int32_t m_entityIndex = 0;
};

} // namespace Ond::SceneGraph
