// Embree build quality against ray time on a generated terrain: builds the
// quick (low) and the default (medium) tree over the same grabbed mesh,
// traces the same primary rays (one per texel, as a normal map does) and
// the same scattered secondary rays (as occlusion does) through both, and
// checks that every ray hits the same triangle at the same place. The
// break-even is the number of rays per triangle above which the better tree
// pays for its longer build.
//
//   bvh_quality_bench [vertices per side, default 1000] [texels per side, default 2048] [secondary rays, default 16]

#include "baking/detail/EmbreeScene.h"
#include "baking/detail/GrabbedMesh.h"

#include "bench/TerrainScene.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

using namespace Ond::Baking;
using ZmfBench::now;

namespace {

struct Hit
{
    uint32_t primID;
    float t, u, v;
    bool operator==(const Hit& o) const { return std::memcmp(this, &o, sizeof(Hit)) == 0; }
};

struct Ray
{
    float origin[3];
    float direction[3];
    float tfar;
};

// Traces every ray on all cores; returns seconds.
double trace(const EmbreeScene& scene, const std::vector<Ray>& rays, std::vector<Hit>& hits)
{
    hits.assign(rays.size(), Hit{});
    const unsigned threads = std::max(1u, std::thread::hardware_concurrency());
    const double t0 = now();
    std::vector<std::thread> workers;
    for (unsigned w = 0; w < threads; ++w)
        workers.emplace_back([&, w] {
            HitContext context(HitContext::CullNone, false);
            RTCRayHit rh;
            for (size_t i = w; i < rays.size(); i += threads) {
                setRay(rh, rays[i].origin, rays[i].direction, 0.0f, rays[i].tfar, 0);
                scene.intersect(context, rh);
                hits[i] = {rh.hit.primID, rh.ray.tfar, rh.hit.u, rh.hit.v};
            }
        });
    for (std::thread& worker : workers)
        worker.join();
    return now() - t0;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const unsigned grid = argc > 1 ? unsigned(std::atoi(argv[1])) : 1000;
    const unsigned size = argc > 2 ? unsigned(std::atoi(argv[2])) : 2048;
    const unsigned secondary = argc > 3 ? unsigned(std::atoi(argv[3])) : 16;

    const auto terrain = ZmfBench::makeTerrain(grid);
    std::shared_ptr<const GrabbedMesh> mesh(
        grabMesh(*terrain, BakeJobFlags::SmoothNormals, BakeJobKind::Normal, 4, 0).release());
    std::printf("terrain: %u triangles; map %u x %u; %u secondary rays on a %u x %u subset\n", mesh->triangleCount,
                size, size, secondary, size / 4, size / 4);

    // Primary rays straight down through each texel centre.
    std::vector<Ray> primary(size_t(size) * size);
    for (unsigned y = 0; y < size; ++y)
        for (unsigned x = 0; x < size; ++x)
            primary[size_t(y) * size + x] = {{(x + 0.5f) / size, (y + 0.5f) / size, 0.2f}, {0.0f, 0.0f, -1.0f}, 1.0f};
    // Scattered rays from just above the surface, over the upper hemisphere.
    std::mt19937 random(7);
    std::uniform_real_distribution<float> uniform(0.0f, 1.0f);
    std::vector<Ray> scattered;
    const unsigned sub = size / 4;
    scattered.reserve(size_t(sub) * sub * secondary);
    for (unsigned y = 0; y < sub; ++y)
        for (unsigned x = 0; x < sub; ++x) {
            const float u = (x + 0.5f) / sub, v = (y + 0.5f) / sub;
            const float z = 0.02f * std::sin(u * 40.0f) * std::cos(v * 37.0f) + 1e-3f;
            for (unsigned k = 0; k < secondary; ++k) {
                const float a = 6.2831853f * uniform(random), c = uniform(random), s = std::sqrt(1.0f - c * c);
                scattered.push_back({{u, v, z}, {s * std::cos(a), s * std::sin(a), c}, 0.1f});
            }
        }

    struct Figures
    {
        const char* name;
        RTCBuildQuality quality;
        double build = 1e30, primary = 1e30, scattered = 1e30;
        std::vector<Hit> primaryHits = {}, scatteredHits = {};
    };
    Figures runs[] = {{"low", RTC_BUILD_QUALITY_LOW}, {"medium", RTC_BUILD_QUALITY_MEDIUM}};
    for (Figures& f : runs) {
        for (int round = 0; round < 2; ++round) {
            double t0 = now();
            EmbreeScene scene(mesh, f.quality);
            f.build = std::min(f.build, now() - t0);
            f.primary = std::min(f.primary, trace(scene, primary, f.primaryHits));
            f.scattered = std::min(f.scattered, trace(scene, scattered, f.scatteredHits));
        }
        std::printf("%-6s build %7.3f s | primary %7.3f s, %6.2f Mrays/s | scattered %7.3f s, %6.2f Mrays/s\n", f.name,
                    f.build, f.primary, primary.size() / f.primary / 1e6, f.scattered,
                    scattered.size() / f.scattered / 1e6);
    }
    // A ray through an edge or a vertex meets two triangles at the same
    // distance; which one it reports may depend on the order of the tree.
    size_t differ = 0, ties = 0;
    const auto compare = [&](const std::vector<Hit>& a, const std::vector<Hit>& b) {
        for (size_t i = 0; i < a.size(); ++i) {
            if (a[i] == b[i])
                continue;
            ++differ;
            ties += a[i].t == b[i].t;
        }
    };
    compare(runs[0].primaryHits, runs[1].primaryHits);
    compare(runs[0].scatteredHits, runs[1].scatteredHits);
    std::printf("rays whose hit differs between the two trees: %zu of %zu, %zu of them at the same distance\n",
                differ, primary.size() + scattered.size(), ties);

    // Per ray, on the slower kind of ray of the two.
    const double lowPerRay = std::max(runs[0].primary / primary.size(), runs[0].scattered / scattered.size());
    const double mediumPerRay = std::max(runs[1].primary / primary.size(), runs[1].scattered / scattered.size());
    const double saved = runs[1].build - runs[0].build;
    if (lowPerRay > mediumPerRay)
        std::printf("break-even: %.1f rays per triangle (the medium tree saves %.1f ns a ray and costs %.3f s more to "
                    "build)\n",
                    saved / (lowPerRay - mediumPerRay) / mesh->triangleCount, (lowPerRay - mediumPerRay) * 1e9,
                    saved);
    else
        std::printf("the low tree is as fast per ray here\n");
    return 0;
}
