// fuzz-libs: zmf_scene
// Feeds bytes to the Assimp-based importer. The first byte picks the format
// (the suffix Assimp is told), the rest is the file. Every load flag is set,
// so the importer computes normals and keeps all attributes.

#include "scene/fbx/FBXSceneImporter.h"
#include "scene/graph/Scene.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace {

const char* const Suffixes[] = {"fbx", "glb", "gltf", "ply", "dae", "3ds", "dxf", "x", "lwo", "ase", "ac", "ms3d"};
constexpr size_t SuffixCount = sizeof(Suffixes) / sizeof(Suffixes[0]);

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1)
        return 0;
    const char* suffix = Suffixes[data[0] % SuffixCount];
    Ond::SceneLoad::FBXSceneImporter importer(QStringLiteral("fuzz.") + QLatin1String(suffix), QByteArray(suffix));
    std::unique_ptr<Ond::SceneGraph::Scene> scene(
        importer.importFromMemory(data + 1, size - 1, Ond::SceneLoad::SceneLoadOptions(255), nullptr));
    if (scene)
        scene->getBoundingBox();
    return 0;
}
