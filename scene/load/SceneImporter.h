#pragma once
// Parses one file into a Scene. An importer is made by its SceneLoader for
// one import call and reads the QFile it was given.

#include "program/ProgressInterface.h"
#include "scene/graph/Scene.h"
#include "scene/load/SceneLoadOptions.h"

#include <QByteArray>
#include <QFile>
#include <QString>

namespace Ond::SceneLoad {

class SceneHandler;

class SceneImporter
{
public:
    // The file is not opened here; the importer opens it.
    SceneImporter(const QString& filePath, const QByteArray& suffix, SceneHandler* handler = nullptr);
    virtual ~SceneImporter();

    SceneImporter(const SceneImporter&) = delete;
    SceneImporter& operator=(const SceneImporter&) = delete;

    // A new Scene owned by the caller, or null on failure or cancellation.
    // No exception leaves it.
    virtual SceneGraph::Scene* import(const SceneLoadOptions& options, Core::ProgressInterface* progress) = 0;

    QFile& getFile() { return file; }
    const QByteArray& getSuffix() const { return suffix; }
    SceneHandler* getHandler() const { return handler; }
    void setHandler(SceneHandler* sceneHandler) { handler = sceneHandler; }

protected:
    SceneHandler* handler = nullptr;
    QByteArray suffix;
    QFile file;
};

} // namespace Ond::SceneLoad
