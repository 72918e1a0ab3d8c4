#pragma once
// The generated high mesh the ray benchmarks trace: a wavy height field of
// (n - 1)^2 * 2 triangles over [0, 1]^2 with its analytic normals, deep
// enough that occlusion varies.

#include "scene/graph/Entity.h"
#include "scene/graph/LocationComponent.h"
#include "scene/graph/Mesh.h"
#include "scene/graph/MeshDisplayComponent.h"
#include "scene/graph/Scene.h"

#include <chrono>
#include <cmath>

namespace ZmfBench {

inline Ond::SceneGraph::SceneSPtr makeTerrain(unsigned n)
{
    using namespace Ond::SceneGraph;
    std::vector<Eigen::Vector3f> p, nrm;
    p.reserve(size_t(n) * n);
    nrm.reserve(size_t(n) * n);
    for (unsigned y = 0; y < n; ++y)
        for (unsigned x = 0; x < n; ++x) {
            const float u = float(x) / float(n - 1), v = float(y) / float(n - 1);
            const float a = 0.02f, fu = 40.0f, fv = 37.0f;
            p.emplace_back(u, v, a * std::sin(u * fu) * std::cos(v * fv));
            const Eigen::Vector3f g(-a * fu * std::cos(u * fu) * std::cos(v * fv),
                                    a * fv * std::sin(u * fu) * std::sin(v * fv), 1.0f);
            nrm.push_back(g.normalized());
        }
    std::vector<uint32_t> idx;
    idx.reserve(size_t(n - 1) * (n - 1) * 6);
    for (unsigned y = 0; y + 1 < n; ++y)
        for (unsigned x = 0; x + 1 < n; ++x) {
            const uint32_t a = y * n + x, b = a + 1, c = a + n, d = c + 1;
            idx.insert(idx.end(), {a, b, d, a, d, c});
        }
    std::vector<SubMesh> subs;
    subs.emplace_back(makeBuffer(std::move(idx)), PrimitiveType::Triangles, 3, nullptr);
    auto data = std::make_shared<Mesh::Data>(makeBuffer(std::move(p)), makeBuffer(std::move(nrm)), nullptr, nullptr,
                                             nullptr, std::vector<Vec2BufferUPtr>(), std::move(subs));
    auto entity = std::make_shared<Entity>("terrain_high", std::make_unique<LocationComponent>(),
                                           std::make_unique<MeshDisplayComponent>(std::make_shared<Mesh>(data)));
    return std::make_shared<Scene>(std::vector<Entity::SPtr>{entity});
}

// Seconds on a monotonic clock.
inline double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

} // namespace ZmfBench
