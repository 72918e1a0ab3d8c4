#pragma once
// The baking context the commands hand to bakers: the GPU switches from the
// command line, the tangent layer, image loading, scene loading through the
// scene manager, and cancellation by task handlers or watched jobs.

#include "baking/AbstractBakingContext.h"
#include "baking/BakingJob.h"
#include "baking/SceneInfoCache.h"
#include "baking/TaskHandler.h"
#include "program/ProgressInterface.h"

#include "scene/graph/Scene.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace Ond::SceneLoad {
class SceneMgr;
}

namespace Vrn::Baking {

class BakingUDIMTilesProvider;

class BakingContext : public Ond::Baking::AbstractBakingContext
{
public:
    // Where finished regions of a map go (the UDIM tile provider).
    using TileOutput = std::function<void(const Ond::Surfaces::SurfaceSPtr&, int, int, bool)>;

    explicit BakingContext(std::shared_ptr<Ond::SceneLoad::SceneMgr> sceneMgr);
    ~BakingContext() override;

    std::string tangentPluginName() const override;
    bool isCancelled() const override;
    bool perFragmentBinormal() const override;
    bool loadSurface(const QString& path, Ond::Surfaces::SurfaceSPtr& result) override;
    void tileOutput(const Ond::Surfaces::SurfaceSPtr& surface, int cellX, int cellY, bool isFinal) override;
    void progressBegin(const QString& name) override;
    void progressValue(double fraction) override;
    void progressEnd() override;
    void progressText(const QString& text = QString()) override;
    bool gpuAllowed() const override { return m_gpuAllowed; }
    bool forceDxr() const override { return m_forceDxr; }
    bool forceOptix() const override { return m_forceOptix; }

    void setGpuAllowed(bool allowed) { m_gpuAllowed = allowed; }
    void setForceOptix(bool force) { m_forceOptix = force; }
    void setForceDxr(bool force) { m_forceDxr = force; }

    const std::shared_ptr<Ond::SceneLoad::SceneMgr>& sceneMgr() const { return m_sceneMgr; }

    // Loads a path or file: URL through the scene manager with the given
    // load flags, and converts the result. Null on failure; the caller
    // reports it.
    Ond::SceneGraph::SceneSPtr loadSceneFile(const QString& pathOrUrl, uint32_t flags,
                                             Ond::Core::ProgressInterface* progress = nullptr);
    // Puts the scene through SceneConverterVisitor and keeps the records.
    void convertScene(const Ond::SceneGraph::SceneSPtr& scene);
    // The records of the last conversion of the scene; null if it was never
    // converted or has changed since.
    SceneInfoCache::MeshesSPtr convertedMeshes(const Ond::SceneGraph::SceneSPtr& scene) const;

    // Handler 0 receives the progress; both are asked about cancellation.
    void setTaskHandler(int slot, std::shared_ptr<TaskHandler> handler);
    void setTileOutput(TileOutput output) { m_tileOutput = std::move(output); }
    // Hands the regions of the bakes to the provider's current tile, for a
    // viewer of the bake in progress; null takes it away.
    void setTilesProvider(std::shared_ptr<BakingUDIMTilesProvider> provider);
    const std::shared_ptr<BakingUDIMTilesProvider>& tilesProvider() const { return m_tilesProvider; }
    // The tile the next regions belong to, and its end; nothing without a provider.
    void beginTile(int u, int v, int width, int height);
    void endTile();
    // The job is watched until it ends.
    void addJob(const std::weak_ptr<BakingJob>& job);

private:
    TaskHandler* firstHandler() const { return m_handlers[0].get(); }

    std::shared_ptr<Ond::SceneLoad::SceneMgr> m_sceneMgr;
    std::shared_ptr<SceneInfoCache> m_sceneInfo;
    std::shared_ptr<TaskHandler> m_handlers[2];
    TileOutput m_tileOutput;
    std::shared_ptr<BakingUDIMTilesProvider> m_tilesProvider;
    mutable std::mutex m_jobsMutex;
    std::vector<std::weak_ptr<BakingJob>> m_jobs;
    bool m_gpuAllowed = true;
    bool m_forceDxr = false;
    bool m_forceOptix = false;
};

} // namespace Vrn::Baking
