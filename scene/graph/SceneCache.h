#pragma once
// Lists the unique meshes of a scene. Several entities may share one Mesh;
// walks over meshes must see each once.

#include "scene/graph/Mesh.h"

#include <functional>
#include <vector>

namespace Ond::SceneGraph {

class Scene;

class SceneCache
{
public:
    SceneCache();
    virtual ~SceneCache();

    // Called by the Scene that takes the cache.
    void setScene(Scene* scene) { m_scene = scene; }
    Scene* getScene() const { return m_scene; }

    // Each Mesh of the scene and its sub-scenes once, in entity order.
    std::vector<Mesh::SPtr> getMeshes() const;

private:
    Scene* m_scene = nullptr;
};

} // namespace Ond::SceneGraph
