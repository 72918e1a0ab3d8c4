// Ambient occlusion throughput: the Embree backend with the occlusion kernel
// over a generated height field of more than a million triangles, seeds on
// a regular grid above it (no GL), 64 occlusion rays per texel; then, in the
// same run, a bare rtcIntersect1 loop over the very same rays on the same
// Embree scene (the ceiling). Last, the real binary bakes normal-from-mesh
// at 2048² with antialiasing 2 and ambient-occlusion-from-mesh on the same
// terrain under a flat low mesh.
//   ao_bench [texels per side = 2048] [rays = 64] [vertices per side = 760]
//            [run the binary = 1]

#include "baking/detail/AmbientOcclusionKernel.h"
#include "baking/detail/DetailKernels.h"
#include "baking/detail/RaytracerEmbree.h"
#include "baking/detail/SurfaceFrame.h"

#include "bench/BenchUtil.h"
#include "bench/PlaneSeeds.h"
#include "bench/TerrainScene.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <atomic>
#include <thread>

using namespace Ond::Baking;
using namespace Ond::SceneGraph;
using ZmfBench::makeTerrain;
using ZmfBench::now;

namespace {

struct RecordedRay
{
    float origin[3];
    float tnear;
    float direction[3];
    float tfar;
};

struct Ceiling
{
    double seconds = 0.0;
    double rays = 0.0;
};

// The engine's rays of one tile, rows [row0, row1): each seed's primary ray
// and, when it hits, the kernel's occlusion rays around the hit, as the
// occlusion kernel lays them out.
void recordRays(const EmbreeScene& scene, const AOTraits& traits, const DetailBakeJob& job, const BakeTiling& tiling,
                unsigned tileX, unsigned tileY, const float* origins, const float* directions, unsigned row0,
                unsigned row1, std::vector<RecordedRay>& out)
{
    const float tfar = job.maxHeight + job.maxDepth + 1.1920929e-07f;
    HitContext context(HitContext::CullNone, false);
    RTCRayHit rh;
    for (unsigned y = row0; y < row1; ++y)
        for (unsigned x = 0; x < tiling.tileWidth; ++x) {
            const size_t k = size_t(y) * tiling.tileWidth + x;
            const float* o = origins + k * 4;
            const float* d = directions + k * 4;
            setPrimaryRay(rh, o, d, job.maxHeight, tfar, 0);
            out.push_back({{rh.ray.org_x, rh.ray.org_y, rh.ray.org_z}, 0.0f, {-d[0], -d[1], -d[2]}, tfar});
            scene.intersect(context, rh);
            if (rh.ray.tfar == tfar)
                continue;
            const PrimaryHit hit{o, d, {rh.ray.org_x, rh.ray.org_y, rh.ray.org_z}, rh.ray.tfar, rh.hit.u, rh.hit.v,
                                 rh.hit.primID, {rh.hit.Ng_x, rh.hit.Ng_y, rh.hit.Ng_z},
                                 tileX * tiling.tileWidth + x, tileY * tiling.tileHeight + y, &scene};
            float n[3], h[3];
            SecondaryRay::shadingNormal(scene.mesh(), hit.primID, hit.u, hit.v, n);
            SecondaryRay::hitPoint(hit, h);
            const SurfaceFrame frame(n, hit.sampleX, hit.sampleY);
            for (unsigned i = 0; i < traits.table.count(); ++i) {
                RecordedRay r{{h[0], h[1], h[2]}, traits.params.minDistance, {}, traits.params.maxDistance};
                frame.toWorld(traits.table.sample(i), r.direction);
                out.push_back(r);
            }
        }
}

// Bare rtcIntersect1 over the recorded rays, split over `threads`; only
// this loop is timed, recording is not.
Ceiling measureCeiling(const EmbreeScene& scene, const AOTraits& traits, const DetailBakeJob& job,
                       const BakeTiling& tiling, const ZmfBench::PlaneSeeds& seeds, unsigned threads)
{
    constexpr unsigned rowsPerChunk = 32;
    Ceiling ceiling;
    std::vector<std::vector<RecordedRay>> chunks(threads);
    size_t tile = 0;
    for (unsigned ty = 0; ty < tiling.rasterTilesY; ++ty)
        for (unsigned tx = 0; tx < tiling.rasterTilesX; ++tx, ++tile)
            for (unsigned row = 0; row < tiling.tileHeight; row += rowsPerChunk * threads) {
                std::vector<std::thread> workers;
                for (unsigned w = 0; w < threads; ++w)
                    workers.emplace_back([&, w] {
                        chunks[w].clear();
                        const unsigned r0 = std::min(row + w * rowsPerChunk, tiling.tileHeight);
                        const unsigned r1 = std::min(r0 + rowsPerChunk, tiling.tileHeight);
                        recordRays(scene, traits, job, tiling, tx, ty, seeds.origins[tile].data(),
                                   seeds.directions[tile].data(), r0, r1, chunks[w]);
                    });
                for (std::thread& worker : workers)
                    worker.join();
                workers.clear();

                // Blocks handed out on demand, as the engine's pool does, so
                // that no thread waits on the other at the end of a chunk.
                constexpr size_t blockRays = 4096;
                std::vector<std::pair<const RecordedRay*, const RecordedRay*>> blocks;
                for (const auto& chunk : chunks)
                    for (size_t b = 0; b < chunk.size(); b += blockRays)
                        blocks.emplace_back(chunk.data() + b, chunk.data() + std::min(b + blockRays, chunk.size()));
                std::atomic<size_t> next{0};
                const double t0 = now();
                for (unsigned w = 0; w < threads; ++w)
                    workers.emplace_back([&] {
                        // The scene's filter reads a HitContext: it must get one.
                        HitContext context(HitContext::CullNone, false);
                        RTCRayHit rh;
                        for (size_t b = next++; b < blocks.size(); b = next++)
                            for (const RecordedRay* r = blocks[b].first; r != blocks[b].second; ++r) {
                                setRay(rh, r->origin, r->direction, r->tnear, r->tfar, 0);
                                rtcIntersect1(scene.handle(), &context.base, &rh);
                            }
                    });
                for (std::thread& worker : workers)
                    worker.join();
                ceiling.seconds += now() - t0;
                for (const auto& chunk : chunks)
                    ceiling.rays += double(chunk.size());
            }
    return ceiling;
}

// Runs the binary, prints its wall time and its timing line.
void timeCommand(const QString& program, const QStringList& args, const char* label)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    const double t0 = now();
    // Verbose, for the baker's own timing line.
    process.start(program, QStringList{QStringLiteral("-v")} + args);
    process.waitForFinished(-1);
    const double seconds = now() - t0;
    QString timing;
    for (const QString& line : QString::fromLocal8Bit(process.readAll()).split('\n'))
        if (line.contains(QStringLiteral(" Baker: ")))
            timing = line.mid(line.indexOf(QStringLiteral(" Baker: ")) + 1).trimmed();
    std::printf("%-34s %8.3f s wall, exit %d\n    %s\n", label, seconds, process.exitCode(), qPrintable(timing));
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    const unsigned size = argc > 1 ? unsigned(std::atoi(argv[1])) : 2048;
    const int rays = argc > 2 ? std::atoi(argv[2]) : 64;
    const unsigned grid = argc > 3 ? unsigned(std::atoi(argv[3])) : 760;
    const bool runBinary = argc > 4 ? std::atoi(argv[4]) != 0 : true;

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

