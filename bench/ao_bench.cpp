// Ambient occlusion throughput: the Embree backend with the occlusion kernel
// over a generated height field of more than a million triangles, seeds on
// a regular grid above it (no GL), 64 occlusion rays per texel.
//   ao_bench [texels per side = 2048] [rays = 64] [vertices per side = 760]

#include "baking/detail/AmbientOcclusionKernel.h"
#include "baking/detail/DetailKernels.h"
#include "baking/detail/RaytracerEmbree.h"

#include "bench/TerrainScene.h"

#include <QCoreApplication>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>

using namespace Ond::Baking;
using namespace Ond::SceneGraph;
using ZmfBench::makeTerrain;
using ZmfBench::now;

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const unsigned size = argc > 1 ? unsigned(std::atoi(argv[1])) : 2048;
    const int rays = argc > 2 ? std::atoi(argv[2]) : 64;
    const unsigned grid = argc > 3 ? unsigned(std::atoi(argv[3])) : 760;

    registerDetailKernels();
    double t0 = now();
    SceneSPtr terrain = makeTerrain(grid);
    const double meshSeconds = now() - t0;

    AOParams params;
    params.distribution = 1;
    params.sampleCount = rays;
    params.minDistance = 1e-5f;
    params.maxDistance = 0.1f;
    params.attenuation = 2;
    DetailBakeJob job;
    job.highScene = terrain;
    job.width = job.height = size;
    job.subSamples = 1;
    job.maxHeight = 0.1f;
    job.maxDepth = 0.1f;
    job.kind = BakeJobKind::AmbientOcclusion;
    job.params = &params;
    const BakeTiling tiling = computeTiling(job);

    // Seeds of every tile on the plane z = 0 looking up, made before timing.
    const size_t tileSamples = size_t(tiling.tileWidth) * tiling.tileHeight;
    std::vector<std::vector<float>> origins, directions;
    for (unsigned ty = 0; ty < tiling.rasterTilesY; ++ty)
        for (unsigned tx = 0; tx < tiling.rasterTilesX; ++tx) {
            std::vector<float> o(tileSamples * 4), d(tileSamples * 4, 0.0f);
            for (unsigned y = 0; y < tiling.tileHeight; ++y)
                for (unsigned x = 0; x < tiling.tileWidth; ++x) {
                    const size_t k = size_t(y) * tiling.tileWidth + x;
                    o[k * 4 + 0] = (float(tx * tiling.tileWidth + x) + 0.5f) / float(size);
                    o[k * 4 + 1] = (float(ty * tiling.tileHeight + y) + 0.5f) / float(size);
                    o[k * 4 + 2] = 0.0f;
                    o[k * 4 + 3] = 1.0f;
                    d[k * 4 + 2] = 1.0f;
                }
            origins.push_back(std::move(o));
            directions.push_back(std::move(d));
        }

    BakeResult result;
    result.surface.reset(new Ond::Surfaces::Surface(
        Ond::Surfaces::SurfaceDesc(size, size, Ond::Surfaces::PixelFormat::RGBA32F)));
    RaytracerEmbree tracer;
    t0 = now();
    tracer.init(job, tiling, result);
    const double initSeconds = now() - t0;
    t0 = now();
    size_t i = 0;
    for (unsigned ty = 0; ty < tiling.rasterTilesY; ++ty)
        for (unsigned tx = 0; tx < tiling.rasterTilesX; ++tx, ++i) {
            RayTile tile;
            tile.tileX = tx;
            tile.tileY = ty;
            tile.origins = origins[i].data();
            tile.directions = directions[i].data();
            tracer.traceTile(job, tiling, result, tile);
        }
    tracer.finish(job, tiling, result);
    const double computeSeconds = now() - t0;

    double sum = 0.0;
    for (unsigned y = 0; y < size; ++y)
        for (unsigned x = 0; x < size; ++x)
            sum += result.surface->pixel<float>(x, y)[0];
    const double texels = double(size) * size;
    const double allRays = texels * double(1 + rays);
    std::printf("mesh: %u triangles (generated in %.3f s), map %u x %u, %d occlusion rays per texel\n",
                tracer.scene()->mesh().triangleCount, meshSeconds, size, size, rays);
    std::printf("init (grab + build): %8.3f s\n", initSeconds);
    std::printf("compute:             %8.3f s\n", computeSeconds);
    std::printf("total:               %8.3f s\n", initSeconds + computeSeconds);
    std::printf("throughput:          %8.2f Mrays/s (primary and occlusion rays, %.0f in all)\n",
                allRays / computeSeconds / 1e6, allRays);
    std::printf("mean occlusion value: %.4f, error code %d\n", sum / texels, int(result.errorCode));
    return 0;
}
