#pragma once
// Reads a Wavefront OBJ file into a Scene: a root entity, then one mesh
// entity per object (or group) of the file.

#include "scene/load/SceneImporter.h"

#include <QCoreApplication>

namespace Ond::SceneLoad {

class OBJSceneImporter : public SceneImporter
{
    Q_DECLARE_TR_FUNCTIONS(Ond::SceneLoad::OBJSceneImporter)

public:
    OBJSceneImporter(const QString& filePath, const QByteArray& suffix, SceneHandler* handler = nullptr);

    // Parse errors are logged and the import goes on; an unreadable file,
    // inconsistent data or cancellation give null.
    SceneGraph::Scene* import(const SceneLoadOptions& options, Core::ProgressInterface* progress) override;
};

} // namespace Ond::SceneLoad
