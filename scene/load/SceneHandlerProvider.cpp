#include "scene/load/SceneHandlerProvider.h"

#include "scene/load/UrlSceneHandler.h"

#include <QFileInfo>
#include <QUrl>

namespace Ond::SceneLoad {

SceneHandlerProvider::~SceneHandlerProvider() = default;

SceneHandlerSPtr UrlSceneHandlerProvider::createHandler(const SceneId& sceneId)
{
    const QString text = QString::fromStdString(sceneId);
    if (!text.startsWith(QLatin1String("file:")))
        return nullptr;
    const QUrl url(text);
    const QString path = url.isValid() && url.isLocalFile() ? url.toLocalFile() : text;
    const QFileInfo info(path);
    if (path.isEmpty() || !info.exists())
        return nullptr;
    return std::make_shared<UrlSceneHandler>(QUrl::fromLocalFile(info.absoluteFilePath()));
}

void SceneHandlerProviderMgr::addProvider(std::shared_ptr<SceneHandlerProvider> provider)
{
    if (provider)
        m_providers.push_back(std::move(provider));
}

SceneHandlerSPtr SceneHandlerProviderMgr::createHandler(const SceneId& sceneId) const
{
    for (const auto& provider : m_providers) {
        if (SceneHandlerSPtr handler = provider->createHandler(sceneId))
            return handler;
    }
    return nullptr;
}

} // namespace Ond::SceneLoad
