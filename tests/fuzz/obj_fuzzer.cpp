// The OBJ reader from a file to a scene, as the bake commands load it.
// fuzz-libs: zmf_scene
#include "FuzzSupport.h"

#include "scene/graph/Scene.h"
#include "scene/load/SceneLoadOptions.h"
#include "scene/obj/OBJSceneImporter.h"

#include <cstdlib>
#include <memory>

using namespace Ond::SceneGraph;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool ready = Fuzz::init();
    (void)ready;
    const QString path = Fuzz::writeScratchFile(data, size, "obj");
    Ond::SceneLoad::OBJSceneImporter importer(path, "obj", nullptr);
    std::unique_ptr<Scene> scene(importer.import(Ond::SceneLoad::SceneLoadOptions(Ond::SceneLoad::BakeLoadFlags),
                                                 nullptr));
    if (!scene)
        return 0;
    // Whatever the reader accepts must index inside its own arrays.
    scene->forAllMeshes([](const Mesh::SPtr& mesh) {
        const Mesh::DataSPtr meshData = mesh->getData();
        const size_t vertices = meshData->getVertexCount();
        for (const Vec2BufferUPtr& uvs : meshData->getUvSets())
            if (uvs && uvs->size() != vertices)
                std::abort();
        meshData->forAllSubMeshes([vertices](const SubMesh& subMesh) {
            if (!subMesh.indices)
                return true;
            for (size_t i = 0; i < subMesh.indices->size(); ++i)
                if ((*subMesh.indices)[i] >= vertices)
                    std::abort();
            return true;
        });
        return true;
    });
    return 0;
}
