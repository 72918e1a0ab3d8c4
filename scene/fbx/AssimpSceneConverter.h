#pragma once
// The node tree of an Assimp scene as entities, and what brings a file's
// units and axes to the program's: metres, Y up, right-handed.

#include "program/ProgressInterface.h"
#include "scene/graph/Scene.h"
#include "scene/load/SceneLoadOptions.h"

#include <QString>

#include <Eigen/Core>

struct aiScene;

namespace Ond::SceneLoad {

// The transform from file coordinates to metres, Y up. FBX files state
// their unit and axes in their settings; glTF is metres and Y up by
// definition; Assimp already applies the COLLADA and 3DS ones to the root
// node. Other formats carry neither and are taken as they are.
Eigen::Matrix4f fileToSceneTransform(const aiScene& scene, const QByteArray& suffix);

// A root entity "root" holding that transform, then one entity per node in
// depth-first order, each with its local transform and, if the node has
// triangles, its mesh. A node without a name takes fallbackName. Progress
// runs from 0 to 1; null on cancellation or when no mesh results.
SceneGraph::Scene* convertScene(const aiScene& scene, const Eigen::Matrix4f& rootTransform,
                                const SceneLoadOptions& options, const QString& fallbackName,
                                Core::ProgressInterface* progress);

} // namespace Ond::SceneLoad
