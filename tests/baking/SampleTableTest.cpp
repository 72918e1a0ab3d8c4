#include "baking/BlueNoiseTile.h"
#include "baking/detail/SampleTable.h"
#include "baking/detail/SurfaceFrame.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace Ond::Baking;

namespace {

float length(const float* v)
{
    return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
}

float dot(const float* a, const float* b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

} // namespace

TEST(SampleTableTest, AzimuthFollowsTheGoldenRatioSequence)
{
    EXPECT_FLOAT_EQ(SampleTable::azimuth(0), 0.0f);
    for (unsigned i : {1u, 2u, 3u, 100u, 255u}) {
        // The fractional part of i times the golden ratio's inverse, to the
        // 23 bits the float mantissa keeps.
        const double frac = std::fmod(double(i) * 0.6180339887498949, 1.0);
        EXPECT_NEAR(SampleTable::azimuth(i), frac * 6.283185307, 3e-6 * 6.3) << i;
    }
}

TEST(SampleTableTest, UniformAndCosineCapsHoldUnitVectorsInsideTheCone)
{
    for (SampleDistribution d : {SampleDistribution::Uniform, SampleDistribution::Cosine}) {
        for (float spread : {180.0f, 90.0f, 30.0f}) {
            const unsigned n = 256;
            SampleTable table(d, spread, n);
            ASSERT_EQ(table.count(), n);
            const float c = std::cos(spread * 3.1415927f / 360.0f);
            double meanZ = 0.0;
            for (unsigned i = 0; i < n; ++i) {
                const float* s = table.sample(i);
                EXPECT_NEAR(length(s), 1.0f, 1e-5f);
                EXPECT_GE(s[2], c - 1e-6f);
                EXPECT_LE(s[2], 1.0f);
                EXPECT_EQ(s[3], 0.0f);
                if (i > 0) {
                    EXPECT_GT(s[2], table.sample(i - 1)[2]) << "rim to pole";
                }
                float phi = std::atan2(s[1], s[0]);
                if (phi < 0.0f)
                    phi += 6.2831855f;
                if (s[2] < 0.9999f) {
                    EXPECT_NEAR(phi, SampleTable::azimuth(i), 2e-4f) << i;
                }
                meanZ += s[2];
            }
            meanZ /= n;
            if (spread == 180.0f) {
                // Uniform over the hemisphere: mean z 1/2; cosine weighted: 2/3.
                EXPECT_NEAR(meanZ, d == SampleDistribution::Uniform ? 0.5 : 2.0 / 3.0, 1e-3);
            }
        }
    }
    // No spread: every sample is the normal.
    SampleTable narrow(SampleDistribution::Uniform, 0.0f, 8);
    for (unsigned i = 0; i < 8; ++i)
        EXPECT_FLOAT_EQ(narrow.sample(i)[2], 1.0f);
}

TEST(SurfaceFrameTest, OrthonormalRightHandedForEveryNormal)
{
    const float normals[][3] = {{0, 0, 1},   {0, 0, -1}, {1, 0, 0},         {0, -1, 0},
                                {0, 0, -0.0f}, {0.6f, 0, -0.8f}, {0.48f, -0.6f, 0.64f}, {-0.01f, 0.0141f, -0.99985f}};
    for (const auto& raw : normals) {
        float n[3] = {raw[0], raw[1], raw[2]};
        const float len = length(n);
        if (len == 0.0f)
            continue;
        for (float& c : n)
            c /= len;
        for (float angle : {0.0f, 1.0f, 4.5f}) {
            const SurfaceFrame f(n, angle);
            EXPECT_NEAR(length(f.t), 1.0f, 1e-5f);
            EXPECT_NEAR(length(f.b), 1.0f, 1e-5f);
            EXPECT_NEAR(dot(f.t, f.b), 0.0f, 1e-5f);
            EXPECT_NEAR(dot(f.t, f.n), 0.0f, 1e-5f);
            EXPECT_NEAR(dot(f.b, f.n), 0.0f, 1e-5f);
            const float cross[3] = {f.t[1] * f.b[2] - f.t[2] * f.b[1], f.t[2] * f.b[0] - f.t[0] * f.b[2],
                                    f.t[0] * f.b[1] - f.t[1] * f.b[0]};
            for (int c = 0; c < 3; ++c)
                EXPECT_NEAR(cross[c], f.n[c], 1e-5f) << "T x B = N";
        }
    }
    // Unit z keeps the axes as they are.
    const float z[3] = {0, 0, 1};
    const SurfaceFrame f(z, 0.0f);
    EXPECT_FLOAT_EQ(f.t[0], 1.0f);
    EXPECT_FLOAT_EQ(f.b[1], 1.0f);
}

TEST(SurfaceFrameTest, TurnsByTheBlueNoiseAngleOfTheSample)
{
    const float n[3] = {0.48f, -0.6f, 0.64f};
    const SurfaceFrame base(n, 0.0f);
    for (unsigned x : {0u, 17u, 300u}) {
        const unsigned y = x * 3 + 5;
        const float g = BlueNoiseTile::angle(int(x), int(y));
        const SurfaceFrame turned(n, x, y);
        EXPECT_NEAR(dot(turned.t, base.t), std::cos(g), 1e-5f);
        EXPECT_NEAR(dot(turned.t, base.b), std::sin(g), 1e-5f);
        EXPECT_NEAR(dot(turned.b, base.b), std::cos(g), 1e-5f);
        EXPECT_NEAR(dot(turned.b, base.t), -std::sin(g), 1e-5f);
        // A sample maps to sx T' + sy B' + sz N.
        const float s[3] = {0.6f, 0.0f, 0.8f};
        float d[3];
        turned.toWorld(s, d);
        EXPECT_NEAR(length(d), 1.0f, 1e-5f);
        EXPECT_NEAR(dot(d, n), 0.8f, 1e-5f);
        EXPECT_NEAR(dot(d, turned.t), 0.6f, 1e-5f);
    }
    // The tile repeats every 256 samples.
    const SurfaceFrame a(n, 3u, 4u), b(n, 259u, 516u);
    EXPECT_FLOAT_EQ(a.t[0], b.t[0]);
}
