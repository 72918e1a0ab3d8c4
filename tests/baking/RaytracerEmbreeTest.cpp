#include "RayEngineTestUtil.h"

#include "baking/detail/BackendRunner.h"
#include "baking/detail/MeshNameId.h"
#include "baking/detail/RaytracerEmbree.h"
#include "baking/detail/SecondaryRayParams.h"
#include "program/ThreadLimit.h"

#include <gtest/gtest.h>

using namespace RayEngineTest;

namespace {

DetailBakeJob jobOver(const SceneSPtr& high, unsigned size, unsigned subSamples, AbstractBakingContext* context)
{
    DetailBakeJob job;
    job.name = "Height from mesh";
    job.context = context;
    job.highScene = high;
    job.lowScene = high;
    job.width = job.height = size;
    job.subSamples = subSamples;
    job.maxHeight = 1.0f;
    job.maxDepth = 1.0f;
    job.kind = BakeJobKind::Height;
    return job;
}

// Runs the Embree tracer over the grid rasterizer, outside the runner.
BakeResult trace(RaytracerEmbree& tracer, GridRasterizer& raster, const DetailBakeJob& job)
{
    BakeResult result;
    const BakeTiling tiling = computeTiling(job);
    result.surface.reset(new Ond::Surfaces::Surface(
        Ond::Surfaces::SurfaceDesc(job.width, job.height, Ond::Surfaces::PixelFormat::RGBA32F)));
    fill(*result.surface, Eigen::Vector4f(-7, -7, -7, -7));
    tracer.init(job, tiling, result);
    raster.rasterize(job, tiling, result, tracer);
    tracer.finish(job, tiling, result);
    return result;
}

const float* texel(const BakeResult& r, unsigned x, unsigned y)
{
    return r.surface->pixel<float>(x, y);
}

// The hit point rebuilt from the triangle's vertices and barycentrics.
struct InterpolatedPositionKernel
{
    static constexpr TexelClose close = TexelClose::Color;
    static constexpr bool reduces = false;
    InterpolatedPositionKernel(const DetailBakeJob&, const EmbreeScene&) {}
    void hit(const PrimaryHit& h, float* acc) const
    {
        const GrabbedMesh& m = h.scene->mesh();
        const float w = 1.0f - h.u - h.v;
        for (int c = 0; c < 3; ++c)
            acc[c] += w * m.positions[size_t(m.indices[h.primID * 3 + 0]) * 4 + c]
                      + h.u * m.positions[size_t(m.indices[h.primID * 3 + 1]) * 4 + c]
                      + h.v * m.positions[size_t(m.indices[h.primID * 3 + 2]) * 4 + c];
    }
};

struct TriangleIdKernel
{
    static constexpr TexelClose close = TexelClose::Color;
    static constexpr bool reduces = false;
    TriangleIdKernel(const DetailBakeJob&, const EmbreeScene&) {}
    void hit(const PrimaryHit& h, float* acc) const { acc[0] += float(h.primID) + 1.0f; }
};

} // namespace

TEST(RaytracerEmbreeTest, HitsGiveTriangleIdsAndBarycentricsOfTheGrabbedMesh)
{
    ScopedKernel position(BakeJobKind::Position, &makeStripJob<InterpolatedPositionKernel>);
    ScopedKernel ids(BakeJobKind::Height, &makeStripJob<TriangleIdKernel>);
    // Two parts: the second plate's triangles follow the first's.
    SceneSPtr high = sceneOf({plate("a", -5.0f, 1.0f), plate("b", 0.0f, 0.2f, true)});
    DetailBakeJob job = jobOver(high, 16, 1, nullptr);
    job.maxDepth = 10.0f;
    job.kind = BakeJobKind::Position;
    GridRasterizer raster;
    raster.z = 0.5f;
    raster.step = 0.021f;
    RaytracerEmbree tracer;
    BakeResult result = trace(tracer, raster, job);
    for (unsigned y = 0; y < 16; ++y)
        for (unsigned x = 0; x < 16; ++x) {
            const float* t = texel(result, x, y);
            ASSERT_NEAR(t[0], float(x) * 0.021f, 1e-5f) << x << "," << y;
            ASSERT_NEAR(t[1], float(y) * 0.021f, 1e-5f) << x << "," << y;
            ASSERT_NEAR(t[2], x > 9 || y > 9 ? -5.0f : 0.0f, 1e-5f);
        }
    job.kind = BakeJobKind::Height;
    result = trace(tracer, raster, job);
    // primID + 1: part a's triangles are 0 and 1, part b's 2 and 3; the
    // first of each lies below the diagonal x = y.
    EXPECT_FLOAT_EQ(texel(result, 15, 12)[0], 1.0f);
    EXPECT_FLOAT_EQ(texel(result, 12, 15)[0], 2.0f);
    EXPECT_FLOAT_EQ(texel(result, 8, 3)[0], 3.0f);
    EXPECT_FLOAT_EQ(texel(result, 3, 8)[0], 4.0f);
}

