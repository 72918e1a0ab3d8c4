// Per-vertex curvature from mesh: the welded scene, the values of a sphere
// and a plane under both output rules, and a whole bake over a plate whose
// halves only meet once welded.

#include "DetailKernelTestUtil.h"
#include "RayEngineTestUtil.h"

#include "baking/detail/BackendRunner.h"
#include "baking/detail/CurvatureKernel.h"
#include "baking/detail/CurvatureMesh.h"
#include "baking/detail/RaytracerEmbree.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace DetailKernelTest;
using namespace RayEngineTest;

namespace {

// A latitude-longitude sphere with a doubled seam column and rows of
// coincident pole vertices, normals outwards.
std::shared_ptr<GrabbedMesh> sphere(float radius, int slices, int stacks)
{
    const double pi = 3.14159265358979323846;
    std::vector<float> p, n;
    std::vector<uint32_t> idx;
    for (int i = 0; i <= stacks; ++i)
        for (int j = 0; j <= slices; ++j) {
            const double theta = pi * i / stacks, phi = 2.0 * pi * (j % slices) / slices;
            const double st = (i == 0 || i == stacks) ? 0.0 : std::sin(theta);
            const double ct = i == 0 ? 1.0 : i == stacks ? -1.0 : std::cos(theta);
            const float v[3] = {float(st * std::cos(phi)), float(st * std::sin(phi)), float(ct)};
            for (float c : v) {
                p.push_back(radius * c);
                n.push_back(c);
            }
        }
    for (int r = 0; r < stacks; ++r)
        for (int c = 0; c < slices; ++c) {
            const uint32_t a = r * (slices + 1) + c, b = a + 1, d = a + slices + 1, e = d + 1;
            idx.insert(idx.end(), {a, d, e, a, e, b});
        }
    return meshOf(p, n, idx);
}

// A flat grid in z = 0 made of two halves that share no vertex.
std::shared_ptr<GrabbedMesh> splitPlate()
{
    std::vector<float> p, n;
    std::vector<uint32_t> idx;
    for (int half = 0; half < 2; ++half) {
        const uint32_t base = uint32_t(p.size() / 3);
        for (int y = 0; y <= 4; ++y)
            for (int x = 0; x <= 2; ++x) {
                p.insert(p.end(), {float(half * 2 + x), float(y), 0.0f});
                n.insert(n.end(), {0.0f, 0.0f, 1.0f});
            }
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 2; ++x) {
                const uint32_t a = base + y * 3 + x, b = a + 1, d = a + 3, e = d + 1;
                idx.insert(idx.end(), {a, b, e, a, e, d});
            }
    }
    return meshOf(p, n, idx);
}

float valueAt(const EmbreeScene& scene, const CurvatureParams& params, unsigned triangle)
{
    DetailBakeJob job;
    job.kind = BakeJobKind::Curvature;
    job.params = &params;
    CurvatureKernel kernel(job, scene);
    return accumulate(kernel, hitAt(scene, triangle, 0.3f, 0.3f))[0];
}

} // namespace

TEST(DetailCurvatureKernel, WeldingMergesSeamsAndKeepsTriangles)
{
    auto grabbed = sphere(2.0f, 16, 8);
    grabbed->ids[5] = 77;
    grabbed->culling[6] = 1;
    auto welded = weldGrabbedMesh(*grabbed);
    EXPECT_EQ(grabbed->vertexCount, 17u * 9u);
    EXPECT_EQ(welded->vertexCount, 16u * 7u + 2u);
    EXPECT_EQ(welded->triangleCount, grabbed->triangleCount);
    EXPECT_EQ(welded->ids[5], 77u);
    EXPECT_EQ(welded->culling[6], 1u);
    for (unsigned t = 0; t < welded->triangleCount * 3; ++t) {
        const float* a = &welded->positions[size_t(welded->indices[t]) * 4];
        const float* b = &grabbed->positions[size_t(grabbed->indices[t]) * 4];
        EXPECT_EQ(a[0], b[0]);
        EXPECT_EQ(a[1], b[1]);
        EXPECT_EQ(a[2], b[2]);
    }
}

TEST(DetailCurvatureKernel, SphereIsConstantAndScaledByItsSize)
{
    for (float radius : {0.5f, 40.0f}) {
        EmbreeScene scene(weldGrabbedMesh(*sphere(radius, 32, 16)));
        // 200 over the diameter: 1 / (radius * 100 / radius), whatever the radius.
        const float c = 0.01f;
        CurvatureParams linear;
        linear.softSaturate = false;
        linear.intensity = 20.0f;
        CurvatureParams soft;
        soft.softSaturate = true;
        for (unsigned t = 64; t < scene.mesh().triangleCount - 64; t += 37) {
            EXPECT_NEAR(valueAt(scene, linear, t), c * 20.0f + 0.5f, 0.012f) << "radius " << radius;
            EXPECT_NEAR(valueAt(scene, soft, t), std::tanh(c), 0.0005f) << "radius " << radius;
        }
        EXPECT_EQ(scene.vertexCurvature().size(), scene.mesh().vertexCount);
    }
}

