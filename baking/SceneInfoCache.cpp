#include "baking/SceneInfoCache.h"

namespace Vrn::Baking {

void SceneInfoCache::store(const Ond::SceneGraph::SceneSPtr& scene, ConvertedMeshList meshes)
{
    if (!scene)
        return;
    std::lock_guard<std::mutex> lock(m_mutex);
    // Drop what belongs to scenes that are gone, so that a reused address
    // can't find a stale entry.
    for (auto it = m_entries.begin(); it != m_entries.end();)
        it = it->second.scene.expired() ? m_entries.erase(it) : std::next(it);
    Entry& entry = m_entries[scene.get()];
    entry.scene = scene;
    entry.revision = scene->getRevision();
    entry.meshes = std::make_shared<const ConvertedMeshList>(std::move(meshes));
}

SceneInfoCache::MeshesSPtr SceneInfoCache::find(const Ond::SceneGraph::SceneSPtr& scene) const
{
    if (!scene)
        return nullptr;
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_entries.find(scene.get());
    if (it == m_entries.end() || it->second.scene.lock() != scene || it->second.revision != scene->getRevision())
        return nullptr;
    return it->second.meshes;
}

void SceneInfoCache::clear()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.clear();
}

} // namespace Vrn::Baking
