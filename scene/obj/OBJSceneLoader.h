#pragma once
// Offers the OBJ importer for the "obj" suffix.

#include "scene/load/SceneLoader.h"

namespace Ond::SceneLoad {

class OBJSceneLoader : public SceneLoader
{
public:
    // An OBJ file has no tangents to keep: a request to keep them without
    // computing them is refused whatever the suffix.
    bool canLoad(const QByteArray& suffix, const SceneLoadOptions& options) const override;
    SceneImporter* createImporter(const QString& filePath, const QByteArray& suffix) const override;
    SceneFormatList getSupportedFormats() const override;
};

// Enters the OBJ loader in the program's loader list; later calls do nothing.
void registerObjSceneLoader();

} // namespace Ond::SceneLoad
