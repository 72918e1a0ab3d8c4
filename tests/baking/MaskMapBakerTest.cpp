// The UV mask: the fixed-function draw of the UV triangles in the
// compatibility context, one colour on another.

#include "LowPolyBakeTestUtil.h"

#include "baking/lowpoly/MaskMapBaker.h"

#include <QColor>

using namespace LowPolyTest;
using Ond::Baking::MaskMapBaker;

namespace {

// The lower left half of the UV square.
SceneSPtr halfSquare(bool selected = true)
{
    const Eigen::Vector3f n(0, 0, 1), t(1, 0, 0), b(0, 1, 0);
    return makeScene({{{0, 0, 0}, {0, 0}, n, t, b}, {{1, 0, 0}, {1, 0}, n, t, b}, {{0, 1, 0}, {0, 1}, n, t, b}},
                     {0, 1, 2}, selected);
}

} // namespace

using MaskMapBakerTest = BakerFixture<MaskMapBaker, 6>;

TEST_F(MaskMapBakerTest, PaintsTheUvTrianglesInTheForegroundOnTheBackground)
{
    const auto mask = bake(halfSquare());
    ASSERT_TRUE(mask);
    ASSERT_EQ(mask->width(), 64u);
    ASSERT_EQ(mask->format(), Ond::Surfaces::PixelFormat::RGBA32F);
    int inside = 0, outside = 0;
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) {
            const Eigen::Vector2f uv = texelUv(x, y, 64, 64);
            const float s = uv.x() + uv.y();
            if (std::abs(s - 1.0f) < 2.0f / 64.0f)
                continue; // the diagonal's texels
            const Eigen::Vector4f c = texel(*mask, x, y);
            if (s < 1.0f) {
                ++inside;
                EXPECT_EQ(c, Eigen::Vector4f(1, 0, 0, 1)) << x << ' ' << y; // the default red
            } else {
                ++outside;
                EXPECT_EQ(c, Eigen::Vector4f(0, 0, 0, 0)) << x << ' ' << y;
            }
        }
    EXPECT_GT(inside, 1800);
    EXPECT_GT(outside, 1800);
}

TEST_F(MaskMapBakerTest, ColoursKeepTheirAlphaAndUnselectedMeshesStayOut)
{
    setProperty(baker.properties(), "Mask.FGColor", QColor(0, 255, 0, 128));
    setProperty(baker.properties(), "Mask.BGColor", QColor(0, 0, 255, 255));
    const auto mask = bake(halfSquare());
    ASSERT_TRUE(mask);
    const Eigen::Vector4f in = texel(*mask, 5, 58), out = texel(*mask, 58, 5);
    EXPECT_FLOAT_EQ(in.y(), 1.0f);
    EXPECT_NEAR(in.w(), 128.0f / 255.0f, 1e-6f);
    EXPECT_EQ(out, Eigen::Vector4f(0, 0, 1, 1));

    const auto none = bake(halfSquare(false));
    ASSERT_TRUE(none);
    EXPECT_EQ(texel(*none, 5, 58), Eigen::Vector4f(0, 0, 1, 1));
}
