#include "SecondaryRayTestUtil.h"

#include "baking/detail/AmbientOcclusionKernel.h"
#include "baking/detail/BentNormalsKernel.h"
#include "baking/detail/Curvature1Kernel.h"
#include "baking/detail/StripJob.h"
#include "baking/detail/ThicknessKernel.h"

#include <gtest/gtest.h>

using namespace SecondaryRayTest;

namespace {

const Eigen::Vector3f up(0, 0, 1), down(0, 0, -1);

// A ceiling over the seeds at height h, facing `n`, far wider than any reach.
Entity::SPtr ceiling(const QString& name, float h, const Eigen::Vector3f& n)
{
    return quad(name, {-100, -100, h}, {100, -100, h}, {100, 100, h}, {-100, 100, h}, n);
}

AOParams aoParams(float maxDistance, int samples = 64)
{
    AOParams p;
    p.distribution = 1;
    p.spreadAngle = 180.0f;
    p.sampleCount = samples;
    p.minDistance = 1e-4f;
    p.maxDistance = maxDistance;
    return p;
}

BakeResult bake(const SceneSPtr& high, BakeJobKind kind, const void* params, float seedZ = 0.0f,
                uint32_t flags = 0)
{
    DetailBakeJob job = jobOf(high, kind, params);
    job.flags = flags;
    GridRasterizer raster;
    raster.z = seedZ;
    return traceGrid(job, raster);
}

class SecondaryRayKernelsTest : public ::testing::Test
{
protected:
    ScopedKernel ao{BakeJobKind::AmbientOcclusion, &makeStripJob<AOTraits>};
    ScopedKernel bent{BakeJobKind::BentNormals, &makeStripJob<BentNormalsTraits>};
    ScopedKernel thickness{BakeJobKind::Thickness, &makeStripJob<ThicknessTraits>};
    ScopedKernel curvature{BakeJobKind::Curvature1, &makeStripJob<Curvature1Traits>};
};

} // namespace

TEST_F(SecondaryRayKernelsTest, OcclusionIsOneOverAnOpenPlaneAndZeroInsideAClosedRoom)
{
    const AOParams p = aoParams(10.0f);
    const auto open = redRange(bake(sceneOf({plate("floor")}), BakeJobKind::AmbientOcclusion, &p));
    EXPECT_FLOAT_EQ(open.first, 1.0f);
    EXPECT_FLOAT_EQ(open.second, 1.0f);

    const auto closed = redRange(bake(sceneOf(room(1.0f)), BakeJobKind::AmbientOcclusion, &p, -1.0f));
    EXPECT_FLOAT_EQ(closed.first, 0.0f);
    EXPECT_FLOAT_EQ(closed.second, 0.0f);
    // The occluders are out of reach of short rays.
    const AOParams shortRays = aoParams(0.5f);
    EXPECT_FLOAT_EQ(redRange(bake(sceneOf(room(1.0f)), BakeJobKind::AmbientOcclusion, &shortRays, -1.0f)).first,
                    1.0f);
}

TEST_F(SecondaryRayKernelsTest, AttenuationByOccluderDistance)
{
    // Rays straight up meet a ceiling at 0.3 with a reach of 2.
    SceneSPtr high = sceneOf({plate("floor"), ceiling("top", 0.3f, down)});
    AOParams p = aoParams(2.0f, 16);
    p.spreadAngle = 0.0f;
    const float expected[3] = {0.0f, 0.0225f, 0.15f};  // none, (t/D)^2, t/D
    for (int mode = 0; mode < 3; ++mode) {
        p.attenuation = mode;
        const auto r = redRange(bake(high, BakeJobKind::AmbientOcclusion, &p));
        EXPECT_NEAR(r.first, expected[mode], 1e-5f) << mode;
        EXPECT_NEAR(r.second, expected[mode], 1e-5f) << mode;
    }
}

