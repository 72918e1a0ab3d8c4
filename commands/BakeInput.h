#pragma once
// The bake of one input: load the low mesh, the high meshes and the cage,
// run the baker, write the file. Shared by the baker commands and the plan.

#include "commands/BakerSettingsMap.h"

#include "scene/graph/Scene.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <string>
#include <vector>

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

// Bakes every tile that the low mesh's UVs cover in the baker's UV set, one
// file per tile, named with the tile's UDIM number (added to the name when
// the pattern lacks it). The written paths, one per tile, empty for a
// failed one; a single empty path when the input couldn't be baked.
QStringList bakeCoveredTiles(const BakerSettingsMap& settings, Ond::Baking::AbstractMapBaker& baker,
                             const QString& bakerName, const QString& inputPath, Vrn::Baking::BakingContext& context,
                             const QStringList& highMeshes, const QString& cagePath);
// The tiles bakeCoveredTiles bakes, in ascending order; with none, the
// error is logged.
std::vector<uint16_t> bakedTilesOf(Ond::Baking::AbstractMapBaker& baker, const Ond::SceneGraph::Scene& low,
                                   const QString& inputPath);
// bakeCoveredTiles on scenes that are loaded already.
QStringList saveCoveredTiles(const BakerSettingsMap& settings, Ond::Baking::AbstractMapBaker& baker,
                             const QString& bakerName, const QString& inputPath, Vrn::Baking::BakingContext& context,
                             const Ond::SceneGraph::SceneSPtr& low, const Ond::SceneGraph::SceneSPtr& high,
                             const QString& cagePath);

// Selects the tangent-space plugin and the binormal rule of the settings;
// false (with the reason in the log) when the plugin can't be used.
bool applyTangentSpaceSettings(const BakerSettingsMap& settings);

// The low scene with the selection applied and converted for the context;
// null (and a line in the log) if the file couldn't be loaded or holds no
// triangles. A scene without UVs is said on the log and still returned.
// Tangents of the file are kept unless `recomputeTangents`.
Ond::SceneGraph::SceneSPtr loadScene(Vrn::Baking::BakingContext& context, const QString& inputPath,
                                     const QStringList& selection, bool recomputeTangents);

// The load flags of a baker's high meshes: tangent frames only for the
// texture baker, which reads them; the least for the curvature baker.
uint32_t highLoadFlags(const std::string& bakerIdentifier);

// What a baker bakes from: nothing (a low-poly baker), the low mesh itself
// (a detail baker told to use it as high), or high mesh files.
enum class HighSource { None, Low, Files };
HighSource highSourceOf(Ond::Baking::AbstractMapBaker& baker);

// All high meshes under one scene. Null if the run was cancelled or a file
// holds no triangles (said on the log). A file that can't be loaded is named
// on the log, then throws std::runtime_error: the whole run stops there.
Ond::SceneGraph::SceneSPtr loadHighScenes(Vrn::Baking::BakingContext& context, const QStringList& highMeshes,
                                          const std::string& bakerIdentifier);

} // namespace ProgramCommand
