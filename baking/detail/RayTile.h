#pragma once
// The ray seeds of one raster tile, as the rasterizer hands them over. The
// pointers are valid only during the traceTile call that receives them.

#include <cstdint>

namespace Ond::Baking {

struct RayTile
{
    unsigned tileX = 0;
    unsigned tileY = 0;
    // tileWidth * tileHeight quadruples each; sample (x, y) at y * tileWidth + x.
    // origins: world position, w = 1 where covered, 0 elsewhere.
    const float* origins = nullptr;
    const float* directions = nullptr;
    // One mesh id per sample, or null when rays are not filtered by id.
    const uint32_t* ids = nullptr;
};

} // namespace Ond::Baking
