#pragma once
// The generated high mesh the ray benchmarks trace: a wavy height field of
// (n - 1)^2 * 2 triangles over [0, 1]^2 with its analytic normals, deep
// enough that occlusion varies.

#include "scene/graph/Entity.h"
#include "scene/graph/LocationComponent.h"
#include "scene/graph/Mesh.h"
#include "scene/graph/MeshDisplayComponent.h"
#include "scene/graph/Scene.h"

#include <QTemporaryDir>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <string>

namespace ZmfBench {

// Vertex (x, y) of the n by n grid: the wavy surface and its analytic normal.
inline void terrainVertex(unsigned n, unsigned x, unsigned y, Eigen::Vector3f& point, Eigen::Vector3f& normal)
{
    const float u = float(x) / float(n - 1), v = float(y) / float(n - 1);
    const float a = 0.02f, fu = 40.0f, fv = 37.0f;
    point = Eigen::Vector3f(u, v, a * std::sin(u * fu) * std::cos(v * fv));
    normal = Eigen::Vector3f(-a * fu * std::cos(u * fu) * std::cos(v * fv),
                             a * fv * std::sin(u * fu) * std::sin(v * fv), 1.0f)
                 .normalized();
}

// The two triangles of each cell of an n by n vertex grid, 0-based indices.
template <typename Visit>
void forEachGridTriangle(unsigned n, Visit&& visit)
{
    for (unsigned y = 0; y + 1 < n; ++y)
        for (unsigned x = 0; x + 1 < n; ++x) {
            const uint32_t a = y * n + x, b = a + 1, c = a + n, d = c + 1;
            visit(a, b, d);
            visit(a, d, c);
        }
}

// The same terrain as an OBJ file with normals, for runs of the binary.
inline bool writeTerrainObj(const std::string& path, unsigned n)
{
    std::FILE* f = std::fopen(path.c_str(), "w");
    if (!f)
        return false;
    std::fprintf(f, "o terrain_high\n");
    for (unsigned y = 0; y < n; ++y)
        for (unsigned x = 0; x < n; ++x) {
            Eigen::Vector3f p, nrm;
            terrainVertex(n, x, y, p, nrm);
            std::fprintf(f, "v %.7g %.7g %.7g\nvn %.6f %.6f %.6f\n", p.x(), p.y(), p.z(), nrm.x(), nrm.y(), nrm.z());
        }
    forEachGridTriangle(n, [&](uint32_t a, uint32_t b, uint32_t c) {
        std::fprintf(f, "f %u//%u %u//%u %u//%u\n", a + 1, a + 1, b + 1, b + 1, c + 1, c + 1);
    });
    return std::fclose(f) == 0;
}

// A flat low mesh under the terrain: the unit square at z = 0 facing +z,
// its UVs its x and y, n by n vertices.
inline bool writePlaneObj(const std::string& path, unsigned n)
{
    std::FILE* f = std::fopen(path.c_str(), "w");
    if (!f)
        return false;
    std::fprintf(f, "o terrain_low\nvn 0 0 1\n");
    for (unsigned y = 0; y < n; ++y)
        for (unsigned x = 0; x < n; ++x) {
            const float u = float(x) / float(n - 1), v = float(y) / float(n - 1);
            std::fprintf(f, "v %.7g %.7g 0\nvt %.7g %.7g\n", u, v, u, v);
        }
    forEachGridTriangle(n, [&](uint32_t a, uint32_t b, uint32_t c) {
        std::fprintf(f, "f %u/%u/1 %u/%u/1 %u/%u/1\n", a + 1, a + 1, b + 1, b + 1, c + 1, c + 1);
    });
    return std::fclose(f) == 0;
}

inline Ond::SceneGraph::SceneSPtr makeTerrain(unsigned n)
{
    using namespace Ond::SceneGraph;
    std::vector<Eigen::Vector3f> p, nrm;
    p.reserve(size_t(n) * n);
    nrm.reserve(size_t(n) * n);
    for (unsigned y = 0; y < n; ++y)
        for (unsigned x = 0; x < n; ++x) {
            Eigen::Vector3f point, normal;
            terrainVertex(n, x, y, point, normal);
            p.push_back(point);
            nrm.push_back(normal);
        }
    std::vector<uint32_t> idx;
    idx.reserve(size_t(n - 1) * (n - 1) * 6);
    forEachGridTriangle(n, [&](uint32_t a, uint32_t b, uint32_t c) { idx.insert(idx.end(), {a, b, c}); });
    std::vector<SubMesh> subs;
    subs.emplace_back(makeBuffer(std::move(idx)), PrimitiveType::Triangles, 3, nullptr);
    auto data = std::make_shared<Mesh::Data>(makeBuffer(std::move(p)), makeBuffer(std::move(nrm)), nullptr, nullptr,
                                             nullptr, std::vector<Vec2BufferUPtr>(), std::move(subs));
    auto entity = std::make_shared<Entity>("terrain_high", std::make_unique<LocationComponent>(),
                                           std::make_unique<MeshDisplayComponent>(std::make_shared<Mesh>(data)));
    return std::make_shared<Scene>(std::vector<Entity::SPtr>{entity});
}

// terrain_high.obj (the terrain of side n) over terrain_low.obj (a flat
// plane of 32 x 32 quads) in dir; false after saying why.
inline bool writeTerrainPair(const QTemporaryDir& dir, unsigned n, QString& low, QString& high)
{
    high = dir.filePath(QStringLiteral("terrain_high.obj"));
    low = dir.filePath(QStringLiteral("terrain_low.obj"));
    if (writeTerrainObj(high.toStdString(), n) && writePlaneObj(low.toStdString(), 33))
        return true;
    std::printf("could not write the meshes to %s\n", qPrintable(dir.path()));
    return false;
}

// Seconds on a monotonic clock.
inline double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

} // namespace ZmfBench
