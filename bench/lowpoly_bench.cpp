// Times the low-poly bakes on a mesh read from an OBJ file, by stage: load,
// scene upload, draw, read-back and post-process of the world-space normal
// map at 4096², then the whole tile loop of two bakers at several sizes.
// Without a file it generates a wavy grid of about 1 M triangles with UVs.
// Usage: lowpoly_bench [mesh.obj or ""] [repetitions]

#include "baking/lowpoly/GLTileTarget.h"
#include "baking/lowpoly/NormalWSMapBaker.h"
#include "baking/lowpoly/PostProcess.h"
#include "baking/lowpoly/PositionMapBaker.h"
#include "baking/lowpoly/SceneGL.h"
#include "bench/BenchBaking.h"
#include "bench/BenchGL.h"
#include "bench/BenchUtil.h"
#include "opengl/OglContextData.h"

#include <QTemporaryDir>
#include <QSize>

#include <GL/glew.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>

namespace {

using ZmfBench::millisSince;

double bestOf(int repetitions, const std::function<void()>& run)
{
    double best = 1e30;
    for (int i = 0; i < repetitions; ++i) {
        glFinish();
        const auto start = std::chrono::steady_clock::now();
        run();
        glFinish();
        const auto end = std::chrono::steady_clock::now();
        best = std::min(best, std::chrono::duration<double, std::milli>(end - start).count());
    }
    return best;
}

void prepare(Ond::Baking::LowPolyMapBaker& baker, int log2Size)
{
    using Ond::Baking::setPropertyValue;
    setPropertyValue(baker.properties(), "Common.OutputSize", QVariant::fromValue(QSize(log2Size, log2Size)));
    setPropertyValue(baker.properties(), "Common.DilationWidth", 0);
    setPropertyValue(baker.properties(), "Common.ApplyDiffusion", false);
}

// A height field over the unit square, n x n quads, one UV island.
QString writeGridObj(const QString& dir, int n)
{
    const QString path = dir + QStringLiteral("/grid_low.obj");
    std::ofstream out(path.toStdString());
    out << "o grid_low\n";
    char line[128];
    for (int j = 0; j <= n; ++j)
        for (int i = 0; i <= n; ++i) {
            const double u = double(i) / n, v = double(j) / n;
            std::snprintf(line, sizeof line, "v %.6f %.6f %.6f\nvt %.6f %.6f\n", u, 0.05 * std::sin(12 * u) * std::cos(9 * v), v,
                          u, v);
            out << line;
        }
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            const int a = j * (n + 1) + i + 1, b = a + 1, c = a + n + 1, d = c + 1;
            std::snprintf(line, sizeof line, "f %d/%d %d/%d %d/%d\nf %d/%d %d/%d %d/%d\n", a, a, c, c, b, b, b, b, c, c, d,
                          d);
            out << line;
        }
    return path;
}

} // namespace

int main(int argc, char** argv)
{
    QTemporaryDir temp;
    const QString meshPath = argc > 1 && *argv[1] ? QString::fromLocal8Bit(argv[1]) : writeGridObj(temp.path(), 708);
    const int repetitions = argc > 2 ? std::max(std::atoi(argv[2]), 1) : 3;

    ZmfBench::BenchGL gl(argc, argv);
    if (!gl.ready())
        return 1;
    Ond::OpenGLUtils::QGLManager& manager = gl.manager();

    const auto loadStart = std::chrono::steady_clock::now();
    const Ond::SceneGraph::SceneSPtr scene = ZmfBench::loadSelectedObj(meshPath);
    if (!scene)
        return 1;
    const double load = millisSince(loadStart);
    size_t triangles = 0;
    scene->forAllMeshes([&](const Ond::SceneGraph::Mesh::SPtr& mesh) {
        const auto data = mesh->getData();
        for (size_t i = 0; i < data->getSubMeshCount(); ++i)
            triangles += data->getSubMesh(i)->primitiveCount;
        return true;
    });
    std::printf("mesh: %zu triangles, load %.0f ms\n", triangles, load);

    manager.runInContext(true, [&](Ond::OglUtils::OglContextData&) {
        ZmfBench::BenchContext context;
        const double upload = bestOf(repetitions, [&] {
            Ond::Baking::SceneGLCache::clear();
            Ond::Baking::SceneGLCache::acquire(*scene, 0, 0);
        });
        std::printf("scene upload: %.2f ms\n", upload);

        // normal-world-space at 4096², stage by stage.
        Ond::Baking::NormalWSMapBaker big;
        big.init();
        prepare(big, 12);
        Ond::Surfaces::SurfaceSPtr map;
        const double bake = bestOf(repetitions, [&] { map = big.process(context, scene); });
        const double readBack = bestOf(repetitions, [&] {
            // The tile loop reads 1024² RGBA float tiles: 16 of them at 4096².
            Ond::Baking::GLTileTarget target(1024, 1024);
            Ond::Surfaces::Surface tile(Ond::Surfaces::SurfaceDesc(1024, 1024, Ond::Surfaces::PixelFormat::RGBA32F));
            for (int i = 0; i < 16; ++i)
                Ond::Baking::readBack(target.framebuffer(), tile);
        });
        const double post = bestOf(1, [&] { Ond::Baking::postProcess(map, 16, true); });
        std::printf("normal-world-space 4096²: draw %.0f ms, read-back %.0f ms, post-process (dilation 16, diffusion) %.0f ms\n",
                    std::max(bake - readBack, 0.0), readBack, post);
        for (int log2Size : {10, 11, 12}) {
            Ond::Baking::NormalWSMapBaker normal;
            normal.init();
            prepare(normal, log2Size);
            Ond::Baking::PositionMapBaker position;
            position.init();
            prepare(position, log2Size);
            const double n = bestOf(repetitions, [&] { normal.process(context, scene); });
            const double p = bestOf(repetitions, [&] { position.process(context, scene); });
            std::printf("%5d²: normal-world-space %.1f ms, position %.1f ms\n", 1 << log2Size, n, p);
        }
        return 0;
    });
    return 0;
}