TEST(RaytracerEmbreeTest, EverySampleIsTracedOnceAcrossTilesSlotsAndStrips)
{
    ScopedKernel kernel(BakeJobKind::Height, &makeStripJob<DistanceKernel>);
    RecordingContext context;
    // 64 texels at 4 by 4 samples: 16 raster tiles of 64 by 64 samples, more
    // than the four slots, four strips each.
    DetailBakeJob job = jobOver(sceneOf({plate("p_high", 0.0f, 100.0f)}), 64, 4, &context);
    GridRasterizer raster;
    raster.z = 0.25f;
    RaytracerEmbree tracer;
    const BakeResult result = trace(tracer, raster, job);

    EXPECT_EQ(tracer.stripRows(), (std::vector<unsigned>{0, 16, 32, 48}));
    for (unsigned y = 0; y < 64; ++y) {
        for (unsigned x = 0; x < 64; ++x) {
            const float* t = texel(result, x, y);
            ASSERT_NEAR(t[0], 1.25f, 1e-5f) << x << "," << y;
            ASSERT_FLOAT_EQ(t[1], float(x * 4) + 1.5f) << x << "," << y;
            ASSERT_FLOAT_EQ(t[2], float(y * 4) + 1.5f) << x << "," << y;
            ASSERT_EQ(t[3], 1.0f);
        }
    }
    EXPECT_NEAR(result.rangeMin, 1.25f, 1e-5f);
    EXPECT_NEAR(result.rangeMax, 1.25f, 1e-5f);
    // One output block; progress reaches the whole.
    ASSERT_EQ(context.outputs.size(), 1u);
    EXPECT_EQ(context.outputs[0].x, 0);
    EXPECT_EQ(context.outputs[0].y, 0);
    EXPECT_EQ(context.outputs[0].width, 64u);
    ASSERT_FALSE(context.progress.empty());
    EXPECT_DOUBLE_EQ(context.progress.back(), 1.0);
}

TEST(RaytracerEmbreeTest, MaskCloseCountsMissesAndUncoveredSamples)
{
    ScopedKernel kernel(BakeJobKind::Mask, &makeStripJob<CoverageKernel>);
    // A tile under 16 rows high is one strip.
    DetailBakeJob job = jobOver(sceneOf({plate("p", 0.0f, 0.045f)}), 8, 2, nullptr);
    job.kind = BakeJobKind::Mask;
    GridRasterizer raster;
    // Samples at 0.01 steps: x < 5 lies on the plate (half-size 0.045).
    raster.covered = [](unsigned x, unsigned y) { return !(x == 0 && y == 0); };
    RaytracerEmbree tracer;
    const BakeResult result = trace(tracer, raster, job);
    EXPECT_EQ(tracer.stripRows(), (std::vector<unsigned>{0}));
    EXPECT_FLOAT_EQ(texel(result, 0, 0)[0], 0.75f);
    EXPECT_FLOAT_EQ(texel(result, 1, 1)[0], 1.0f);
    EXPECT_FLOAT_EQ(texel(result, 2, 1)[0], 0.5f);
    EXPECT_FLOAT_EQ(texel(result, 2, 2)[0], 0.25f);
    EXPECT_FLOAT_EQ(texel(result, 7, 7)[0], 0.0f);
    EXPECT_FLOAT_EQ(texel(result, 7, 7)[3], 1.0f);
}

