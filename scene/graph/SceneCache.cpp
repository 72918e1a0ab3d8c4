#include "scene/graph/SceneCache.h"

#include "scene/graph/MeshDisplayComponent.h"
#include "scene/graph/Scene.h"

#include <unordered_set>

namespace Ond::SceneGraph {

SceneCache::SceneCache() = default;

SceneCache::~SceneCache() = default;

std::vector<Mesh::SPtr> SceneCache::getMeshes() const
{
    std::vector<Mesh::SPtr> meshes;
    if (!m_scene)
        return meshes;
    std::unordered_set<const Mesh*> seen;
    m_scene->forAllEntities([&](const Entity::SPtr& entity) {
        const MeshDisplayComponent* display = entity->getMeshDisplay();
        const Mesh::SPtr& mesh = display ? display->getMesh() : Mesh::SPtr();
        if (mesh && seen.insert(mesh.get()).second)
            meshes.push_back(mesh);
        return true;
    });
    return meshes;
}

} // namespace Ond::SceneGraph
