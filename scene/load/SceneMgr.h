#pragma once
// Registry of named scenes. Scenes load lazily through their handlers, each
// entry keeps a version, and a handler's newer version invalidates every
// entry that uses it. Everything runs under one recursive mutex; readers of
// a scene hold a SceneMgr::LockGuard.

#include "program/ProgressInterface.h"
#include "scene/graph/Scene.h"
#include "scene/load/SceneExporterMgr.h"
#include "scene/load/SceneHandler.h"
#include "scene/load/SceneHandlerProvider.h"
#include "scene/load/SceneId.h"
#include "scene/load/SceneLoadOptions.h"
#include "scene/load/SceneLoaderMgr.h"

#include <QMap>
#include <QObject>

#include <cstdint>
#include <memory>
#include <mutex>

namespace Ond::SceneLoad {

class SceneMgr : public QObject
{
    Q_OBJECT

public:
    struct SceneEntry
    {
        std::shared_ptr<SceneGraph::Scene> scene;
        uint64_t version = 0;
        uint64_t lastValidVersion = 0;
    };

    // Holds the manager's mutex for its lifetime.
    class LockGuard
    {
    public:
        explicit LockGuard(SceneMgr& mgr) : m_lock(mgr.m_mutex) {}

    private:
        std::unique_lock<std::recursive_mutex> m_lock;
    };

    // Options start at 255 with no generator.
    SceneMgr(SceneLoaderMgrSPtr loaderMgr, SceneExporterMgrSPtr exporterMgr);
    ~SceneMgr() override;

    // An empty id is refused with a debug line.
    void registerScene(const SceneId& id, SceneHandlerSPtr handler);
    bool isSceneRegistered(const SceneId& id) const;
    SceneHandlerSPtr getHandler(const SceneId& id) const;

    void setOptions(const SceneLoadOptions& options);
    SceneLoadOptions getOptions() const;

    // A loaded scene as it stands; otherwise loads it through the handler
    // (made by the providers if none is registered). Empty on failure.
    std::shared_ptr<SceneGraph::Scene> getScene(const SceneId& id, Core::ProgressInterface* progress = nullptr);
    void setScene(const SceneId& id, std::shared_ptr<SceneGraph::Scene> scene, uint64_t version = 0);
    void unloadScene(const SceneId& id);
    void invalidateScene(const SceneId& id);

    bool isSceneLoaded(const SceneId& id) const;
    // 0 for an unknown id.
    uint64_t getSceneVersion(const SceneId& id) const;

    const SceneLoaderMgrSPtr& getLoaderMgr() const { return m_loaderMgr; }
    const SceneExporterMgrSPtr& getExporterMgr() const { return m_exporterMgr; }
    SceneHandlerProviderMgr& getProviderMgr() { return m_providers; }

signals:
    void sceneInvalidated(Ond::SceneLoad::SceneId sceneId);
    void sceneIsLoadedChanged(Ond::SceneLoad::SceneId sceneId, bool isLoaded);

public slots:
    void onNewSceneVersionAvailable();

private:
    void connectHandler(const SceneHandlerSPtr& handler);

    QMap<SceneId, SceneHandlerSPtr> m_handlers;
    QMap<SceneId, SceneEntry> m_entries;
    mutable std::recursive_mutex m_mutex;
    uint64_t m_versionCounter = 0;
    SceneHandlerProviderMgr m_providers;
    SceneLoaderMgrSPtr m_loaderMgr;
    SceneExporterMgrSPtr m_exporterMgr;
    SceneLoadOptions m_options;
};

} // namespace Ond::SceneLoad
