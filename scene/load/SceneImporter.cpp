#include "scene/load/SceneImporter.h"

namespace Ond::SceneLoad {

SceneImporter::SceneImporter(const QString& filePath, const QByteArray& fileSuffix, SceneHandler* sceneHandler)
    : handler(sceneHandler), suffix(fileSuffix), file(filePath)
{
}

SceneImporter::~SceneImporter() = default;

} // namespace Ond::SceneLoad
