#pragma once
// Statistics of a scene: vertices, faces, primitives per kind, and per file
// material the UV tiles its SubMeshes touch.

#include "scene/graph/MaterialDefinition.h"
#include "scene/graph/PrimitiveType.h"
#include "scene/graph/UvTile.h"

#include <QString>

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

namespace Ond::SceneGraph {

class Scene;

struct MaterialInfo
{
    std::shared_ptr<UserMaterialDefinition> material;
    // One tile set per UV set index.
    std::vector<UvTileSet> uvTiles;
};

struct SceneInfo
{
    SceneInfo() = default;
    explicit SceneInfo(const Scene& scene);

    size_t vertexCount = 0;
    // Primitives of the triangle, quad and polygon kinds.
    size_t faceCount = 0;
    std::map<PrimitiveType, size_t> primitiveCounts;
    // By material name.
    std::map<QString, MaterialInfo> materials;
    // Tiles of every SubMesh, per UV set index.
    std::map<size_t, UvTileSet> uvSetTiles;
};

} // namespace Ond::SceneGraph
