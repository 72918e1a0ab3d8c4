#pragma once
// Grabbed meshes written by hand and primary hits at chosen barycentrics,
// for calling a map kernel without rays.

#include "baking/detail/EmbreeScene.h"
#include "baking/detail/RaytraceStrip.h"

#include <array>
#include <initializer_list>
#include <memory>
#include <vector>

namespace DetailKernelTest {

using namespace Ond::Baking;

// positions and normals: 3 floats per vertex.
inline std::shared_ptr<GrabbedMesh> meshOf(const std::vector<float>& positions, const std::vector<float>& normals,
                                           const std::vector<uint32_t>& indices)
{
    auto mesh = std::make_shared<GrabbedMesh>();
    mesh->vertexCount = unsigned(positions.size() / 3);
    mesh->triangleCount = unsigned(indices.size() / 3);
    mesh->positions.allocate(mesh->vertexCount * 4);
    mesh->normals.allocate(mesh->vertexCount * 3);
    for (unsigned i = 0; i < mesh->vertexCount; ++i) {
        for (int c = 0; c < 3; ++c) {
            mesh->positions[i * 4 + c] = positions[i * 3 + c];
            mesh->normals[i * 3 + c] = normals[i * 3 + c];
        }
        mesh->positions[i * 4 + 3] = 1.0f;
    }
    mesh->indices.allocate(indices.size());
    std::copy(indices.begin(), indices.end(), mesh->indices.data());
    mesh->ids.allocate(mesh->triangleCount);
    mesh->culling.allocate(mesh->triangleCount);
    for (unsigned t = 0; t < mesh->triangleCount; ++t)
        mesh->ids[t] = mesh->culling[t] = 0;
    return mesh;
}

// One triangle in the z = 0 plane, normals +z.
inline std::shared_ptr<GrabbedMesh> triangle()
{
    return meshOf({0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 0, 1, 0, 0, 1, 0, 0, 1}, {0, 1, 2});
}

template <typename T>
inline void fill(AlignedArray<T>& array, std::initializer_list<T> values)
{
    array.allocate(values.size());
    std::copy(values.begin(), values.end(), array.data());
}

inline PrimaryHit hitAt(const EmbreeScene& scene, unsigned primID, float u, float v)
{
    static const float origin[4] = {0, 0, 1, 1};
    static const float direction[4] = {0, 0, 1, 0};
    return PrimaryHit{origin, direction, {0, 0, 1}, 1.0f, u, v, primID, {0, 0, 1}, 0, 0, &scene};
}

// The kernel's accumulation over one hit.
template <typename Kernel>
inline std::array<float, 4> accumulate(const Kernel& kernel, const PrimaryHit& hit)
{
    std::array<float, 4> acc = {0, 0, 0, 0};
    kernel.hit(hit, acc.data());
    return acc;
}

} // namespace DetailKernelTest
