#pragma once
// What the detail baker hands to the backend runner, the tile geometry the
// runner derives from it and what comes back.

#include "baking/detail/ErrorCode.h"

#include "image/Surface.h"
#include "scene/graph/Scene.h"
#include "scene/graph/UvTile.h"

#include <QString>

#include <cstdint>

namespace Ond::Baking {

class AbstractBakingContext;

enum class BakeJobKind : int32_t {
    None = 0,
    Height = 1,
    Normal = 2,
    VertexColor = 3,
    TriangleColor = 4,
    AmbientOcclusion = 5,
    BentNormals = 6,
    Mask = 7,
    Thickness = 8,
    Texture = 9,
    TextureNormal = 10,
    Position = 11,
    Curvature = 12,
    Curvature1 = 13
};
constexpr int BakeJobKindCount = 14;

namespace BakeJobFlags {
constexpr uint32_t SmoothNormals = 0x001;
constexpr uint32_t FilterPrimaryById = 0x002;
constexpr uint32_t FilterSecondaryById = 0x004;
constexpr uint32_t GrabTangents = 0x010;
constexpr uint32_t GrabColors = 0x020;
constexpr uint32_t GrabUvs = 0x040;
constexpr uint32_t IgnoreBackface = 0x080;
constexpr uint32_t UseSkew = 0x100;
constexpr uint32_t InvertSkew = 0x200;
constexpr uint32_t UseCage = 0x400;
} // namespace BakeJobFlags

struct DetailBakeJob
{
    QString name;
    bool useGpu = true;
    bool forceDxr = false;
    bool forceOptix = false;
    Surfaces::SurfaceSPtr skewSurface;
    AbstractBakingContext* context = nullptr;
    SceneGraph::SceneSPtr lowScene;
    SceneGraph::SceneSPtr highScene;
    SceneGraph::SceneSPtr cageScene;
    int32_t uvSet = 0;
    int32_t highUvSet = 0;
    SceneGraph::UvTile uvTile;
    unsigned width = 0;
    unsigned height = 0;
    unsigned subSamples = 1;
    float maxHeight = 0.0f;
    float maxDepth = 0.0f;
    int32_t colorSource = 4;
    int32_t colorGenerator = 0;
    BakeJobKind kind = BakeJobKind::None;
    uint32_t flags = 0;
    const void* params = nullptr;
};

struct BakeTiling
{
    unsigned tileWidth = 0;
    unsigned tileHeight = 0;
    unsigned rasterTilesX = 0;
    unsigned rasterTilesY = 0;
    unsigned outputBlockWidth = 0;
    unsigned outputBlockHeight = 0;
    unsigned outputBlocksX = 0;
    unsigned outputBlocksY = 0;
};

// Raster tiles of at most 512 by 512 samples, output blocks of one tile's
// width in texels. Sizes are powers of two.
BakeTiling computeTiling(const DetailBakeJob& job);

struct BakeResult
{
    Surfaces::SurfaceSPtr surface;
    ErrorCode errorCode = ErrorCode::NoError;
    int32_t backend = 0;
    float rangeMin = 3.4028235e+38f;
    float rangeMax = 0.0f;
    double initSeconds = 0.0;
    double computeSeconds = 0.0;
};

} // namespace Ond::Baking
