#include "scene/load/SceneHandler.h"

#include "scene/load/SceneLoaderMgr.h"

#if __has_include("scene/processing/SceneProcessor.h")
#include "scene/processing/SceneProcessor.h"
#define ZMF_HAVE_SCENE_PROCESSOR 1
#endif

namespace Ond::SceneLoad {

SceneHandler::SceneHandler()
#ifdef ZMF_HAVE_SCENE_PROCESSOR
    : m_processor(std::make_unique<SceneGraph::MeshProcessing::SceneProcessor>())
#endif
{
}

SceneHandler::~SceneHandler() = default;

void SceneHandler::load(std::shared_ptr<SceneGraph::Scene>& result, const SceneLoadOptions& options,
                        const SceneLoaderMgr* loaderMgr, Core::ProgressInterface* progress)
{
    result = loadScene(options, loaderMgr, progress);
    // Post-processing: normals, tangent frames and boxes the file lacked.
    // Deindexed before the tangents, reindexed after them.
#ifdef ZMF_HAVE_SCENE_PROCESSOR
    m_processor->processScene(result, options, progress, true, true);
#endif
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
