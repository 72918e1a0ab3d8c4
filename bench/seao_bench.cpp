// Occlusion by surface elements (ambient-occlusion, quality 1) on a wavy
// terrain with UVs, stage by stage: preparation (collection, unit frame,
// tree, packing and upload), the element passes, the texel passes of every
// tile, then the whole bake as the command runs it, post-process included.
// Usage: seao_bench [vertices per side] [log2 of the map side]
// The defaults (160, 9: 50 k triangles at 512²) suit a software renderer;
// the figures of record are seao_bench 708 11: 1 M triangles at 2048².

#include "baking/lowpoly/LowPolyTileLoop.h"
#include "baking/lowpoly/NormalWSMapBaker.h"
#include "baking/lowpoly/SeAOMapBaker.h"
#include "baking/lowpoly/SeAORenderer.h"
#include "bench/BenchBaking.h"
#include "bench/BenchGL.h"
#include "bench/BenchUtil.h"
#include "opengl/OglContextData.h"
#include "scene/graph/Entity.h"
#include "scene/graph/Mesh.h"
#include "scene/graph/MeshDisplayComponent.h"
#include "scene/graph/Scene.h"

#include <GL/glew.h>

#include <QSize>
#include <QVariant>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

using ZmfBench::millisSince;

// Ridges deep enough that their flanks shade each other; UVs are x and y.
Ond::SceneGraph::SceneSPtr makeTerrain(unsigned n)
{
    using namespace Ond::SceneGraph;
    std::vector<Eigen::Vector3f> p, nrm, tan, bin;
    std::vector<Eigen::Vector2f> uv;
    const float a = 0.04f, fu = 25.0f, fv = 19.0f;
    for (unsigned y = 0; y < n; ++y)
        for (unsigned x = 0; x < n; ++x) {
            const float u = float(x) / float(n - 1), v = float(y) / float(n - 1);
            p.emplace_back(u, v, a * std::sin(u * fu) * std::cos(v * fv));
            nrm.push_back(Eigen::Vector3f(-a * fu * std::cos(u * fu) * std::cos(v * fv),
                                          a * fv * std::sin(u * fu) * std::sin(v * fv), 1.0f)
                              .normalized());
            tan.emplace_back(1.0f, 0.0f, 0.0f);
            bin.emplace_back(0.0f, 1.0f, 0.0f);
            uv.emplace_back(u, v);
        }
    std::vector<uint32_t> idx;
    idx.reserve(size_t(n - 1) * (n - 1) * 6);
    for (unsigned y = 0; y + 1 < n; ++y)
        for (unsigned x = 0; x + 1 < n; ++x) {
            const uint32_t i = y * n + x;
            idx.insert(idx.end(), {i, i + 1, i + n + 1, i, i + n + 1, i + n});
        }
    std::vector<Vec2BufferUPtr> uvSets;
    uvSets.push_back(makeBuffer(std::move(uv)));
    std::vector<SubMesh> subs;
    subs.emplace_back(makeBuffer(std::move(idx)), PrimitiveType::Triangles, 3, nullptr,
                      DefaultRenderFlags | SelectedRenderFlag);
    auto data = std::make_shared<Mesh::Data>(makeBuffer(std::move(p)), makeBuffer(std::move(nrm)),
                                             makeBuffer(std::move(tan)), makeBuffer(std::move(bin)), nullptr,
                                             std::move(uvSets), std::move(subs));
    auto scene = std::make_shared<Scene>();
    scene->addEntity(std::make_shared<Entity>(QStringLiteral("terrain"), nullptr,
                                              std::make_unique<MeshDisplayComponent>(
                                                  std::make_shared<Mesh>(data, QStringLiteral("terrain")))));
    return scene;
}

} // namespace

