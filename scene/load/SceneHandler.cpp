#include "scene/load/SceneHandler.h"

#include "scene/load/SceneLoaderMgr.h"
#include "scene/processing/SceneProcessor.h"

#include <QObject>

namespace Ond::SceneLoad {

SceneHandler::SceneHandler()
    : m_processor(std::make_unique<SceneGraph::MeshProcessing::SceneProcessor>())
{
}

SceneHandler::~SceneHandler() = default;

void SceneHandler::load(std::shared_ptr<SceneGraph::Scene>& result, const SceneLoadOptions& options,
                        const SceneLoaderMgr* loaderMgr, Core::ProgressInterface* progress)
{
    result = loadScene(options, loaderMgr, progress);
    if (progress && result)
        progress->setText(QObject::tr("Processing meshes"));
    // Post-processing: normals, tangent frames and boxes the file lacked.
    // Deindexed before the tangents, reindexed after them.
    m_processor->processScene(result, options, progress, true, true);
}

std::shared_ptr<SceneGraph::Scene> SceneHandler::load(const SceneLoadOptions& options,
                                                      const SceneLoaderMgr* loaderMgr,
                                                      Core::ProgressInterface* progress)
{
    std::shared_ptr<SceneGraph::Scene> result;
    load(result, options, loaderMgr, progress);
    return result;
}

} // namespace Ond::SceneLoad