TEST(RaytracerEmbreeTest, ColourAndDirectionClosesOfMissedTexelsAreZero)
{
    ScopedKernel height(BakeJobKind::Height, &makeStripJob<DistanceKernel>);
    ScopedKernel normal(BakeJobKind::Normal, &makeStripJob<DirectionKernel>);
    DetailBakeJob job = jobOver(sceneOf({plate("p", 0.0f, 0.035f)}), 8, 1, nullptr);
    GridRasterizer raster;
    RaytracerEmbree tracer;
    BakeResult result = trace(tracer, raster, job);
    EXPECT_FLOAT_EQ(texel(result, 7, 7)[3], 0.0f);
    EXPECT_FLOAT_EQ(texel(result, 7, 7)[0], 0.0f);
    // No hit enters the range as 0.
    EXPECT_FLOAT_EQ(result.rangeMin, 0.0f);
    EXPECT_NEAR(result.rangeMax, 1.0f, 1e-5f);

    job.kind = BakeJobKind::Normal;
    result = trace(tracer, raster, job);
    const float* hit = texel(result, 1, 1);
    EXPECT_FLOAT_EQ(hit[0], 0.5f);
    EXPECT_FLOAT_EQ(hit[2], 0.0f);
    EXPECT_FLOAT_EQ(hit[3], 1.0f);
    for (int c = 0; c < 4; ++c)
        EXPECT_FLOAT_EQ(texel(result, 6, 6)[c], 0.0f);
}

TEST(RaytracerEmbreeTest, ReachLimitsAndBackFaces)
{
    ScopedKernel kernel(BakeJobKind::Height, &makeStripJob<DistanceKernel>);
    RaytracerEmbree tracer;
    GridRasterizer raster;
    // A plate written clockwise: the winding fix makes its top the front.
    DetailBakeJob job = jobOver(sceneOf({plate("p", 0.0f, 100.0f, true)}), 8, 1, nullptr);

    raster.z = 2.5f;  // the plate is 3.5 along the ray: beyond 1 + 1
    EXPECT_FLOAT_EQ(texel(trace(tracer, raster, job), 3, 3)[3], 0.0f);
    raster.z = -0.9f;  // behind the seed, within the rear reach
    EXPECT_NEAR(texel(trace(tracer, raster, job), 3, 3)[0], 0.1f, 1e-5f);

    // Seen from below the plate is a back face.
    raster.z = 0.5f;
    raster.direction[2] = -1.0f;
    EXPECT_NEAR(texel(trace(tracer, raster, job), 3, 3)[0], 0.5f, 1e-5f);
    job.flags = BakeJobFlags::IgnoreBackface;
    EXPECT_FLOAT_EQ(texel(trace(tracer, raster, job), 3, 3)[3], 0.0f);
    raster.direction[2] = 1.0f;
    EXPECT_NEAR(texel(trace(tracer, raster, job), 3, 3)[0], 1.5f, 1e-5f);
}

TEST(RaytracerEmbreeTest, IdFilterLetsRaysSeeOnlyTheirOwnMesh)
{
    ScopedKernel kernel(BakeJobKind::Height, &makeStripJob<DistanceKernel>);
    // "near" sits above "far"; a ray with the id of "far" passes through.
    SceneSPtr high = sceneOf({plate("near_high", 0.5f, 100.0f), plate("far_high_ignorebf", 0.0f, 100.0f)});
    DetailBakeJob job = jobOver(high, 8, 1, nullptr);
    job.flags = BakeJobFlags::FilterPrimaryById;
    GridRasterizer raster;
    raster.id = [](unsigned x, unsigned) { return x < 4 ? meshNameId("far_low") : meshNameId("nothing"); };
    RaytracerEmbree tracer;
    BakeResult result = trace(tracer, raster, job);
    EXPECT_NEAR(texel(result, 1, 1)[0], 1.0f, 1e-5f);
    EXPECT_FLOAT_EQ(texel(result, 5, 1)[3], 0.0f);

    // Without the flag the nearest wins.
    job.flags = 0;
    result = trace(tracer, raster, job);
    EXPECT_NEAR(texel(result, 1, 1)[0], 0.5f, 1e-5f);
}