TEST(DetailCurvatureKernel, PlaneIsHalfOrZero)
{
    EmbreeScene scene(weldGrabbedMesh(*splitPlate()));
    CurvatureParams linear;
    linear.softSaturate = false;
    linear.intensity = 5.0f;
    CurvatureParams soft;
    soft.softSaturate = true;
    for (unsigned t = 0; t < scene.mesh().triangleCount; ++t) {
        EXPECT_FLOAT_EQ(valueAt(scene, linear, t), 0.5f);
        EXPECT_FLOAT_EQ(valueAt(scene, soft, t), 0.0f);
    }
}

namespace {

Entity::SPtr entityOf(const GrabbedMesh& m, const QString& name)
{
    std::vector<Eigen::Vector3f> p, n;
    for (unsigned i = 0; i < m.vertexCount; ++i) {
        p.emplace_back(m.positions[i * 4], m.positions[i * 4 + 1], m.positions[i * 4 + 2]);
        n.emplace_back(m.normals[i * 3], m.normals[i * 3 + 1], m.normals[i * 3 + 2]);
    }
    std::vector<SubMesh> subs;
    subs.emplace_back(makeBuffer(std::vector<uint32_t>(m.indices.data(), m.indices.data() + m.triangleCount * 3)),
                      PrimitiveType::Triangles, 3, nullptr);
    auto data = std::make_shared<Mesh::Data>(makeBuffer(std::move(p)), makeBuffer(std::move(n)), nullptr, nullptr,
                                             nullptr, std::vector<Vec2BufferUPtr>(), std::move(subs));
    return std::make_shared<Entity>(name, std::make_unique<LocationComponent>(),
                                    std::make_unique<MeshDisplayComponent>(std::make_shared<Mesh>(data, name)));
}

class CurvatureBakeTest : public ::testing::Test
{
protected:
    void TearDown() override
    {
        setRasterizerGLFactory(nullptr);
        releaseBackends();
    }
};

} // namespace

TEST_F(CurvatureBakeTest, PlateBakesToHalfOverTheWeldedScene)
{
    ScopedKernel curvature(BakeJobKind::Curvature, &makeStripJob<CurvatureKernel>);
    ScopedKernel height(BakeJobKind::Height, &makeStripJob<DistanceKernel>);
    setRasterizerGLFactory([] {
        auto raster = std::make_unique<GridRasterizer>();
        raster->z = 0.5f;
        raster->step = 0.1f;
        return std::unique_ptr<RasterizerBase>(std::move(raster));
    });
    RecordingContext context;
    CurvatureParams params;
    params.softSaturate = false;
    params.intensity = 3.0f;
    DetailBakeJob job;
    job.kind = BakeJobKind::Curvature;
    job.useGpu = false;
    job.context = &context;
    job.highScene = sceneOf({entityOf(*splitPlate(), "plate")});
    job.width = job.height = 32;
    job.maxHeight = job.maxDepth = 1.0f;
    job.params = &params;

    BakeResult result;
    runDetailBake(job, result);
    ASSERT_EQ(result.errorCode, ErrorCode::NoError);
    ASSERT_TRUE(result.surface);
    for (unsigned y = 0; y < 32; ++y)
        for (unsigned x = 0; x < 32; ++x) {
            const float* px = result.surface->pixel<float>(x, y);
            ASSERT_FLOAT_EQ(px[0], 0.5f) << x << ", " << y;
            ASSERT_EQ(px[3], 1.0f);
        }
    EXPECT_FLOAT_EQ(result.rangeMin, 0.5f);
    EXPECT_FLOAT_EQ(result.rangeMax, 0.5f);
    const EmbreeScene* scene = embreeBackend().scene();
    ASSERT_TRUE(scene);
    EXPECT_EQ(scene->mesh().vertexCount, 25u); // 30 vertices, the middle column once
    EXPECT_EQ(scene->vertexCurvature().size(), 25u);

    // A second curvature bake keeps the scene; another kind must not trace
    // the welded mesh.
    const unsigned builds = embreeBackend().sceneBuildCount();
    BakeResult again;
    runDetailBake(job, again);
    EXPECT_EQ(embreeBackend().sceneBuildCount(), builds);
    job.kind = BakeJobKind::Height;
    job.params = nullptr;
    BakeResult other;
    runDetailBake(job, other);
    EXPECT_EQ(other.errorCode, ErrorCode::NoError);
    EXPECT_EQ(embreeBackend().sceneBuildCount(), builds + 1);
    EXPECT_EQ(embreeBackend().scene()->mesh().vertexCount, 30u);
}
