#include "scene/obj/OBJSceneLoader.h"

#include "scene/load/SceneLoaderMgr.h"
#include "scene/obj/OBJSceneImporter.h"

#include <QCoreApplication>

#include <mutex>

namespace Ond::SceneLoad {

bool OBJSceneLoader::canLoad(const QByteArray& suffix, const SceneLoadOptions& options) const
{
    if (options.has(KeepTangents) && !options.has(ComputeTangents))
        return false;
    return SceneLoader::canLoad(suffix, options);
}

SceneImporter* OBJSceneLoader::createImporter(const QString& filePath, const QByteArray& suffix) const
{
    return new OBJSceneImporter(filePath, suffix);
}

SceneFormatList OBJSceneLoader::getSupportedFormats() const
{
    SceneFormat format;
    format.label = QCoreApplication::translate("Ond::SceneLoad", "Wavefront OBJ");
    format.extensions = QStringList{QStringLiteral("obj")};
    return {format};
}

void registerObjSceneLoader()
{
    static std::once_flag once;
    std::call_once(once, [] {
        registerSceneLoader(QStringLiteral("obj"), [] { return new OBJSceneLoader(); });
    });
}

namespace {
// Registration when this object file is linked in.
const bool registered = (registerObjSceneLoader(), true);
} // namespace

} // namespace Ond::SceneLoad
