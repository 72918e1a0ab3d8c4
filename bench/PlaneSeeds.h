#pragma once
// Ray seeds for the ray benchmarks without GL: one per sample of every
// raster tile, on the plane z = 0 looking up at the generated terrain, made
// before anything is timed; and the engine's tile loop over them.

#include "baking/detail/RaytracerEmbree.h"

#include <vector>

namespace ZmfBench {

struct PlaneSeeds
{
    // Per raster tile in visiting order: (x, y, 0, 1) and (0, 0, 1, 0).
    std::vector<std::vector<float>> origins, directions;
};

inline PlaneSeeds makePlaneSeeds(const Ond::Baking::BakeTiling& tiling, unsigned side)
{
    const size_t tileSamples = size_t(tiling.tileWidth) * tiling.tileHeight;
    PlaneSeeds seeds;
    for (unsigned ty = 0; ty < tiling.rasterTilesY; ++ty)
        for (unsigned tx = 0; tx < tiling.rasterTilesX; ++tx) {
            std::vector<float> o(tileSamples * 4), d(tileSamples * 4, 0.0f);
            for (unsigned y = 0; y < tiling.tileHeight; ++y)
                for (unsigned x = 0; x < tiling.tileWidth; ++x) {
                    const size_t k = size_t(y) * tiling.tileWidth + x;
                    o[k * 4 + 0] = (float(tx * tiling.tileWidth + x) + 0.5f) / float(side);
                    o[k * 4 + 1] = (float(ty * tiling.tileHeight + y) + 0.5f) / float(side);
                    o[k * 4 + 2] = 0.0f;
                    o[k * 4 + 3] = 1.0f;
                    d[k * 4 + 2] = 1.0f;
                }
            seeds.origins.push_back(std::move(o));
            seeds.directions.push_back(std::move(d));
        }
    return seeds;
}

// traceTile over every tile in order, then finish.
inline void traceAllTiles(Ond::Baking::RaytracerEmbree& tracer, const Ond::Baking::DetailBakeJob& job,
                          const Ond::Baking::BakeTiling& tiling, Ond::Baking::BakeResult& result,
                          const PlaneSeeds& seeds)
{
    size_t i = 0;
    for (unsigned ty = 0; ty < tiling.rasterTilesY; ++ty)
        for (unsigned tx = 0; tx < tiling.rasterTilesX; ++tx, ++i) {
            Ond::Baking::RayTile tile;
            tile.tileX = tx;
            tile.tileY = ty;
            tile.origins = seeds.origins[i].data();
            tile.directions = seeds.directions[i].data();
            tracer.traceTile(job, tiling, result, tile);
        }
    tracer.finish(job, tiling, result);
}

} // namespace ZmfBench
