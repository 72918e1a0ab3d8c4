#pragma once
// The bake of one input: load the low mesh, the high meshes and the cage,
// run the baker, write the file. Shared by the baker commands and the plan.

#include "commands/BakerSettingsMap.h"

#include "scene/graph/Scene.h"

#include <QString>
#include <QStringList>

#include <string>

namespace Ond::Baking {
class AbstractMapBaker;
}
namespace Vrn::Baking {
class BakingContext;
}

namespace ProgramCommand {

// Returns the path of the written file, or an empty string when nothing was
// written (the reason is in the log).
QString bakeInput(const BakerSettingsMap& settings, Ond::Baking::AbstractMapBaker& baker, const QString& bakerName,
                  const QString& inputPath, Vrn::Baking::BakingContext& context, const QStringList& highMeshes,
                  const QString& cagePath);

// The low scene with the selection applied and converted for the context;
// null (and a line in the log) if the file couldn't be loaded or holds no
// triangles. A scene without UVs is said on the log and still returned.
// Tangents of the file are kept unless `recomputeTangents`.
Ond::SceneGraph::SceneSPtr loadScene(Vrn::Baking::BakingContext& context, const QString& inputPath,
                                     const QStringList& selection, bool recomputeTangents);

// All high meshes under one scene. Null if the run was cancelled or a file
// holds no triangles (said on the log). A file that can't be loaded is named
// on the log, then throws std::runtime_error: the whole run stops there.
Ond::SceneGraph::SceneSPtr loadHighScenes(Vrn::Baking::BakingContext& context, const QStringList& highMeshes,
                                          const std::string& bakerIdentifier);

} // namespace ProgramCommand
