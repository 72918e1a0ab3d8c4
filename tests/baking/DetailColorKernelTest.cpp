// Colour from mesh: vertex colours at known barycentrics, and the colour
// per triangle from materials, part names and sub-meshes.

#include "DetailKernelTestUtil.h"
#include "RayEngineTestUtil.h"

#include "baking/detail/GrabbedMesh.h"
#include "baking/detail/TriangleColorKernel.h"
#include "baking/detail/VertexColorKernel.h"
#include "scene/graph/MaterialDefinition.h"

#include <gtest/gtest.h>

using namespace DetailKernelTest;
using namespace Ond::SceneGraph;

namespace {

// A square part whose triangles are split into one sub-mesh per material.
Entity::SPtr part(const QString& name, const std::vector<Eigen::Vector3f>& subMeshColors)
{
    std::vector<Eigen::Vector3f> p = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    std::vector<Eigen::Vector3f> n(4, Eigen::Vector3f(0, 0, 1));
    std::vector<SubMesh> subs;
    for (const Eigen::Vector3f& color : subMeshColors) {
        auto material = std::make_shared<UserMaterialDefinition>(name);
        material->color = Eigen::Vector4f(color.x(), color.y(), color.z(), 1.0f);
        subs.emplace_back(makeBuffer(std::vector<uint32_t>{0, 1, 2, 0, 2, 3}), PrimitiveType::Triangles, 3,
                          material);
    }
    // The keyed sources, like the vertex colour source, want vertex colours
    // on every part, even though they do not read them.
    std::vector<Eigen::Vector4f> c(4, Eigen::Vector4f(0.1f, 0.2f, 0.3f, 1.0f));
    auto data = std::make_shared<Mesh::Data>(makeBuffer(std::move(p)), makeBuffer(std::move(n)), nullptr, nullptr,
                                             makeBuffer(std::move(c)), std::vector<Vec2BufferUPtr>(),
                                             std::move(subs));
    return std::make_shared<Entity>(name, std::make_unique<LocationComponent>(),
                                    std::make_unique<MeshDisplayComponent>(std::make_shared<Mesh>(data, name)));
}

struct Baked
{
    std::unique_ptr<GrabbedMesh> mesh;
    std::vector<float> colors; // per triangle
};

Baked triangleColors(const SceneSPtr& scene, int32_t source, int32_t generator)
{
    DetailBakeJob job;
    job.highScene = scene;
    job.kind = BakeJobKind::TriangleColor;
    job.flags = BakeJobFlags::GrabColors;
    job.colorSource = source;
    job.colorGenerator = generator;
    std::shared_ptr<GrabbedMesh> mesh(grabMesh(*scene, job.flags, job.kind, source, 0).release());
    EmbreeScene embree(mesh);
    TriangleColorKernel kernel(job, embree);
    Baked out;
    out.colors = kernel.colors();
    // The kernel's own colour must be what a hit adds.
    for (unsigned t = 0; t < mesh->triangleCount; ++t) {
        const auto acc = accumulate(kernel, hitAt(embree, t, 0.2f, 0.3f));
        for (int c = 0; c < 3; ++c)
            EXPECT_FLOAT_EQ(acc[c], out.colors[t * 3 + c]);
    }
    return out;
}

Eigen::Vector3f colorOf(const Baked& b, unsigned triangle)
{
    return Eigen::Vector3f(b.colors[triangle * 3], b.colors[triangle * 3 + 1], b.colors[triangle * 3 + 2]);
}

void expectColor(const Baked& b, unsigned triangle, const Eigen::Vector3f& expected)
{
    EXPECT_LT((colorOf(b, triangle) - expected).norm(), 1e-3f)
        << "triangle " << triangle << ": " << colorOf(b, triangle).transpose();
}

} // namespace

