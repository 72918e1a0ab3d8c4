#include "scene/graph/SceneInfo.h"

#include "scene/graph/Scene.h"

namespace Ond::SceneGraph {

SceneInfo::SceneInfo(const Scene& scene)
{
    scene.forAllMeshes([this](const Mesh::SPtr& mesh) {
        const Mesh::DataSPtr data = mesh->getData();
        if (!data)
            return true;
        vertexCount += data->getVertexCount();
        const size_t uvSetCount = data->getUvSetCount();
        for (const SubMesh& sub : data->getSubMeshes()) {
            primitiveCounts[sub.primitiveType] += sub.primitiveCount;
            if (isFaceKind(sub.primitiveType))
                faceCount += sub.primitiveCount;
            for (size_t uv = 0; uv < uvSetCount; ++uv)
                data->collectUvTiles(uvSetTiles[uv], uv, &sub);

            auto user = std::dynamic_pointer_cast<UserMaterialDefinition>(sub.material);
            if (!user)
                continue;
            MaterialInfo& info = materials[user->name];
            if (!info.material)
                info.material = user;
            if (info.uvTiles.size() < uvSetCount)
                info.uvTiles.resize(uvSetCount);
            for (size_t uv = 0; uv < uvSetCount; ++uv)
                data->collectUvTiles(info.uvTiles[uv], uv, &sub);
        }
        return true;
    });
}

} // namespace Ond::SceneGraph
