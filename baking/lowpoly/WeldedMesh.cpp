#include "baking/lowpoly/WeldedMesh.h"

#include <Eigen/Geometry>

#include <cmath>
#include <cstring>
#include <unordered_map>

namespace Ond::Baking {

namespace {

struct PositionKey
{
    float x, y, z;
    bool operator==(const PositionKey& o) const { return x == o.x && y == o.y && z == o.z; }
};

struct PositionKeyHash
{
    size_t operator()(const PositionKey& k) const
    {
        // + 0.0f folds -0 into +0, which compare equal.
        const float v[3] = {k.x + 0.0f, k.y + 0.0f, k.z + 0.0f};
        uint32_t b[3];
        std::memcpy(b, v, sizeof(b));
        uint64_t h = b[0] * 0x9E3779B97F4A7C15ull;
        h ^= (h >> 29) + b[1] * 0xBF58476D1CE4E5B9ull;
        h ^= (h >> 31) + b[2] * 0x94D049BB133111EBull;
        return size_t(h ^ (h >> 32));
    }
};

} // namespace

WeldedMesh WeldedMesh::weld(const float* positions, const float* normals, uint32_t vertexCount,
                            const uint32_t* indices, uint32_t triangleCount)
{
    WeldedMesh mesh;
    mesh.weldedVertex.resize(vertexCount);
    std::unordered_map<PositionKey, uint32_t, PositionKeyHash> first;
    first.reserve(vertexCount);
    std::vector<Eigen::Vector3f> normalSum;
    for (uint32_t v = 0; v < vertexCount; ++v) {
        const float* p = positions + size_t(v) * 4;
        const auto [it, added] = first.emplace(PositionKey{p[0], p[1], p[2]}, uint32_t(mesh.positions.size()));
        if (added) {
            mesh.positions.emplace_back(p[0], p[1], p[2], 1.0f);
            normalSum.push_back(Eigen::Vector3f::Zero());
        }
        mesh.weldedVertex[v] = it->second;
        if (normals)
            normalSum[it->second] += Eigen::Vector3f(normals[size_t(v) * 3], normals[size_t(v) * 3 + 1],
                                                     normals[size_t(v) * 3 + 2]);
    }

    mesh.indices.resize(size_t(triangleCount) * 3);
    for (size_t i = 0; i < mesh.indices.size(); ++i)
        mesh.indices[i] = mesh.weldedVertex[indices[i]];

    // Face normals only where the file's normals give no direction.
    std::vector<Eigen::Vector3f> faceSum;
    for (size_t t = 0; t < triangleCount; ++t) {
        const uint32_t* f = &mesh.indices[t * 3];
        bool needed = false;
        for (int c = 0; c < 3; ++c)
            needed = needed || normalSum[f[c]].squaredNorm() <= 1e-12f;
        if (!needed)
            continue;
        if (faceSum.empty())
            faceSum.assign(mesh.positions.size(), Eigen::Vector3f::Zero());
        const Eigen::Vector3f p0 = mesh.positions[f[0]].head<3>();
        const Eigen::Vector3f n = (mesh.positions[f[1]].head<3>() - p0).cross(mesh.positions[f[2]].head<3>() - p0);
        for (int c = 0; c < 3; ++c)
            faceSum[f[c]] += n;
    }

    mesh.normals.resize(mesh.positions.size());
    for (size_t v = 0; v < mesh.normals.size(); ++v) {
        Eigen::Vector3f n = normalSum[v];
        if (n.squaredNorm() <= 1e-12f && !faceSum.empty())
            n = faceSum[v];
        const float len2 = n.squaredNorm();
        mesh.normals[v] = len2 > 0.0f ? Eigen::Vector3f(n / std::sqrt(len2)) : Eigen::Vector3f(0.0f, 0.0f, 1.0f);
    }
    return mesh;
}

} // namespace Ond::Baking
