#include "scene/load/SceneMgr.h"

#include "program/LogChannel.h"

namespace Ond::SceneLoad {

namespace {

Core::LogChannel& sceneMgrChannel()
{
    static Core::LogChannel channel(QStringLiteral("SceneLoad/SceneMgr"));
    return channel;
}

} // namespace

SceneMgr::SceneMgr(SceneLoaderMgrSPtr loaderMgr, SceneExporterMgrSPtr exporterMgr)
    : m_loaderMgr(std::move(loaderMgr)), m_exporterMgr(std::move(exporterMgr)), m_options(AllLoadFlags)
{
    registerSceneIdMetaType();
    m_providers.addProvider(std::make_shared<UrlSceneHandlerProvider>());
}

SceneMgr::~SceneMgr() = default;

void SceneMgr::connectHandler(const SceneHandlerSPtr& handler)
{
    if (handler)
        connect(handler.get(), &SceneHandler::newVersionAvailable, this, &SceneMgr::onNewSceneVersionAvailable,
                Qt::ConnectionType(Qt::UniqueConnection | Qt::DirectConnection));
}

void SceneMgr::registerScene(const SceneId& id, SceneHandlerSPtr handler)
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    if (id.empty()) {
        // Debug detail: shown with --verbose only.
        sceneMgrChannel().info(QStringLiteral("Can't register a scene with an id null or empty !"));
        return;
    }
    m_handlers.insert(id, handler);
    m_entries.insert(id, SceneEntry{nullptr, ++m_versionCounter, 0});
    connectHandler(handler);
}

bool SceneMgr::isSceneRegistered(const SceneId& id) const
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    const SceneHandlerSPtr handler = m_handlers.value(id);
    return handler && handler->isValid();
}

SceneHandlerSPtr SceneMgr::getHandler(const SceneId& id) const
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    return m_handlers.value(id);
}

void SceneMgr::setOptions(const SceneLoadOptions& options)
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    m_options = options;
}

SceneLoadOptions SceneMgr::getOptions() const
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    return m_options;
}

std::shared_ptr<SceneGraph::Scene> SceneMgr::getScene(const SceneId& id, Core::ProgressInterface* progress)
{
    std::unique_lock<std::recursive_mutex> lock(m_mutex);
    const auto found = m_entries.constFind(id);
    if (found != m_entries.constEnd() && found->scene)
        return found->scene;

    SceneHandlerSPtr handler = m_handlers.value(id);
    if (!handler) {
        handler = m_providers.createHandler(id);
        if (!handler)
            return nullptr;
        m_handlers.insert(id, handler);
        connectHandler(handler);
    }

    std::shared_ptr<SceneGraph::Scene> scene = handler->load(m_options, m_loaderMgr.data(), progress);
    SceneEntry entry = m_entries.value(id);
    entry.scene = scene;
    entry.version = ++m_versionCounter;
    if (scene)
        entry.lastValidVersion = entry.version;
    m_entries.insert(id, entry);
    lock.unlock();

    emit sceneIsLoadedChanged(id, scene != nullptr);
    return scene;
}

void SceneMgr::setScene(const SceneId& id, std::shared_ptr<SceneGraph::Scene> scene, uint64_t version)
{
    std::unique_lock<std::recursive_mutex> lock(m_mutex);
    ++m_versionCounter;
    SceneEntry entry = m_entries.value(id);
    entry.scene = std::move(scene);
    entry.version = version != 0 ? version : m_versionCounter;
    if (entry.scene)
        entry.lastValidVersion = entry.version;
    const bool loaded = entry.scene != nullptr;
    m_entries.insert(id, entry);
    connectHandler(m_handlers.value(id));
    lock.unlock();

    emit sceneIsLoadedChanged(id, loaded);
}

void SceneMgr::unloadScene(const SceneId& id)
{
    std::unique_lock<std::recursive_mutex> lock(m_mutex);
    const auto found = m_entries.find(id);
    if (found == m_entries.end())
        return;
    found->scene.reset();
    lock.unlock();

    emit sceneIsLoadedChanged(id, false);
}

void SceneMgr::invalidateScene(const SceneId& id)
{
    std::unique_lock<std::recursive_mutex> lock(m_mutex);
    const SceneHandlerSPtr handler = m_handlers.value(id);
    if (!handler || !handler->isValid())
        return;
    unloadScene(id);
    lock.unlock();

    emit sceneInvalidated(id);
}

bool SceneMgr::isSceneLoaded(const SceneId& id) const
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    const auto found = m_entries.constFind(id);
    return found != m_entries.constEnd() && found->scene != nullptr;
}

uint64_t SceneMgr::getSceneVersion(const SceneId& id) const
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    return m_entries.value(id).version;
}

void SceneMgr::onNewSceneVersionAvailable()
{
    const auto* handler = qobject_cast<SceneHandler*>(sender());
    if (!handler)
        return;
    std::vector<SceneId> ids;
    {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        // A copy: invalidation below may change the map.
        const QMap<SceneId, SceneHandlerSPtr> handlers = m_handlers;
        for (auto it = handlers.constBegin(); it != handlers.constEnd(); ++it) {
            if (it.value().get() == handler)
                ids.push_back(it.key());
        }
    }
    for (const auto& id : ids)
        invalidateScene(id);
}

} // namespace Ond::SceneLoad
