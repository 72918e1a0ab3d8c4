#pragma once
// Makes the handler for a scene id, if the id is of its kind.

#include "scene/load/SceneHandler.h"
#include "scene/load/SceneId.h"

#include <memory>
#include <vector>

namespace Ond::SceneLoad {

class SceneHandlerProvider
{
public:
    virtual ~SceneHandlerProvider();
    // Empty if the provider does not serve the id.
    virtual SceneHandlerSPtr createHandler(const SceneId& sceneId) = 0;
};

// Serves ids beginning with "file:". A well-formed local URL gives its local
// path; otherwise the id text itself is the path. A missing file gets no
// handler.
class UrlSceneHandlerProvider : public SceneHandlerProvider
{
public:
    SceneHandlerSPtr createHandler(const SceneId& sceneId) override;
};

// Providers asked in turn; the first handler wins.
class SceneHandlerProviderMgr
{
public:
    void addProvider(std::shared_ptr<SceneHandlerProvider> provider);
    SceneHandlerSPtr createHandler(const SceneId& sceneId) const;

private:
    std::vector<std::shared_ptr<SceneHandlerProvider>> m_providers;
};

} // namespace Ond::SceneLoad
