#include "scene/fbx/FBXSceneLoader.h"

#include "scene/fbx/FBXSceneImporter.h"
#include "scene/load/SceneLoaderMgr.h"

#include <QCoreApplication>

#include <mutex>

namespace Ond::SceneLoad {

SceneImporter* FBXSceneLoader::createImporter(const QString& filePath, const QByteArray& suffix) const
{
    return new FBXSceneImporter(filePath, suffix);
}

SceneFormatList FBXSceneLoader::getSupportedFormats() const
{
    auto format = [](const char* label, QStringList extensions) {
        SceneFormat f;
        f.label = QCoreApplication::translate("Ond::SceneLoad", label);
        f.extensions = std::move(extensions);
        return f;
    };
    return {
        format("Autodesk 3D Studio Mesh", {QStringLiteral("3ds")}),
        format("Autodesk AutoCAD Drawing", {QStringLiteral("dxf")}),
        format("Autodesk FBX", {QStringLiteral("fbx")}),
        format("glTF 2.0", {QStringLiteral("gltf")}),
        format("glTF 2.0 Binary", {QStringLiteral("glb")}),
        format("Stanford Polygon File", {QStringLiteral("ply")}),
        format("COLLADA Digital Asset", {QStringLiteral("dae")}),
        format("DirectX Mesh", {QStringLiteral("x")}),
        format("LightWave Object", {QStringLiteral("lwo")}),
        format("3D Studio Max ASCII Scene", {QStringLiteral("ase")}),
        format("AC3D Model", {QStringLiteral("ac")}),
        format("MilkShape 3D Model", {QStringLiteral("ms3d")}),
    };
}

void registerFbxSceneLoader()
{
    static std::once_flag once;
    std::call_once(once, [] {
        registerSceneLoader(QStringLiteral("fbx"), [] { return new FBXSceneLoader(); });
    });
}

namespace {
// Registration when this object file is linked in.
const bool registered = (registerFbxSceneLoader(), true);
} // namespace

} // namespace Ond::SceneLoad
