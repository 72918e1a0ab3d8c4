#pragma once
// How the commands load one mesh file: a UrlSceneHandler on the file, the
// program's loaders, the given load flags, post-processing, and the error
// line on "ZMFBaker" when nothing results. The caller applies its selection
// to the scene afterwards.

#include "program/ProgressInterface.h"
#include "scene/graph/Scene.h"
#include "scene/load/SceneLoadOptions.h"

#include <QString>

#include <memory>

namespace Ond::SceneLoad {

class SceneFileLoader
{
public:
    // flags: BakeLoadFlags (63), or RecomputeTangentsLoadFlags (59) when the
    // file's tangents are not to be kept. Logs
    // "Error: Scene "<path>" couldn't be loaded ." and returns empty on
    // failure.
    static std::shared_ptr<SceneGraph::Scene> load(const QString& path, uint32_t flags,
                                                   Core::ProgressInterface* progress = nullptr);
    static std::shared_ptr<SceneGraph::Scene> load(const QString& path, const SceneLoadOptions& options,
                                                   Core::ProgressInterface* progress = nullptr);
};

} // namespace Ond::SceneLoad
