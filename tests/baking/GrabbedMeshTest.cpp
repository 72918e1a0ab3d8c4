#include "RayEngineTestUtil.h"

#include "baking/detail/GrabbedMesh.h"
#include "baking/detail/MeshNameId.h"

#include <Eigen/Geometry>
#include <gtest/gtest.h>

using namespace RayEngineTest;

TEST(GrabbedMeshTest, PartsAreFlattenedInWorldSpaceWithIdsAndCulling)
{
    Entity::SPtr moved = plate("lid_high_ignorebf", 0.0f, 1.0f);
    Eigen::Matrix4f m = Eigen::Matrix4f::Identity();
    m(2, 3) = 5.0f;
    moved->getLocation()->setLocalTransform(m);
    SceneSPtr scene = sceneOf({plate("base_high"), moved});

    auto mesh = grabMesh(*scene, 0, BakeJobKind::Height, 4, 0);
    ASSERT_EQ(mesh->vertexCount, 8u);
    ASSERT_EQ(mesh->triangleCount, 4u);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(reinterpret_cast<uintptr_t>(mesh->positions.data()) % 16, 0u);
        EXPECT_FLOAT_EQ(mesh->positions[size_t(i) * 4 + 2], 0.0f);
        EXPECT_FLOAT_EQ(mesh->positions[size_t(4 + i) * 4 + 2], 5.0f);
        EXPECT_FLOAT_EQ(mesh->positions[size_t(i) * 4 + 3], 1.0f);
    }
    // Indices of the second part are offset by the first part's vertices.
    for (int k = 6; k < 12; ++k)
        EXPECT_GE(mesh->indices[size_t(k)], 4u);
    EXPECT_EQ(mesh->ids[0], meshNameId("base"));
    EXPECT_EQ(mesh->ids[2], meshNameId("lid"));
    EXPECT_EQ(mesh->culling[1], 0u);
    EXPECT_EQ(mesh->culling[3], 1u);
    EXPECT_TRUE(mesh->uvs.empty());
    EXPECT_TRUE(mesh->tangents.empty());
}

TEST(GrabbedMeshTest, WindingFollowsVertexNormals)
{
    SceneSPtr ccw = sceneOf({plate("a", 0.0f, 1.0f, false)});
    SceneSPtr cw = sceneOf({plate("a", 0.0f, 1.0f, true)});
    auto a = grabMesh(*ccw, 0, BakeJobKind::Height, 4, 0);
    auto b = grabMesh(*cw, 0, BakeJobKind::Height, 4, 0);
    // After the fix (p0 - p1) x (p2 - p0) points against the normals.
    for (const GrabbedMesh* mesh : {a.get(), b.get()}) {
        for (unsigned t = 0; t < mesh->triangleCount; ++t) {
            auto p = [&](int k) {
                const float* v = &mesh->positions[size_t(mesh->indices[t * 3 + k]) * 4];
                return Eigen::Vector3f(v[0], v[1], v[2]);
            };
            EXPECT_LT((p(0) - p(1)).cross(p(2) - p(0)).z(), 0.0f) << t;
        }
    }
}

TEST(GrabbedMeshTest, MissingAttributesFailWithOneLinePerAttribute)
{
    auto collector = std::make_shared<LogCollector>();
    Ond::Core::LogManager::instance().addDelegate(collector);
    SceneSPtr scene = sceneOf({plate("bare_high", 0.0f, 1.0f, false, false), plate("other_high"),
                               plate("third_high", 0.0f, 1.0f, false, false)});
    try {
        grabMesh(*scene, BakeJobFlags::GrabTangents | BakeJobFlags::GrabUvs, BakeJobKind::Texture, 4, 0);
        ADD_FAILURE() << "no error";
    } catch (ErrorCode code) {
        EXPECT_EQ(code, ErrorCode::MissingInputData);
    }
    Ond::Core::LogManager::instance().removeDelegate(collector);
    const QString lines = collector->lines.join('\n');
    EXPECT_TRUE(lines.contains("Could not find normals in mesh : bare_high, third_high")) << qPrintable(lines);
    EXPECT_TRUE(lines.contains(
        "Could not find tangents in mesh : bare_high, other_high, third_high"));
    EXPECT_TRUE(lines.contains("Could not find binormals in mesh : "));
    EXPECT_TRUE(lines.contains("Could not find UVs in mesh : "));
    EXPECT_FALSE(lines.contains("vertex colors"));
}

TEST(GrabbedMeshTest, MaterialColoursNeedNoVertexColours)
{
    SceneSPtr scene = sceneOf({plate("a")});
    auto mesh = grabMesh(*scene, BakeJobFlags::GrabColors, BakeJobKind::TriangleColor, 1, 0);
    EXPECT_EQ(mesh->colors.size(), size_t(mesh->triangleCount) * 3);
    EXPECT_THROW(grabMesh(*scene, BakeJobFlags::GrabColors, BakeJobKind::VertexColor, 0, 0), ErrorCode);
}
