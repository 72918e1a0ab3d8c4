// Primary ray throughput: a bare rtcIntersect1 loop against the engine's
// strip loop with a trivial kernel, both over the same coherent rays and a
// generated mesh of more than a million triangles.

#include "baking/detail/RaytracerEmbree.h"

#include "bench/PlaneSeeds.h"
#include "bench/TerrainScene.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <thread>

using namespace Ond::Baking;
using namespace Ond::SceneGraph;
using ZmfBench::makeTerrain;
using ZmfBench::now;

namespace {

struct SumKernel
{
    static constexpr TexelClose close = TexelClose::Color;
    static constexpr bool reduces = true;
    SumKernel(const DetailBakeJob&, const EmbreeScene&) {}
    void hit(const PrimaryHit& h, float* acc) const { acc[0] += h.t; }
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const unsigned size = argc > 1 ? unsigned(std::atoi(argv[1])) : 2048;  // texels per side
    const unsigned grid = argc > 2 ? unsigned(std::atoi(argv[2])) : 760;   // vertices per side

    registerStripKernel(BakeJobKind::Height, &makeStripJob<SumKernel>);
    DetailBakeJob job;
    job.highScene = makeTerrain(grid);
    job.width = job.height = size;
    job.subSamples = 1;
    job.maxHeight = 1.0f;
    job.maxDepth = 1.0f;
    job.kind = BakeJobKind::Height;
    const BakeTiling tiling = computeTiling(job);

    BakeResult result;
    result.surface.reset(new Ond::Surfaces::Surface(
        Ond::Surfaces::SurfaceDesc(size, size, Ond::Surfaces::PixelFormat::RGBA32F)));
    RaytracerEmbree tracer;
    double t0 = now();
    tracer.init(job, tiling, result);
    const double buildSeconds = now() - t0;
    const GrabbedMesh& mesh = tracer.scene()->mesh();

    // All tiles seeded up front, so that neither timing includes seeding.
    const ZmfBench::PlaneSeeds seeds = ZmfBench::makePlaneSeeds(tiling, size);
    const std::vector<std::vector<float>>& allOrigins = seeds.origins;
    const std::vector<std::vector<float>>& allDirections = seeds.directions;
    const size_t tileSamples = size_t(tiling.tileWidth) * tiling.tileHeight;

    // Best of three rounds each, alternating, against a loaded machine.
    const float tfar = job.maxHeight + job.maxDepth + 1.1920929e-07f;
    size_t bareHits = 0;
    double bareSeconds = 1e30;
    double engineSeconds = 1e30;
    double bareParallelSeconds = 1e30;
    const int threads = QThreadPool::globalInstance()->maxThreadCount();
    for (int round = 0; round < 3; ++round) {
        // Bare loop on this thread over the same rays.
        bareHits = 0;
        t0 = now();
        HitContext context(HitContext::CullNone, false);
        RTCRayHit rh;
        for (size_t i = 0; i < allOrigins.size(); ++i) {
            const float* o = allOrigins[i].data();
            const float* d = allDirections[i].data();
            for (size_t k = 0; k < tileSamples; ++k) {
                setPrimaryRay(rh, o + k * 4, d + k * 4, job.maxHeight, tfar, 0);
                rtcIntersect1(tracer.scene()->handle(), &context.base, &rh);
                bareHits += rh.ray.tfar != tfar;
            }
        }
        bareSeconds = std::min(bareSeconds, now() - t0);

        // The same loop split over as many threads as the pool has.
        t0 = now();
        std::vector<std::thread> workers;
        for (int w = 0; w < threads; ++w)
            workers.emplace_back([&, w] {
                HitContext c(HitContext::CullNone, false);
                RTCRayHit r;
                for (size_t i = size_t(w); i < allOrigins.size(); i += size_t(threads))
                    for (size_t k = 0; k < tileSamples; ++k) {
                        setPrimaryRay(r, allOrigins[i].data() + k * 4, allDirections[i].data() + k * 4,
                                      job.maxHeight, tfar, 0);
                        rtcIntersect1(tracer.scene()->handle(), &c.base, &r);
                    }
            });
        for (std::thread& worker : workers)
            worker.join();
        bareParallelSeconds = std::min(bareParallelSeconds, now() - t0);

        // Engine: traceTile with four tiles in flight, strips on the pool.
        if (round > 0)
            tracer.init(job, tiling, result);  // the scene is kept: same key
        t0 = now();
        ZmfBench::traceAllTiles(tracer, job, tiling, result, seeds);
        engineSeconds = std::min(engineSeconds, now() - t0);
    }

    const double rays = double(size) * size;
    const double bareSingle = rays / bareSeconds / 1e6;
    const double engine = rays / engineSeconds / 1e6;
    const double bareParallel = rays / bareParallelSeconds / 1e6;
    std::printf("mesh: %u triangles, grab+build %.3f s, scene builds: %u\n", mesh.triangleCount, buildSeconds,
                tracer.sceneBuildCount());
    std::printf("rays: %.0f (%u x %u, coherent), hits in bare loop: %zu\n", rays, size, size, bareHits);
    std::printf("bare rtcIntersect1, 1 thread:      %8.2f Mrays/s\n", bareSingle);
    std::printf("bare rtcIntersect1, %d threads:     %8.2f Mrays/s\n", threads, bareParallel);
    std::printf("engine strips, %d pool threads:     %8.2f Mrays/s (%.2f Mrays/s per thread)\n", threads, engine,
                engine / threads);
    std::printf("ratio engine / bare, same threads: %8.3f\n", engine / bareParallel);
    return 0;
}
