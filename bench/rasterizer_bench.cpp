// Times the OpenGL seed rasterizer: init (slots and draw list), then tile loops
// at several map sizes and sample counts with a tracer that only reads the
// seeds, so the figures are drawing plus read-back through the slot ring.
// Without a file it generates a grid of about 1 M triangles with UVs.
// Usage: rasterizer_bench [mesh.obj or ""] [repetitions]

#include "baking/detail/RasterizerGL.h"
#include "baking/detail/RaytracerBase.h"
#include "bench/BenchGL.h"
#include "opengl/OglContextData.h"
#include "scene/graph/Entity.h"
#include "scene/graph/Mesh.h"
#include "scene/graph/MeshDisplayComponent.h"
#include "scene/load/SceneImporter.h"
#include "scene/obj/OBJSceneLoader.h"

#include <GL/glew.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>

namespace {

using namespace Ond::SceneGraph;
using namespace Ond::Baking;

// Reads every coverage value, as a tracer's copy would.
class TouchTracer : public RaytracerBase
{
public:
    double covered = 0.0;
    void traceTile(const DetailBakeJob&, const BakeTiling& t, BakeResult&, const RayTile& tile) override
    {
        const size_t n = size_t(t.tileWidth) * t.tileHeight;
        for (size_t i = 0; i < n; ++i)
            covered += tile.origins[i * 4 + 3];
    }
};

// A wavy height field over the unit square, n x n quads.
SceneSPtr gridScene(int n)
{
    std::vector<Eigen::Vector3f> p, normals;
    std::vector<Eigen::Vector2f> uv;
    for (int y = 0; y <= n; ++y)
        for (int x = 0; x <= n; ++x) {
            const float u = float(x) / float(n), v = float(y) / float(n);
            p.emplace_back(u, v, 0.05f * std::sin(u * 20.0f) * std::cos(v * 20.0f));
            normals.emplace_back(0.0f, 0.0f, 1.0f);
            uv.emplace_back(u, v);
        }
    std::vector<uint32_t> indices;
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) {
            const uint32_t a = uint32_t(y * (n + 1) + x), b = a + 1, c = a + uint32_t(n + 1), d = c + 1;
            indices.insert(indices.end(), {a, b, d, a, d, c});
        }
    std::vector<Vec2BufferUPtr> uvSets;
    uvSets.push_back(makeBuffer(std::move(uv)));
    std::vector<SubMesh> subs;
    subs.emplace_back(makeBuffer(std::move(indices)), PrimitiveType::Triangles, 3, nullptr);
    auto data = std::make_shared<Mesh::Data>(makeBuffer(std::move(p)), makeBuffer(std::move(normals)), nullptr,
                                             nullptr, nullptr, std::move(uvSets), std::move(subs));
    auto scene = std::make_shared<Scene>();
    scene->addEntity(std::make_shared<Entity>(
        QStringLiteral("grid_low"), nullptr,
        std::make_unique<MeshDisplayComponent>(std::make_shared<Mesh>(data, QStringLiteral("grid_low")))));
    return scene;
}

double millisOf(const std::function<void()>& run)
{
    glFinish();
    const auto start = std::chrono::steady_clock::now();
    run();
    glFinish();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

int main(int argc, char** argv)
{
    const int repetitions = argc > 2 ? std::max(std::atoi(argv[2]), 1) : 3;
    ZmfBench::BenchGL gl(argc, argv);
    if (!gl.ready())
        return 1;
    Ond::OpenGLUtils::QGLManager& manager = gl.manager();

    SceneSPtr scene;
    if (argc > 1 && *argv[1]) {
        Ond::SceneLoad::OBJSceneLoader loader;
        std::unique_ptr<Ond::SceneLoad::SceneImporter> importer(
            loader.createImporter(QString::fromLocal8Bit(argv[1]), "obj"));
        scene.reset(importer ? importer->import(Ond::SceneLoad::SceneLoadOptions(Ond::SceneLoad::AllLoadFlags), nullptr)
                             : nullptr);
    } else {
        scene = gridScene(708);
    }
    if (!scene) {
        std::fprintf(stderr, "cannot read the mesh\n");
        return 1;
    }

    manager.runInContext(true, [&](Ond::OglUtils::OglContextData&) {
        RasterizerGL rasterizer;
        for (const uint32_t flags : {0u, 0x001u}) {
            DetailBakeJob job;
            job.lowScene = scene;
            job.width = job.height = 1024;
            job.flags = flags;
            BakeResult result;
            double best = 1e30;
            for (int r = 0; r < repetitions; ++r) {
                job.flags = flags | (r & 1 ? 0x080u : 0u); // a new key each time
                const BakeTiling tiling = computeTiling(job);
                best = std::min(best, millisOf([&] { rasterizer.init(job, tiling, result); }));
                rasterizer.finish(job, tiling, result);
            }
            std::printf("init, read-back slots and draw list%s: %.1f ms\n", flags ? " with smoothed normals" : "",
                        best);
        }
        for (const unsigned size : {1024u, 2048u, 4096u})
            for (const unsigned samples : {1u, 2u}) {
                DetailBakeJob job;
                job.lowScene = scene;
                job.width = job.height = size;
                job.subSamples = samples;
                job.flags = 0x002;
                const BakeTiling tiling = computeTiling(job);
                BakeResult result;
                rasterizer.init(job, tiling, result);
                double best = 1e30;
                TouchTracer tracer;
                for (int r = 0; r < repetitions; ++r)
                    best = std::min(best, millisOf([&] { rasterizer.rasterize(job, tiling, result, tracer); }));
                rasterizer.finish(job, tiling, result);
                const double tiles = double(tiling.rasterTilesX) * tiling.rasterTilesY;
                const double megaSamples = tiles * tiling.tileWidth * tiling.tileHeight / 1e6;
                std::printf("%u² x %u² samples, ids on: %.0f tiles in %.1f ms, %.1f Msamples/s\n", size, samples,
                            tiles, best, megaSamples / (best / 1000.0));
            }
        return 0;
    });
    return 0;
}
