// Times uv-map on a generated grid of about 1 M triangles (two per cell),
// cut into islands three ways: one island, 32 × 32 islands, and every cell
// its own island. Prints island count, SVG size, the time to the SVG text
// and the time of the raster route at the map size.
// Usage: uvmap_bench [triangles (default 1000000)] [log2 of the map side (default 11)]

#include "baking/PropertyBag.h"
#include "baking/lowpoly/ColorMapBaker.h"
#include "baking/lowpoly/UV2SvgBaker.h"
#include "bench/BenchBaking.h"
#include "scene/graph/Mesh.h"
#include "scene/graph/MeshDisplayComponent.h"
#include "scene/graph/Scene.h"

#include <QGuiApplication>
#include <QSize>
#include <QVariant>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

using namespace Ond::SceneGraph;

// A cells × cells grid over the unit square; islands × islands blocks of
// cells, each block with its own vertices and shrunk a little so that
// blocks don't touch.
SceneSPtr makeGrid(int cells, int islands)
{
    const int perBlock = cells / islands;
    std::vector<Eigen::Vector3f> positions, normals, tangents, binormals;
    std::vector<Eigen::Vector2f> uvs;
    std::vector<uint32_t> indices;
    const float block = 1.0f / float(islands);
    const float margin = 0.05f * block;
    for (int by = 0; by < islands; ++by)
        for (int bx = 0; bx < islands; ++bx) {
            const uint32_t base = uint32_t(uvs.size());
            for (int y = 0; y <= perBlock; ++y)
                for (int x = 0; x <= perBlock; ++x) {
                    const float u = float(bx) * block + margin + (block - 2 * margin) * float(x) / float(perBlock);
                    const float v = float(by) * block + margin + (block - 2 * margin) * float(y) / float(perBlock);
                    uvs.emplace_back(u, v);
                    positions.emplace_back(u, v, 0.05f * std::sin(20.0f * u) * std::cos(20.0f * v));
                    normals.emplace_back(0.0f, 0.0f, 1.0f);
                    tangents.emplace_back(1.0f, 0.0f, 0.0f);
                    binormals.emplace_back(0.0f, 1.0f, 0.0f);
                }
            const uint32_t row = uint32_t(perBlock + 1);
            for (int y = 0; y < perBlock; ++y)
                for (int x = 0; x < perBlock; ++x) {
                    const uint32_t a = base + uint32_t(y) * row + uint32_t(x);
                    for (uint32_t i : {a, a + 1, a + row + 1, a, a + row + 1, a + row})
                        indices.push_back(i);
                }
        }
    std::vector<Vec2BufferUPtr> uvSets;
    uvSets.push_back(makeBuffer(std::move(uvs)));
    std::vector<SubMesh> subs;
    subs.emplace_back(makeBuffer(std::move(indices)), PrimitiveType::Triangles, 3, nullptr,
                      DefaultRenderFlags | SelectedRenderFlag);
    auto data = std::make_shared<Mesh::Data>(makeBuffer(std::move(positions)), makeBuffer(std::move(normals)),
                                             makeBuffer(std::move(tangents)), makeBuffer(std::move(binormals)),
                                             nullptr, std::move(uvSets), std::move(subs));
    auto scene = std::make_shared<Scene>();
    scene->addEntity(std::make_shared<Entity>(QStringLiteral("grid"), nullptr,
                                              std::make_unique<MeshDisplayComponent>(
                                                  std::make_shared<Mesh>(data, QStringLiteral("grid")))));
    return scene;
}

double msSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

// Processor time of the process: on a shared machine it says more than the clock.
double cpuMsSince(std::clock_t start) { return 1000.0 * double(std::clock() - start) / CLOCKS_PER_SEC; }

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const long triangles = argc > 1 ? std::atol(argv[1]) : 1000000;
    const int sideLog = argc > 2 ? std::atoi(argv[2]) : 11;
    // Cells a multiple of 32, so that the blocks divide the grid.
    const int cells = std::max(32, int(std::lround(std::sqrt(double(triangles) / 2.0) / 32.0)) * 32);
    ZmfBench::BenchContext context;

    std::printf("uv-map, grid of %d x %d cells (%ld triangles), map %d x %d\n", cells, cells, 2L * cells * cells,
                1 << sideLog, 1 << sideLog);
    for (int islands : {1, 32, cells}) {
        const SceneSPtr scene = makeGrid(cells, islands);
        Ond::Baking::ColorMapBaker raster;
        raster.init();
        Ond::Baking::setPropertyValue(raster.properties(), "Common.OutputSize",
                                      QVariant::fromValue(QSize(sideLog, sideLog)));
        Ond::Baking::UV2SvgBaker svg;
        svg.init();
        Ond::Baking::setPropertyValue(svg.properties(), "Common.OutputSize",
                                      QVariant::fromValue(QSize(sideLog, sideLog)));

        auto start = std::chrono::steady_clock::now();
        std::clock_t cpuStart = std::clock();
        svg.process(context, scene);
        const double svgMs = msSince(start);
        const double svgCpuMs = cpuMsSince(cpuStart);
        const qsizetype paths = svg.data().count("<path");
        const double megabytes = double(svg.data().size()) / (1024.0 * 1024.0);

        start = std::chrono::steady_clock::now();
        cpuStart = std::clock();
        const auto surface = raster.process(context, scene);
        const double rasterMs = msSince(start);
        const double rasterCpuMs = cpuMsSince(cpuStart);
        std::printf("  %7lld islands: SVG %8.1f ms (cpu %8.1f ms), %7.2f MiB; SVG + raster %8.1f ms (cpu %8.1f ms) "
                    "(%ux%u)\n",
                    static_cast<long long>(paths), svgMs, svgCpuMs, megabytes, rasterMs, rasterCpuMs,
                    surface ? surface->width() : 0, surface ? surface->height() : 0);
    }
    return 0;
}