int main(int argc, char** argv)
{
    // Figures as they come, also into a file.
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    const unsigned n = argc > 1 ? unsigned(std::max(std::atoi(argv[1]), 3)) : 160u;
    const int log2Size = argc > 2 ? std::clamp(std::atoi(argv[2]), 5, 13) : 9;
    const int side = 1 << log2Size;

    ZmfBench::BenchGL gl(argc, argv);
    if (!gl.ready())
        return 1;
    const Ond::SceneGraph::SceneSPtr scene = makeTerrain(n);
    const size_t triangles = size_t(n - 1) * (n - 1) * 2;
    std::printf("terrain: %zu triangles, map %d², quality 1\n", triangles, side);

    gl.manager().runInContext(true, [&](Ond::OglUtils::OglContextData&) {
        using namespace Ond::Baking;
        std::printf("GL_RENDERER: %s\n", reinterpret_cast<const char*>(glGetString(GL_RENDERER)));
        ZmfBench::BenchContext context;
        const SeAOParameters parameters = SeAOParameters::forQuality(1);

        auto start = std::chrono::steady_clock::now();
        GLBakeParameters glParameters;
        const Ond::Surfaces::SurfaceSPtr normals =
            NormalWSMapBaker::renderWorldSpaceNormals(context, scene.get(), glParameters, QSize(side, side), {});
        const double normalPass = millisSince(start);

        start = std::chrono::steady_clock::now();
        SeAO::CollectMeshDataVisitor collect(2u, 0, false);
        collect.walk(*scene);
        collect.geometry.normalizeToUnitFrame();
        const double collectTime = millisSince(start);
        start = std::chrono::steady_clock::now();
        const SeAO::SurfaceElementTree tree = SeAO::SurfaceElementTree::build(collect.geometry);
        const double treeTime = millisSince(start);
        start = std::chrono::steady_clock::now();
        SeAORenderer renderer(collect.geometry, tree, parameters);
        if (SeAORenderer::isSoftwareRenderer())
            renderer.initialLoopLimit = SeAORenderer::minimumLoopLimit;
        glFinish();
        const double uploadTime = millisSince(start);
        if (!renderer.isValid()) {
            std::fprintf(stderr, "the occlusion programs did not build\n");
            return 1;
        }
        std::printf("preparation: world normals %.0f ms, collection %.0f ms, tree of %zu elements %.0f ms, "
                    "packing and upload %.0f ms\n",
                    normalPass, collectTime, tree.elements.size(), treeTime, uploadTime);

        start = std::chrono::steady_clock::now();
        renderer.solveElementOcclusion();
        std::printf("element passes (%u): %.0f ms\n", parameters.occlusionPasses, millisSince(start));

        const Ond::Surfaces::SurfaceSPtr output = makeLowPolyOutput(QSize(side, side));
        SurfaceTileGrid outputGrid, mapGrid;
        buildSourceGrids(output, normals, 0, outputGrid, mapGrid);
        int passes = 0;
        double longest = 0.0;
        start = std::chrono::steady_clock::now();
        for (int r = 0; r < outputGrid.rowCount(); ++r)
            for (int c = 0; c < outputGrid.columns(); ++c) {
                const int gridRow = outputGrid.rowCount() - 1 - r;
                const SeAOTileStats stats = renderer.renderTile(outputGrid.window(c, r), mapGrid.tile(c, gridRow).get(),
                                                                *outputGrid.tile(c, gridRow));
                passes += stats.passes;
                for (int64_t micros : stats.microseconds)
                    longest = std::max(longest, double(micros) / 1000.0);
            }
        const double texel = millisSince(start);
        std::printf("texel passes: %.0f ms over %d tiles, %d passes, longest pass %.0f ms\n", texel,
                    outputGrid.rowCount() * outputGrid.columns(), passes, longest);

        SeAOMapBaker baker;
        baker.init();
        setPropertyValue(baker.properties(), "Common.OutputSize", QVariant::fromValue(QSize(log2Size, log2Size)));
        start = std::chrono::steady_clock::now();
        const Ond::Surfaces::SurfaceSPtr map = baker.process(context, scene);
        glFinish();
        double sum = 0.0;
        for (uint32_t y = 0; y < map->height(); ++y)
            for (uint32_t x = 0; x < map->width(); ++x)
                sum += map->readPixel(x, y).x();
        std::printf("total (the baker, post-process included): %.0f ms; mean occlusion %.4f\n", millisSince(start),
                    sum / double(map->width() * map->height()));
        return 0;
    });
    return 0;
}