TEST(RaytracerEmbreeTest, TriangleCullingModeCullsOnlyMarkedParts)
{
    SceneSPtr high = sceneOf({plate("a_high", 1.0f), plate("b_high_ignorebf", 2.0f)});
    DetailBakeJob job = jobOver(high, 8, 1, nullptr);
    auto mesh = std::shared_ptr<GrabbedMesh>(grabMesh(*high, 0, BakeJobKind::AmbientOcclusion, 4, 0).release());
    EmbreeScene scene(mesh);
    auto cast = [&](float z, float dz, uint32_t cull) {
        const float o[4] = {0.0f, 0.0f, z, 1.0f};
        const float d[4] = {0.0f, 0.0f, -dz, 0.0f};
        RTCRayHit rh;
        setPrimaryRay(rh, o, d, 0.0f, 100.0f, 0);
        HitContext context(cull, false);
        scene.intersect(context, rh);
        return rh.ray.tfar == 100.0f ? -1.0f : rh.ray.tfar;
    };
    // Upwards from below: both plates are back faces.
    EXPECT_FLOAT_EQ(cast(0.0f, 1.0f, HitContext::CullNone), 1.0f);
    EXPECT_FLOAT_EQ(cast(0.0f, 1.0f, HitContext::CullAll), -1.0f);
    EXPECT_FLOAT_EQ(cast(1.5f, 1.0f, HitContext::CullByTriangle), -1.0f);
    EXPECT_FLOAT_EQ(cast(0.0f, 1.0f, HitContext::CullByTriangle), 1.0f);
    // Downwards: front faces pass every mode.
    EXPECT_FLOAT_EQ(cast(3.0f, -1.0f, HitContext::CullByTriangle), 1.0f);
}

TEST(RaytracerEmbreeTest, SceneIsKeptForTheSameKeyAndRebuiltForAnother)
{
    ScopedKernel kernel(BakeJobKind::Height, &makeStripJob<DistanceKernel>);
    ScopedKernel normal(BakeJobKind::Normal, &makeStripJob<DirectionKernel>);
    SceneSPtr first = sceneOf({plate("p", 0.0f)});
    SceneSPtr second = sceneOf({plate("p", 0.5f)});
    RaytracerEmbree tracer;
    GridRasterizer raster;
    DetailBakeJob job = jobOver(first, 8, 1, nullptr);
    trace(tracer, raster, job);
    const EmbreeScene* built = tracer.scene();
    job.kind = BakeJobKind::Normal;  // the kind alone does not change the scene
    job.subSamples = 2;
    trace(tracer, raster, job);
    EXPECT_EQ(tracer.sceneBuildCount(), 1u);
    EXPECT_EQ(tracer.scene(), built);

    job.kind = BakeJobKind::Height;
    job.flags = BakeJobFlags::IgnoreBackface;
    trace(tracer, raster, job);
    EXPECT_EQ(tracer.sceneBuildCount(), 2u);
    job.highScene = second;
    const BakeResult result = trace(tracer, raster, job);
    EXPECT_EQ(tracer.sceneBuildCount(), 3u);
    EXPECT_NEAR(texel(result, 2, 2)[0], 0.5f, 1e-5f);
}

TEST(RaytracerEmbreeTest, CancelledBakeStopsTakingTiles)
{
    ScopedKernel kernel(BakeJobKind::Height, &makeStripJob<DistanceKernel>);
    RecordingContext context;
    context.cancelled = true;
    DetailBakeJob job = jobOver(sceneOf({plate("p", 0.0f, 100.0f)}), 64, 4, &context);
    GridRasterizer raster;
    RaytracerEmbree tracer;
    const BakeResult result = trace(tracer, raster, job);
    EXPECT_TRUE(raster.order.empty());
    EXPECT_FLOAT_EQ(texel(result, 0, 0)[0], -7.0f);
    EXPECT_TRUE(context.outputs.empty());
}