TEST_F(SecondaryRayKernelsTest, CullModesAndMeshIdFilterOfSecondaryRays)
{
    // A ceiling that shows its back to the floor, in a mesh of its own.
    SceneSPtr high = sceneOf({plate("floor"), ceiling("top", 0.3f, up)});
    AOParams p = aoParams(100.0f, 16);
    p.cullMode = HitContext::CullNone;
    EXPECT_FLOAT_EQ(redRange(bake(high, BakeJobKind::AmbientOcclusion, &p)).second, 0.0f);
    p.cullMode = HitContext::CullAll;
    EXPECT_FLOAT_EQ(redRange(bake(high, BakeJobKind::AmbientOcclusion, &p)).first, 1.0f);
    // Facing the floor, it occludes whatever the culling, unless the rays
    // only see the mesh their texel lies on.
    SceneSPtr facing = sceneOf({plate("floor"), ceiling("top", 0.3f, down)});
    EXPECT_FLOAT_EQ(redRange(bake(facing, BakeJobKind::AmbientOcclusion, &p)).second, 0.0f);
    p.cullMode = HitContext::CullNone;
    EXPECT_FLOAT_EQ(
        redRange(bake(facing, BakeJobKind::AmbientOcclusion, &p, 0.0f, BakeJobFlags::FilterSecondaryById)).first,
        1.0f);
}

TEST_F(SecondaryRayKernelsTest, GroundPlaneOccludesOnlyRaysGoingDownWithinReach)
{
    // Rays over a floor facing +z go up and down in y alike.
    SceneSPtr high = sceneOf({plate("floor")});
    AOParams p = aoParams(100.0f, 256);
    p.groundPlane = true;
    p.groundY = -1.0f;
    const auto half = redRange(bake(high, BakeJobKind::AmbientOcclusion, &p));
    EXPECT_GT(half.first, 0.35f);
    EXPECT_LT(half.second, 0.65f);
    // A plane beyond reach occludes nothing.
    p.maxDistance = 0.5f;
    EXPECT_FLOAT_EQ(redRange(bake(high, BakeJobKind::AmbientOcclusion, &p)).first, 1.0f);
    // A floor facing up in y: every ray rises, none meets the plane.
    SceneSPtr level =
        sceneOf({quad("level", {-10, 0, -10}, {10, 0, -10}, {10, 0, 10}, {-10, 0, 10}, Eigen::Vector3f(0, 1, 0))});
    p.maxDistance = 100.0f;
    DetailBakeJob job = jobOf(level, BakeJobKind::AmbientOcclusion, &p);
    GridRasterizer raster;
    raster.direction[1] = 1.0f;
    raster.direction[2] = 0.0f;
    raster.step = 0.0f;
    EXPECT_FLOAT_EQ(redRange(traceGrid(job, raster)).first, 1.0f);
}

TEST_F(SecondaryRayKernelsTest, BentNormalLeansAwayFromAWallAndKeepsTheNormalWhenEnclosed)
{
    // A wall at x = 0.2 facing the seeds (which lie at x in [0, 0.07]).
    SceneSPtr high = sceneOf(
        {plate("floor"), quad("wall", {0.2f, -10, 0}, {0.2f, 10, 0}, {0.2f, 10, 10}, {0.2f, -10, 10}, {-1, 0, 0})});
    BentNormalsParams p;
    p.sampleCount = 128;
    p.minDistance = 1e-4f;
    p.maxDistance = 10.0f;
    const BakeResult r = bake(high, BakeJobKind::BentNormals, &p);
    for (unsigned y = 0; y < 8; ++y)
        for (unsigned x = 0; x < 8; ++x) {
            const float* t = r.surface->pixel<float>(x, y);
            EXPECT_LT(t[0], 0.45f) << "leans to -x";
            EXPECT_NEAR(t[1], 0.5f, 0.05f);
            EXPECT_GT(t[2], 0.8f);
            EXPECT_FLOAT_EQ(t[3], 1.0f);
        }
    const BakeResult enclosed = bake(sceneOf(room(1.0f)), BakeJobKind::BentNormals, &p, -1.0f);
    const float* t = enclosed.surface->pixel<float>(3, 3);
    EXPECT_FLOAT_EQ(t[0], 0.5f);
    EXPECT_FLOAT_EQ(t[1], 0.5f);
    EXPECT_FLOAT_EQ(t[2], 1.0f);
}

