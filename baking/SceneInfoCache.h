#pragma once
// The converted form of each scene a context has loaded, kept until the
// scene goes away or changes.

#include "baking/ConvertedMesh.h"

#include "scene/graph/Scene.h"

#include <map>
#include <memory>
#include <mutex>

namespace Vrn::Baking {

class SceneInfoCache
{
public:
    using MeshesSPtr = std::shared_ptr<const ConvertedMeshList>;

    void store(const Ond::SceneGraph::SceneSPtr& scene, ConvertedMeshList meshes);
    // Null for a scene never stored, gone, or changed since it was stored.
    MeshesSPtr find(const Ond::SceneGraph::SceneSPtr& scene) const;
    void clear();

private:
    struct Entry
    {
        std::weak_ptr<Ond::SceneGraph::Scene> scene;
        uint64_t revision = 0;
        MeshesSPtr meshes;
    };

    mutable std::mutex m_mutex;
    std::map<const Ond::SceneGraph::Scene*, Entry> m_entries;
};

} // namespace Vrn::Baking
