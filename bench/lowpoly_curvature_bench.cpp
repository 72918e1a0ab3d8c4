// Times the low-poly curvature baker, per vertex and per pixel, on a wavy
// grid of about 1 M triangles with one UV island: world-space normals (per
// pixel), mesh preparation, GL passes, post-process and total.
// Usage: lowpoly_curvature_bench [log2 of the map side, default 9] [grid side in quads, default 708]
//        [repetitions, default 1]
// The figure asked of it is at 2048 x 2048: lowpoly_curvature_bench 11

#include "baking/PropertyBag.h"
#include "baking/lowpoly/CurvatureMapBaker.h"
#include "baking/lowpoly/CurvaturePreparation.h"
#include "bench/BenchBaking.h"
#include "bench/BenchGL.h"
#include "opengl/OglContextData.h"

#include <QSize>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>

namespace {

// n x n quads over the unit square, a gentle wave, analytic normals.
QString writeGridObj(const QString& dir, int n)
{
    const QString path = dir + QStringLiteral("/grid_low.obj");
    std::ofstream out(path.toStdString());
    out << "o grid_low\n";
    char line[256];
    for (int j = 0; j <= n; ++j)
        for (int i = 0; i <= n; ++i) {
            const double u = double(i) / n, v = double(j) / n;
            const double h = 0.05 * std::sin(12 * u) * std::cos(9 * v);
            const double dx = 0.6 * std::cos(12 * u) * std::cos(9 * v), dz = -0.45 * std::sin(12 * u) * std::sin(9 * v);
            const double len = std::sqrt(dx * dx + 1 + dz * dz);
            std::snprintf(line, sizeof line, "v %.6f %.6f %.6f\nvt %.6f %.6f\nvn %.6f %.6f %.6f\n", u, h, v, u, v,
                          -dx / len, 1 / len, -dz / len);
            out << line;
        }
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            const int a = j * (n + 1) + i + 1, b = a + 1, c = a + n + 1, d = c + 1;
            std::snprintf(line, sizeof line, "f %d/%d/%d %d/%d/%d %d/%d/%d\nf %d/%d/%d %d/%d/%d %d/%d/%d\n", a, a, a,
                          c, c, c, b, b, b, b, b, b, c, c, c, d, d, d);
            out << line;
        }
    return path;
}

double loadAverage()
{
    double load = 0.0;
    if (FILE* f = std::fopen("/proc/loadavg", "r")) {
        if (std::fscanf(f, "%lf", &load) != 1)
            load = 0.0;
        std::fclose(f);
    }
    return load;
}

} // namespace

int main(int argc, char** argv)
{
    const int log2Size = argc > 1 ? std::clamp(std::atoi(argv[1]), 4, 13) : 9;
    const int gridSide = argc > 2 ? std::max(std::atoi(argv[2]), 1) : 708;
    const int repetitions = argc > 3 ? std::max(std::atoi(argv[3]), 1) : 1;

    ZmfBench::BenchGL gl(argc, argv);
    if (!gl.ready())
        return 1;

    QTemporaryDir temp;
    const QString meshPath = writeGridObj(temp.path(), gridSide);
    const Ond::SceneGraph::SceneSPtr scene = ZmfBench::loadSelectedObj(meshPath);
    if (!scene)
        return 1;
    std::printf("curvature of %d triangles at %d x %d, best of %d, load average %.2f\n", 2 * gridSide * gridSide,
                1 << log2Size, 1 << log2Size, repetitions, loadAverage());

    {
        Ond::Baking::CollectMeshDataVisitor collect(0);
        collect.walk(*scene);
        const auto packed = Ond::Baking::prepareCurvatureMesh(collect.mesh, true, true,
                                                              Ond::Baking::curvatureScale(collect.mesh));
        std::printf("%zu vertices in %u normal groups, %u connection entries, packed width %d, %zu seam lines\n",
                    collect.mesh.vertices.size(), packed.groupCount, packed.entryCount, 1 << packed.log2Width,
                    packed.seamLines.size() / 6);
    }

    std::printf("%-11s %9s %12s %9s %13s %9s\n", "algorithm", "normals", "preparation", "passes", "post-process",
                "total");

    ZmfBench::BenchContext context;
    for (int algorithm : {1, 0}) {
        Ond::Baking::CurvatureMapBaker baker;
        baker.init();
        using Ond::Baking::setPropertyValue;
        setPropertyValue(baker.properties(), "Common.OutputSize", QVariant::fromValue(QSize(log2Size, log2Size)));
        setPropertyValue(baker.properties(), "Curvature.PerVertex", algorithm);
        Ond::Baking::CurvatureMapBaker::Timings best;
        best.total = 1e30;
        for (int r = 0; r < repetitions; ++r) {
            gl.manager().runInContext(true, [&](Ond::OglUtils::OglContextData&) {
                baker.process(context, scene);
                return 0;
            });
            if (baker.lastTimings().total < best.total)
                best = baker.lastTimings();
        }
        std::printf("%-11s %7.0f ms %10.0f ms %7.0f ms %11.0f ms %7.0f ms\n", algorithm ? "per vertex" : "per pixel",
                    best.normals, best.preparation, best.passes, best.postProcess, best.total);
    }
    std::printf("load average after: %.2f\n", loadAverage());
    return 0;
}