TEST(RaytracerEmbreeTest, KindWithoutKernelIsAnInternalError)
{
    ScopedKernel none(BakeJobKind::Curvature1, nullptr);
    DetailBakeJob job = jobOver(sceneOf({plate("p")}), 8, 1, nullptr);
    job.kind = BakeJobKind::Curvature1;
    RaytracerEmbree tracer;
    BakeResult result;
    result.surface.reset(new Ond::Surfaces::Surface(
        Ond::Surfaces::SurfaceDesc(8, 8, Ond::Surfaces::PixelFormat::RGBA32F)));
    try {
        tracer.init(job, computeTiling(job), result);
        ADD_FAILURE();
    } catch (ErrorCode code) {
        EXPECT_EQ(code, ErrorCode::InternalError);
    }
}

TEST(RaytracerEmbreeTest, TreeQualityFollowsTheRayBudget)
{
    DetailBakeJob normal;
    normal.kind = BakeJobKind::Normal;
    normal.width = normal.height = 2048;
    normal.subSamples = 1;
    EXPECT_DOUBLE_EQ(rayBudget(normal), 4194304.0);
    normal.subSamples = 2; // samples per side
    EXPECT_DOUBLE_EQ(rayBudget(normal), 4.0 * 4194304.0);
    AOParams ao;
    ao.sampleCount = 64;
    DetailBakeJob occlusion = normal;
    occlusion.subSamples = 1;
    occlusion.kind = BakeJobKind::AmbientOcclusion;
    occlusion.params = &ao;
    EXPECT_DOUBLE_EQ(rayBudget(occlusion), 65.0 * 4194304.0);

    // A normal map from a 16 M-triangle sculpt builds quickly; occlusion,
    // or a mesh with fewer triangles than rays, gets the better tree.
    EXPECT_EQ(buildQualityFor(rayBudget(normal) / 4.0, 16000000), RTC_BUILD_QUALITY_LOW);
    EXPECT_EQ(buildQualityFor(rayBudget(occlusion), 16000000), RTC_BUILD_QUALITY_MEDIUM);
    EXPECT_EQ(buildQualityFor(rayBudget(normal), 1000000), RTC_BUILD_QUALITY_MEDIUM);

    // Through the tracer: 20 plates, 40 triangles, under 16 or 4096 rays.
    ScopedKernel kernel(BakeJobKind::Height, &makeStripJob<DistanceKernel>);
    std::vector<Entity::SPtr> plates;
    for (int i = 0; i < 20; ++i)
        plates.push_back(plate(QStringLiteral("p%1").arg(i), -0.05f * float(i), 100.0f));
    const SceneSPtr high = sceneOf(plates);
    GridRasterizer raster;
    raster.z = 0.25f;
    RaytracerEmbree few;
    const BakeResult quick = trace(few, raster, jobOver(high, 4, 1, nullptr));
    ASSERT_TRUE(few.scene());
    EXPECT_EQ(few.scene()->buildQuality(), RTC_BUILD_QUALITY_LOW);
    EXPECT_TRUE(rtcGetSceneFlags(few.scene()->handle()) & RTC_SCENE_FLAG_COMPACT);
    RaytracerEmbree many;
    const BakeResult better = trace(many, raster, jobOver(high, 64, 1, nullptr));
    EXPECT_EQ(many.scene()->buildQuality(), RTC_BUILD_QUALITY_MEDIUM);
    EXPECT_FALSE(rtcGetSceneFlags(many.scene()->handle()) & RTC_SCENE_FLAG_COMPACT);
    EXPECT_TRUE(rtcGetSceneFlags(many.scene()->handle()) & RTC_SCENE_FLAG_ROBUST);
    // The top plate at the same distance, whatever the tree.
    for (unsigned y = 0; y < 4; ++y)
        for (unsigned x = 0; x < 4; ++x) {
            EXPECT_EQ(texel(quick, x, y)[0], texel(better, x * 16, y * 16)[0]) << x << "," << y;
            EXPECT_EQ(texel(quick, x, y)[3], 1.0f);
        }
}

TEST(RaytracerEmbreeTest, DeviceTakesTheThreadLimit)
{
    Ond::Core::setThreadLimit(3);
    EXPECT_EQ(EmbreeScene::deviceConfig(), "threads=3");
    Ond::Core::setThreadLimit(0);
    EXPECT_EQ(EmbreeScene::deviceConfig(), "");
}
