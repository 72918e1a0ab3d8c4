#include "scene/graph/AbstractFilteredSceneVisitor.h"

#include "scene/graph/Entity.h"
#include "scene/graph/MeshDisplayComponent.h"
#include "scene/graph/Scene.h"

namespace Ond::SceneGraph {

AbstractFilteredSceneVisitor::AbstractFilteredSceneVisitor(BitField<int> flags, int32_t uvIndex)
    : m_flags(flags), m_uvIndex(uvIndex)
{
}

bool AbstractFilteredSceneVisitor::visitEntity(Entity& entity)
{
    return beginEntity(entity, m_entityIndex);
}

bool AbstractFilteredSceneVisitor::visitScene(Scene& scene)
{
    return beginScene(scene);
}

void AbstractFilteredSceneVisitor::endVisitEntity(Entity& entity)
{
    endEntity(entity, m_entityIndex);
    ++m_entityIndex;
}

void AbstractFilteredSceneVisitor::endVisitScene(Scene& scene)
{
    endScene(scene);
}

void AbstractFilteredSceneVisitor::visit(const MeshDisplayComponent* component)
{
    if (!component)
        return;
    const bool filtered = !m_flags.isAllOnes();
    if (filtered && (component->getRenderFlags().value() & m_flags.value()) == 0)
        return;
    const Mesh::SPtr& mesh = component->getMesh();
    // Held for the whole visit: another thread may swap the mesh's data.
    const Mesh::DataSPtr data = mesh ? mesh->getData() : nullptr;
    if (!data)
        return;
    if (m_uvIndex < 0 || size_t(m_uvIndex) >= data->getUvSetCount())
        return;
    if (!beginMesh(component, m_uvIndex))
        return;
    const size_t count = data->getSubMeshCount();
    for (size_t i = 0; i < count; ++i) {
        SubMesh* sub = data->getSubMesh(i);
        if (!filtered || (sub->renderFlags.value() & m_flags.value()) != 0)
            visitSubMesh(*sub, int(i));
    }
    endMesh(component, m_uvIndex);
}

bool AbstractFilteredSceneVisitor::beginMesh(const MeshDisplayComponent*, int)
{
    return true;
}

bool AbstractFilteredSceneVisitor::beginEntity(Entity&, int)
{
    return true;
}

bool AbstractFilteredSceneVisitor::beginScene(Scene&)
{
    return true;
}

void AbstractFilteredSceneVisitor::endMesh(const MeshDisplayComponent*, int) {}

void AbstractFilteredSceneVisitor::endEntity(Entity&, int) {}

void AbstractFilteredSceneVisitor::endScene(Scene&) {}

void AbstractFilteredSceneVisitor::visitSubMesh(SubMesh&, int) {}

} // namespace Ond::SceneGraph