TEST(DetailColorKernels, VertexColorsInterpolatedAtTheHit)
{
    auto mesh = triangle();
    fill(mesh->colors, {1.0f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.2f, 1.0f});
    EmbreeScene scene(mesh);
    DetailBakeJob job;
    job.kind = BakeJobKind::VertexColor;
    VertexColorKernel kernel(job, scene);

    // w = 0.25 on vertex 0, u = 0.25 on vertex 1, v = 0.5 on vertex 2.
    const auto acc = accumulate(kernel, hitAt(scene, 0, 0.25f, 0.5f));
    EXPECT_FLOAT_EQ(acc[0], 0.25f);
    EXPECT_FLOAT_EQ(acc[1], 0.25f + 0.1f);
    EXPECT_FLOAT_EQ(acc[2], 0.5f);
    EXPECT_EQ(acc[3], 0.0f);

    // At a corner the corner's own colour.
    const auto corner = accumulate(kernel, hitAt(scene, 0, 1.0f, 0.0f));
    EXPECT_FLOAT_EQ(corner[1], 1.0f);
    EXPECT_FLOAT_EQ(corner[0], 0.0f);
}

TEST(DetailColorKernels, MaterialColorPerPart)
{
    const Eigen::Vector3f red(1, 0, 0), teal(0, 0.5f, 0.5f), grey(0.25f, 0.25f, 0.25f);
    const Baked b = triangleColors(RayEngineTest::sceneOf({part("a", {red}), part("b", {teal, grey})}), 1, 1);
    ASSERT_EQ(b.colors.size(), 6u * 3);
    expectColor(b, 0, red);
    expectColor(b, 1, red);
    expectColor(b, 2, teal);
    expectColor(b, 3, teal);
    expectColor(b, 4, grey);
    expectColor(b, 5, grey);
}

TEST(DetailColorKernels, FileIdGivesOneHueShiftColourPerNameKeyInOrderOfFirstAppearance)
{
    // "a_high" shares the name key of "a": two keys, so hues 0 and 1/2.
    const Eigen::Vector3f white(1, 1, 1);
    const Baked b = triangleColors(
        RayEngineTest::sceneOf({part("a", {white}), part("b", {white}), part("a_high", {white})}), 2, 1);
    ASSERT_EQ(b.colors.size(), 6u * 3);
    expectColor(b, 0, Eigen::Vector3f(1, 0, 0));
    expectColor(b, 1, Eigen::Vector3f(1, 0, 0));
    expectColor(b, 2, Eigen::Vector3f(0, 1, 1));
    expectColor(b, 3, Eigen::Vector3f(0, 1, 1));
    expectColor(b, 4, Eigen::Vector3f(1, 0, 0));
    expectColor(b, 5, Eigen::Vector3f(1, 0, 0));
}

TEST(DetailColorKernels, MeshIdGivesOneColourPerSubMesh)
{
    const Eigen::Vector3f white(1, 1, 1);
    auto scene = RayEngineTest::sceneOf({part("a", {white, white}), part("b", {white})});

    // Three sub-meshes: hues 0, 1/3, 2/3, distinct and in order.
    const Baked hue = triangleColors(scene, 3, 1);
    ASSERT_EQ(hue.colors.size(), 6u * 3);
    expectColor(hue, 0, Eigen::Vector3f(1, 0, 0));
    expectColor(hue, 1, Eigen::Vector3f(1, 0, 0));
    expectColor(hue, 2, Eigen::Vector3f(0, 1, 0));
    expectColor(hue, 3, Eigen::Vector3f(0, 1, 0));
    expectColor(hue, 4, Eigen::Vector3f(0, 0, 1));
    expectColor(hue, 5, Eigen::Vector3f(0, 0, 1));

    // Grayscale: the middles of three bands.
    const Baked grey = triangleColors(scene, 3, 2);
    for (unsigned k = 0; k < 3; ++k)
        expectColor(grey, k * 2, Eigen::Vector3f::Constant((2.0f * k + 1.0f) / 6.0f));

    // Random: valid colours, the same within a key.
    const Baked random = triangleColors(scene, 3, 0);
    for (unsigned k = 0; k < 3; ++k)
        EXPECT_EQ(colorOf(random, k * 2), colorOf(random, k * 2 + 1));
}
