#pragma once
// Where a scene comes from. A handler loads the scene and hands it to mesh
// post-processing, whose cache it owns, and tells when a newer version of
// its source exists.

#include "program/ProgressInterface.h"
#include "scene/graph/Scene.h"
#include "scene/load/SceneLoadOptions.h"

#include <QObject>

#include <cstdint>
#include <memory>

namespace Ond::SceneGraph::MeshProcessing {
class SceneProcessor;
}

namespace Ond::SceneLoad {

class SceneLoaderMgr;

class SceneHandler : public QObject
{
    Q_OBJECT

public:
    SceneHandler();
    ~SceneHandler() override;

    // Identifies the content of the source; 0 when there is none.
    virtual uint32_t getContentHash() const = 0;
    virtual bool isValid() const = 0;
    // The parsed scene, not post-processed; empty on failure.
    virtual std::shared_ptr<SceneGraph::Scene> loadScene(const SceneLoadOptions& options,
                                                         const SceneLoaderMgr* loaderMgr,
                                                         Core::ProgressInterface* progress) = 0;

    // loadScene, then post-processing of the result (deindexed before the
    // tangents, reindexed after them). The result is empty on failure.
    void load(std::shared_ptr<SceneGraph::Scene>& result, const SceneLoadOptions& options,
              const SceneLoaderMgr* loaderMgr, Core::ProgressInterface* progress);
    std::shared_ptr<SceneGraph::Scene> load(const SceneLoadOptions& options, const SceneLoaderMgr* loaderMgr,
                                            Core::ProgressInterface* progress);

    SceneGraph::MeshProcessing::SceneProcessor* getSceneProcessor() const { return m_processor.get(); }

signals:
    void newVersionAvailable();

private:
    std::unique_ptr<SceneGraph::MeshProcessing::SceneProcessor> m_processor;
};

using SceneHandlerSPtr = std::shared_ptr<SceneHandler>;

} // namespace Ond::SceneLoad
