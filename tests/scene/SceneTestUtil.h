#pragma once
// Small in-memory meshes and entities for the scene tests.

#include "scene/graph/Entity.h"
#include "scene/graph/LocationComponent.h"
#include "scene/graph/Mesh.h"
#include "scene/graph/MeshDisplayComponent.h"

#include <Eigen/Geometry>

#include <memory>
#include <vector>

namespace SceneTest {

using namespace Ond::SceneGraph;

inline Eigen::Matrix4f translation(float x, float y, float z)
{
    Eigen::Matrix4f m = Eigen::Matrix4f::Identity();
    m(0, 3) = x;
    m(1, 3) = y;
    m(2, 3) = z;
    return m;
}

inline Eigen::Matrix4f scaling(float s)
{
    Eigen::Matrix4f m = Eigen::Matrix4f::Identity();
    m(0, 0) = m(1, 1) = m(2, 2) = s;
    return m;
}

inline Eigen::Vector3f apply(const Eigen::Matrix4f& m, const Eigen::Vector3f& p)
{
    return (m * p.homogeneous()).head<3>();
}

inline SubMesh triangles(std::vector<uint32_t> indices, std::shared_ptr<MaterialDefinition> material = nullptr,
                         int flags = DefaultRenderFlags)
{
    return SubMesh(makeBuffer(std::move(indices)), PrimitiveType::Triangles, 3, std::move(material), flags);
}

// A mesh with the given positions, one UV set per entry of uvSets, and the
// given SubMeshes.
inline std::shared_ptr<Mesh::Data> makeData(std::vector<Eigen::Vector3f> positions,
                                            std::vector<std::vector<Eigen::Vector2f>> uvSets,
                                            std::vector<SubMesh> subMeshes)
{
    std::vector<Vec2BufferUPtr> uvs;
    for (auto& set : uvSets)
        uvs.push_back(makeBuffer(std::move(set)));
    return std::make_shared<Mesh::Data>(makeBuffer(std::move(positions)), nullptr, nullptr, nullptr, nullptr,
                                        std::move(uvs), std::move(subMeshes));
}

// The unit cube's corners as a mesh of one triangle list, one UV set.
inline std::shared_ptr<Mesh::Data> unitCubeData(int flags = DefaultRenderFlags, size_t uvSetCount = 1)
{
    std::vector<Eigen::Vector3f> positions;
    for (int i = 0; i < 8; ++i)
        positions.emplace_back(float(i & 1), float((i >> 1) & 1), float((i >> 2) & 1));
    std::vector<std::vector<Eigen::Vector2f>> uvSets(uvSetCount, std::vector<Eigen::Vector2f>(8, {0.5f, 0.5f}));
    std::vector<SubMesh> subs;
    subs.push_back(triangles({0, 1, 2, 5, 6, 7}, std::make_shared<UserMaterialDefinition>("cube"), flags));
    return makeData(std::move(positions), std::move(uvSets), std::move(subs));
}

inline Entity::SPtr meshEntity(const QString& name, Mesh::SPtr mesh,
                               const Eigen::Matrix4f& local = Eigen::Matrix4f::Identity())
{
    return std::make_shared<Entity>(name, std::make_unique<LocationComponent>(local),
                                    std::make_unique<MeshDisplayComponent>(std::move(mesh)));
}

} // namespace SceneTest