TEST_F(SecondaryRayKernelsTest, ThicknessOfASlab)
{
    // A slab 0.25 thick: top at z = 0, bottom facing down at z = -0.25.
    SceneSPtr high = sceneOf({plate("top"), ceiling("bottom", -0.25f, down)});
    ThicknessParams p;
    p.distribution = 0;
    p.spreadAngle = 0.0f;
    p.sampleCount = 8;
    p.minDistance = 1e-4f;
    p.maxDistance = 1.0f;
    BakeResult r = bake(high, BakeJobKind::Thickness, &p);
    EXPECT_NEAR(redRange(r).first, 0.25f, 1e-5f);
    EXPECT_NEAR(redRange(r).second, 0.25f, 1e-5f);
    // Slanted rays travel further through the slab: thicker, but not open.
    p.spreadAngle = 120.0f;
    r = bake(high, BakeJobKind::Thickness, &p);
    EXPECT_GT(redRange(r).first, 0.3f);
    EXPECT_LT(redRange(r).second, 0.6f);
    // Nothing within reach: 1.
    p.maxDistance = 0.2f;
    EXPECT_FLOAT_EQ(redRange(bake(high, BakeJobKind::Thickness, &p)).first, 1.0f);
}

TEST_F(SecondaryRayKernelsTest, CurvatureOfSpheresAndPlanes)
{
    Curvature1Params p;
    p.spreadAngle = 90.0f;
    p.sampleCount = 64;
    p.radius = 0.1f;
    // Seeds above the top of the sphere of radius 2, rays going down.
    const BakeResult convex = bake(sceneOf({sphere("ball", 2.0f, 256, 128)}), BakeJobKind::Curvature1, &p, 2.0f);
    const auto c = redRange(convex);
    EXPECT_NEAR(c.first, 0.5f, 0.025f);
    EXPECT_NEAR(c.second, 0.5f, 0.025f);
    // From inside, normals in: concave, the same magnitude.
    DetailBakeJob job = jobOf(sceneOf({sphere("bowl", 2.0f, 256, 128, true)}), BakeJobKind::Curvature1, &p);
    job.maxDepth = 3.0f;
    GridRasterizer inside;
    inside.direction[2] = -1.0f;
    const auto k = redRange(traceGrid(job, inside));
    EXPECT_NEAR(k.first, -0.5f, 0.025f);
    EXPECT_NEAR(k.second, -0.5f, 0.025f);
    // A plane has none.
    const auto flat = redRange(bake(sceneOf({plate("floor")}), BakeJobKind::Curvature1, &p));
    EXPECT_NEAR(flat.first, 0.0f, 1e-3f);
    EXPECT_NEAR(flat.second, 0.0f, 1e-3f);
}

TEST(SphereFitTest, NoNeighbourGivesZeroAndASphereGivesItsInverseRadius)
{
    const double zero[3] = {0, 0, 1};
    EXPECT_EQ(fitSphereCurvature(1.0, zero, zero, 0.0, 0.0), 0.0f);
    // Points of the sphere of radius 4 centred at (0, 0, -4), around the
    // origin, with outward normals, all of weight one.
    double W = 1, SPP = 0, SPN = 0, SP[3] = {0, 0, 0}, SN[3] = {0, 0, 1};
    for (int k = 0; k < 12; ++k) {
        const double a = 0.05 + 0.01 * k, b = 0.7 * k;
        const double m[3] = {std::sin(a) * std::cos(b), std::sin(a) * std::sin(b), std::cos(a)};
        const double q[3] = {4 * m[0], 4 * m[1], 4 * m[2] - 4};
        W += 1;
        for (int c = 0; c < 3; ++c) {
            SP[c] += q[c];
            SN[c] += m[c];
        }
        SPP += q[0] * q[0] + q[1] * q[1] + q[2] * q[2];
        SPN += m[0] * q[0] + m[1] * q[1] + m[2] * q[2];
    }
    EXPECT_NEAR(fitSphereCurvature(W, SP, SN, SPP, SPN), 0.25f, 1e-4f);
    // The same points seen from inside: concave.
    for (int c = 0; c < 3; ++c)
        SN[c] = -SN[c];
    EXPECT_NEAR(fitSphereCurvature(W, SP, SN, SPP, -SPN), -0.25f, 1e-4f);
}
