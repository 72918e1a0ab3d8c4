#pragma once
// Meshes and a tracing helper for the secondary-ray kernel tests: boxes,
// walls and spheres built in code, traced over the GL-free grid seeds.

#include "RayEngineTestUtil.h"

#include "baking/detail/RaytracerEmbree.h"

#include <cmath>

namespace SecondaryRayTest {

using namespace RayEngineTest;

// A triangle mesh from positions, per-vertex normals and indices.
inline Entity::SPtr meshEntity(const QString& name, std::vector<Eigen::Vector3f> p, std::vector<Eigen::Vector3f> n,
                               std::vector<uint32_t> idx)
{
    std::vector<SubMesh> subs;
    subs.emplace_back(makeBuffer(std::move(idx)), PrimitiveType::Triangles, 3, nullptr);
    auto data = std::make_shared<Mesh::Data>(makeBuffer(std::move(p)), makeBuffer(std::move(n)), nullptr, nullptr,
                                             nullptr, std::vector<Vec2BufferUPtr>(), std::move(subs));
    auto mesh = std::make_shared<Mesh>(data, name);
    return std::make_shared<Entity>(name, std::make_unique<LocationComponent>(),
                                    std::make_unique<MeshDisplayComponent>(mesh));
}

// A quad from corners a, b, c, d with normal `n` on all four vertices.
inline Entity::SPtr quad(const QString& name, const Eigen::Vector3f& a, const Eigen::Vector3f& b,
                         const Eigen::Vector3f& c, const Eigen::Vector3f& d, const Eigen::Vector3f& n)
{
    return meshEntity(name, {a, b, c, d}, {n, n, n, n}, {0, 1, 2, 0, 2, 3});
}

// The six faces of the cube [-h, h]^3, normals facing in.
inline std::vector<Entity::SPtr> room(float h)
{
    std::vector<Entity::SPtr> faces;
    for (int axis = 0; axis < 3; ++axis) {
        for (float side : {-1.0f, 1.0f}) {
            const int a1 = (axis + 1) % 3, a2 = (axis + 2) % 3;
            Eigen::Vector3f corner[4];
            const float s[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
            for (int k = 0; k < 4; ++k) {
                corner[k][axis] = side * h;
                corner[k][a1] = s[k][0] * h;
                corner[k][a2] = s[k][1] * h;
            }
            Eigen::Vector3f n = Eigen::Vector3f::Zero();
            n[axis] = -side;
            faces.push_back(quad(QString("wall_%1").arg(faces.size()), corner[0], corner[1], corner[2], corner[3], n));
        }
    }
    return faces;
}

// A sphere of radius r about the origin, poles on the x axis so that the
// seeds near the z axis meet even triangles. `inward` turns the normals in.
inline Entity::SPtr sphere(const QString& name, float r, int segments, int rings, bool inward = false)
{
    std::vector<Eigen::Vector3f> p, n;
    std::vector<uint32_t> idx;
    for (int i = 0; i <= rings; ++i) {
        const float theta = float(M_PI) * float(i) / float(rings);
        for (int j = 0; j <= segments; ++j) {
            const float phi = 2.0f * float(M_PI) * float(j) / float(segments);
            const Eigen::Vector3f d(std::cos(theta), std::sin(theta) * std::cos(phi), std::sin(theta) * std::sin(phi));
            p.push_back(d * r);
            n.push_back(inward ? Eigen::Vector3f(-d) : d);
        }
    }
    const uint32_t row = uint32_t(segments + 1);
    for (int i = 0; i < rings; ++i)
        for (int j = 0; j < segments; ++j) {
            const uint32_t a = uint32_t(i) * row + uint32_t(j), b = a + row;
            idx.insert(idx.end(), {a, b, a + 1, a + 1, b, b + 1});
        }
    return meshEntity(name, std::move(p), std::move(n), std::move(idx));
}

inline DetailBakeJob jobOf(const SceneSPtr& high, BakeJobKind kind, const void* params, unsigned size = 8)
{
    DetailBakeJob job;
    job.name = "Secondary rays";
    job.highScene = high;
    job.lowScene = high;
    job.width = job.height = size;
    job.subSamples = 1;
    // Seeds start 0.2 in front of the surface: occluders must stay above.
    job.maxHeight = 0.2f;
    job.maxDepth = 0.5f;
    job.kind = kind;
    job.params = params;
    return job;
}

// Runs the Embree backend over the grid seeds with the registered kernel.
inline BakeResult traceGrid(const DetailBakeJob& job, GridRasterizer& raster)
{
    RaytracerEmbree tracer;
    BakeResult result;
    const BakeTiling tiling = computeTiling(job);
    result.surface.reset(new Ond::Surfaces::Surface(
        Ond::Surfaces::SurfaceDesc(job.width, job.height, Ond::Surfaces::PixelFormat::RGBA32F)));
    tracer.init(job, tiling, result);
    raster.rasterize(job, tiling, result, tracer);
    tracer.finish(job, tiling, result);
    return result;
}

// Smallest and largest red value over the map's texels.
inline std::pair<float, float> redRange(const BakeResult& r)
{
    float lo = 1e30f, hi = -1e30f;
    for (unsigned y = 0; y < r.surface->height(); ++y)
        for (unsigned x = 0; x < r.surface->width(); ++x) {
            const float v = r.surface->pixel<float>(x, y)[0];
            lo = std::min(lo, v);
            hi = std::max(hi, v);
        }
    return {lo, hi};
}

} // namespace SecondaryRayTest
