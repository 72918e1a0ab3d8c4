// Per-vertex curvature figures: weld, repair and the chunked computation on
// latitude-longitude spheres of growing size, as a grab hands them over
// (one vertex per corner).
//
//   curvature_bench [max stacks, default 1024]

#include "baking/lowpoly/CurvatureComputation.h"
#include "baking/lowpoly/WeldedMesh.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThreadPool>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace Ond::Baking;

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int maxStacks = argc > 1 ? std::atoi(argv[1]) : 1024;
    std::printf("threads %d\n", QThreadPool::globalInstance()->maxThreadCount());
    for (int stacks = 128; stacks <= maxStacks; stacks *= 2) {
        const int slices = 2 * stacks;
        const double pi = 3.14159265358979323846;
        std::vector<float> grid;
        for (int i = 0; i <= stacks; ++i)
            for (int j = 0; j <= slices; ++j) {
                const double t = pi * i / stacks, p = 2.0 * pi * (j % slices) / slices;
                const double st = (i == 0 || i == stacks) ? 0.0 : std::sin(t);
                const double ct = i == 0 ? 1.0 : i == stacks ? -1.0 : std::cos(t);
                grid.insert(grid.end(), {float(st * std::cos(p)), float(st * std::sin(p)), float(ct)});
            }
        std::vector<float> positions, normals;
        std::vector<uint32_t> indices;
        auto corner = [&](int i, int j) {
            const float* g = &grid[size_t(i * (slices + 1) + j) * 3];
            positions.insert(positions.end(), {g[0], g[1], g[2], 1.0f});
            normals.insert(normals.end(), {g[0], g[1], g[2]});
            indices.push_back(uint32_t(indices.size()));
        };
        for (int i = 0; i < stacks; ++i)
            for (int j = 0; j < slices; ++j) {
                corner(i, j), corner(i, j + 1), corner(i + 1, j + 1);
                corner(i, j), corner(i + 1, j + 1), corner(i + 1, j);
            }

        QElapsedTimer timer;
        timer.start();
        const WeldedMesh mesh = WeldedMesh::weld(positions.data(), normals.data(), uint32_t(positions.size() / 4),
                                                 indices.data(), uint32_t(indices.size() / 3));
        const qint64 weldMs = timer.restart();
        // The steps of CurvatureComputation::ofWeldedMesh, timed apart.
        std::vector<Eigen::Vector4f> p = mesh.positions;
        std::vector<Eigen::Vector3f> n = mesh.normals;
        std::vector<uint32_t> ix = mesh.indices;
        uint32_t vertexCount = uint32_t(p.size()), faceCount = uint32_t(ix.size() / 3);
        DirectedEdgeStructure structure;
        structure.create({&p, &vertexCount, &ix, &faceCount, &n, nullptr, nullptr});
        const qint64 repairMs = timer.restart();
        const std::vector<float> k = CurvatureComputation(p, n, structure).compute();
        const qint64 curvatureMs = timer.elapsed();
        // Near the poles of the finest spheres the repair drops faces whose
        // corners lie within its tolerance: those vertices read 0.
        double worst = 0.0;
        size_t off = 0;
        for (size_t i = 0; i < mesh.positions.size(); ++i) {
            const double e = std::abs(double(k[i]) - 1.0);
            if (e > 0.01)
                ++off;
            else
                worst = std::max(worst, e);
        }
        std::printf("%8zu triangles %8zu welded vertices: weld %5lld ms, repair %5lld ms, curvature %5lld ms; "
                    "error %.1e, %zu vertices off by more than 1%%\n",
                    indices.size() / 3, mesh.positions.size(), (long long)weldMs, (long long)repairMs,
                    (long long)curvatureMs, worst, off);
    }
    return 0;
}