    const ZmfBench::PlaneSeeds seeds = ZmfBench::makePlaneSeeds(tiling, size);

    BakeResult result;
    result.surface.reset(new Ond::Surfaces::Surface(
        Ond::Surfaces::SurfaceDesc(size, size, Ond::Surfaces::PixelFormat::RGBA32F)));
    RaytracerEmbree tracer;
    t0 = now();
    tracer.init(job, tiling, result);
    const double initSeconds = now() - t0;
    t0 = now();
    ZmfBench::traceAllTiles(tracer, job, tiling, result, seeds);
    const double computeSeconds = now() - t0;

    double sum = 0.0;
    for (unsigned y = 0; y < size; ++y)
        for (unsigned x = 0; x < size; ++x)
            sum += result.surface->pixel<float>(x, y)[0];
    const double texels = double(size) * size;
    const unsigned threads = unsigned(std::max(1, QThreadPool::globalInstance()->maxThreadCount()));
    const AOTraits traits(job, *tracer.scene());
    const Ceiling ceiling = measureCeiling(*tracer.scene(), traits, job, tiling, seeds, threads);
    const double engineRate = ceiling.rays / computeSeconds / 1e6;
    const double ceilingRate = ceiling.rays / ceiling.seconds / 1e6;

    std::printf("mesh: %u triangles (generated in %.3f s), map %u x %u, %d occlusion rays per texel\n",
                tracer.scene()->mesh().triangleCount, meshSeconds, size, size, rays);
    std::printf("init (grab + build): %8.3f s\n", initSeconds);
    std::printf("compute:             %8.3f s\n", computeSeconds);
    std::printf("total:               %8.3f s\n", initSeconds + computeSeconds);
    std::printf("engine:              %8.2f Mrays/s (primary and occlusion rays, %.0f in all)\n", engineRate,
                ceiling.rays);
    std::printf("bare rtcIntersect1:  %8.2f Mrays/s (same rays, same scene, %u threads, %.3f s)\n", ceilingRate,
                threads, ceiling.seconds);
    std::printf("engine / ceiling:    %8.3f\n", engineRate / ceilingRate);
    std::printf("mean occlusion value: %.4f, error code %d\n", sum / texels, int(result.errorCode));

    if (!runBinary)
        return 0;
    QTemporaryDir dir;
    QString low, high;
    if (!ZmfBench::writeTerrainPair(dir, grid, low, high))
        return 1;
    const QString program = ZmfBench::programPath();
    const QStringList common =
        ZmfBench::detailBakeOptions(low, high, QString::number(int(std::log2(double(size)))), dir.path());
    std::printf("\nthe binary on the same terrain under a flat %u-triangle low mesh, %s x %s:\n", 2u * 32u * 32u,
                qPrintable(QString::number(size)), qPrintable(QString::number(size)));
    timeCommand(program, QStringList{QStringLiteral("normal-from-mesh")} << common << QStringLiteral("--antialiasing")
                                                                         << QStringLiteral("2"),
                "normal-from-mesh, antialiasing 2:");
    timeCommand(program,
                QStringList{QStringLiteral("ambient-occlusion-from-mesh")}
                    << common << QStringLiteral("--nb-second-rays") << QString::number(rays)
                    << QStringLiteral("--max-dist-relative-scale") << QStringLiteral("false")
                    << QStringLiteral("--max-dist") << QStringLiteral("0.1"),
                "ambient-occlusion-from-mesh:");
    return 0;
}
