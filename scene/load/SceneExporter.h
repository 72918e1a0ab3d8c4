#pragma once
// Writes a Scene to a file. Implementations live with the file formats.

#include "program/ProgressInterface.h"
#include "scene/graph/Scene.h"
#include "scene/load/SceneFormat.h"

#include <QString>

namespace Ond::SceneLoad {

class SceneExporter
{
public:
    virtual ~SceneExporter();
    virtual SceneFormatList getSupportedFormats() const = 0;
    // False on failure, with a line in the log. No exception leaves it.
    virtual bool exportScene(const SceneGraph::Scene& scene, const QString& path,
                             Core::ProgressInterface* progress) = 0;
};

} // namespace Ond::SceneLoad
