#pragma once
// Reads the files of FBXSceneLoader through Assimp into a Scene: a root
// entity that brings the file to Y up and metres, then one entity per node
// of the file, each with its mesh: one SubMesh per material, triangles only.

#include "scene/load/SceneImporter.h"

#include <QCoreApplication>

namespace Ond::SceneLoad {

class FBXSceneImporter : public SceneImporter
{
    Q_DECLARE_TR_FUNCTIONS(Ond::SceneLoad::FBXSceneImporter)

public:
    FBXSceneImporter(const QString& filePath, const QByteArray& suffix, SceneHandler* handler = nullptr);

    // Null for an unreadable or broken file, one without triangles, or on
    // cancellation. What Assimp says about it is an information line.
    SceneGraph::Scene* import(const SceneLoadOptions& options, Core::ProgressInterface* progress) override;

    // The same from bytes in memory; the suffix picks the format.
    SceneGraph::Scene* importFromMemory(const void* data, size_t size, const SceneLoadOptions& options,
                                        Core::ProgressInterface* progress);
};

} // namespace Ond::SceneLoad
