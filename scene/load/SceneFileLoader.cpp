#include "scene/load/SceneFileLoader.h"

#include "program/LogChannel.h"
#include "scene/load/SceneLoaderMgr.h"
#include "scene/load/UrlSceneHandler.h"

#include <QUrl>

namespace Ond::SceneLoad {

std::shared_ptr<SceneGraph::Scene> SceneFileLoader::load(const QString& path, uint32_t flags,
                                                         Core::ProgressInterface* progress)
{
    return load(path, SceneLoadOptions(flags), progress);
}

std::shared_ptr<SceneGraph::Scene> SceneFileLoader::load(const QString& path, const SceneLoadOptions& options,
                                                         Core::ProgressInterface* progress)
{
    UrlSceneHandler handler(QUrl::fromLocalFile(path));
    const SceneLoaderMgrSPtr loaderMgr = createSceneLoaderMgr();
    std::shared_ptr<SceneGraph::Scene> scene = handler.load(options, loaderMgr.data(), progress);
    if (!scene) {
        Core::zmfBakerChannel().error(QStringLiteral("Error: Scene \"%1\" couldn't be loaded .").arg(path));
        return nullptr;
    }
    return scene;
}

} // namespace Ond::SceneLoad
