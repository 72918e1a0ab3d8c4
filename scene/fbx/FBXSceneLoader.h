#pragma once
// Offers the Assimp-based importer for FBX, 3DS and DXF, and for the other
// interchange formats artists' tools write with UVs: glTF, PLY, Collada,
// DirectX, LightWave, ASE, AC3D and MilkShape. It stands before the OBJ
// loader, which keeps its own faster reader.

#include "scene/load/SceneLoader.h"

namespace Ond::SceneLoad {

class FBXSceneLoader : public SceneLoader
{
public:
    SceneImporter* createImporter(const QString& filePath, const QByteArray& suffix) const override;
    SceneFormatList getSupportedFormats() const override;
};

// Enters the loader in the program's loader list; later calls do nothing.
void registerFbxSceneLoader();

} // namespace Ond::SceneLoad
