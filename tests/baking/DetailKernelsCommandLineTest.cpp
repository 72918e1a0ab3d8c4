// Curvature and colour from mesh through the real binary on the reference
// box pair, read inside the low mesh's UV islands.

#include "BoxPairTestUtil.h"

#include <gtest/gtest.h>

#include <cmath>

using BoxPair::loadRgbaFloat;
using BoxPair::referenceIslands;
using Ond::Surfaces::SurfaceSPtr;

namespace {

// Bakes box_low against box_high (or `high`) at 1024 by 1024, the size of
// the reference mask, and loads the one map written.
SurfaceSPtr bake(const QString& baker, const QStringList& options = {}, const QString& high = "box_high.obj")
{
    return BoxPair::bakeBoxLow(baker,
                               QStringList{QStringLiteral("--highdef-mesh"), BoxPair::testFile(high),
                                           QStringLiteral("--output-size"), QStringLiteral("10,10"),
                                           QStringLiteral("--output-format"), QStringLiteral("tif")}
                                   + options);
}

} // namespace

TEST(DetailKernelsCommandLine, CurvatureOfTheBoxIsHalfOnItsFlatFaces)
{
    const SurfaceSPtr map = bake(QStringLiteral("curvature-from-mesh"));
    const std::vector<char> inside = referenceIslands();
    ASSERT_TRUE(map);
    ASSERT_EQ(map->width(), 1024u);
    ASSERT_EQ(inside.size(), size_t(1024) * 1024);
    size_t covered = 0, flat = 0, above = 0, below = 0;
    for (unsigned y = 0; y < 1024; ++y)
        for (unsigned x = 0; x < 1024; ++x) {
            if (!inside[size_t(y) * 1024 + x])
                continue;
            const float v = map->pixel<float>(x, y)[0];
            ++covered;
            if (std::abs(v - 0.5f) <= 0.004f)
                ++flat;
            else if (v > 0.5f)
                ++above;
            else
                ++below;
        }
    ASSERT_GT(covered, 0u);
    // The faces of the box are flat (about 55 % of the islands); its
    // bevelled edges, corners and dome bulge more than its grooves sink.
    EXPECT_GT(double(flat) / double(covered), 0.45) << flat << " of " << covered;
    EXPECT_GT(above, below);
}

TEST(DetailKernelsCommandLine, ColorOfTheBoxIsOneColourForItsOnePart)
{
    const SurfaceSPtr map = bake(QStringLiteral("color-from-mesh"));
    const std::vector<char> inside = referenceIslands();
    ASSERT_TRUE(map);
    ASSERT_EQ(inside.size(), size_t(map->width()) * map->height());
    const float* first = nullptr;
    size_t covered = 0;
    for (unsigned y = 0; y < map->height(); ++y)
        for (unsigned x = 0; x < map->width(); ++x) {
            if (!inside[size_t(y) * map->width() + x])
                continue;
            const float* px = map->pixel<float>(x, y);
            if (!first)
                first = px;
            ++covered;
            for (int c = 0; c < 3; ++c)
                ASSERT_NEAR(px[c], first[c], 1e-3f) << x << ", " << y;
        }
    ASSERT_GT(covered, 0u);
    // Rays hit: a material's colour, not the black of a miss.
    EXPECT_GT(first[0] + first[1] + first[2], 0.5f);
}

namespace {

// Share of the texels well inside the islands where two maps agree within
// `tolerance` on r, g and b; with `tiltedOnly`, only where the source's
// green leaves 0.5, which is where a wrong green convention shows.
double agreement(const SurfaceSPtr& map, const SurfaceSPtr& source, const std::vector<char>& inside, float tolerance,
                 bool tiltedOnly = false)
{
    size_t checked = 0, same = 0;
    for (unsigned y = 2; y + 2 < 1024; ++y)
        for (unsigned x = 2; x + 2 < 1024; ++x) {
            bool all = true;
            for (int d = -2; d <= 2 && all; ++d)
                all = inside[size_t(y + d) * 1024 + x] && inside[size_t(y) * 1024 + x + d];
            const float* a = map->pixel<float>(x, y);
            const float* b = source->pixel<float>(x, y);
            if (!all || (tiltedOnly && std::abs(b[1] - 0.5f) < 0.05f))
                continue;
            ++checked;
            same += std::abs(a[0] - b[0]) < tolerance && std::abs(a[1] - b[1]) < tolerance
                    && std::abs(a[2] - b[2]) < tolerance;
        }
    EXPECT_GT(checked, 10000u);
    return checked ? double(same) / double(checked) : 0.0;
}

} // namespace

TEST(DetailKernelsCommandLine, TangentNormalTextureOfTheLowBoxOntoItselfIsTheTexture)
{
    // To world space on the high mesh's frame and back on the low mesh's:
    // the same mesh, so the same map, in either green convention.
    const QString texture = BoxPair::testFile(QStringLiteral("box_1024_normal_tangent.png"));
    const std::vector<char> inside = referenceIslands();
    const SurfaceSPtr source = loadRgbaFloat(texture);
    ASSERT_TRUE(source);
    for (const char* format : {"0", "1"}) {
        const SurfaceSPtr map = bake(QStringLiteral("texture-from-mesh"),
                                     {QStringLiteral("--texture-file"), texture, QStringLiteral("--normal-map"),
                                      QStringLiteral("true"), QStringLiteral("--normal-format"),
                                      QString::fromLatin1(format)},
                                     QStringLiteral("box_low.obj"));
        ASSERT_TRUE(map);
        ASSERT_EQ(inside.size(), size_t(map->width()) * map->height());
        EXPECT_GT(agreement(map, source, inside, 4.0f / 255.0f), 0.98) << "normal format " << format;
        EXPECT_GT(agreement(map, source, inside, 4.0f / 255.0f, true), 0.95) << "normal format " << format;
    }
}

TEST(DetailKernelsCommandLine, TextureOfTheLowBoxOntoItselfIsTheTexture)
{
    // The reference object-space normal map as the texture of box_low, baked
    // back onto box_low: every texel well inside an island reads itself.
    const QString texture = BoxPair::testFile(QStringLiteral("box_1024_normal_object.png"));
    const std::vector<char> inside = referenceIslands();
    const SurfaceSPtr source = loadRgbaFloat(texture);
    ASSERT_TRUE(source);
    for (const char* mode : {"0", "1"}) {
        const SurfaceSPtr map = bake(QStringLiteral("texture-from-mesh"),
                                     {QStringLiteral("--texture-file"), texture, QStringLiteral("--filtering-mode"),
                                      QString::fromLatin1(mode)},
                                     QStringLiteral("box_low.obj"));
        ASSERT_TRUE(map);
        ASSERT_EQ(inside.size(), size_t(map->width()) * map->height());
        size_t checked = 0, same = 0;
        for (unsigned y = 2; y + 2 < 1024; ++y)
            for (unsigned x = 2; x + 2 < 1024; ++x) {
                bool all = true;
                for (int d = -2; d <= 2 && all; ++d)
                    all = inside[size_t(y + d) * 1024 + x] && inside[size_t(y) * 1024 + x + d];
                if (!all)
                    continue;
                ++checked;
                const float* a = map->pixel<float>(x, y);
                const float* b = source->pixel<float>(x, y);
                same += std::abs(a[0] - b[0]) < 2.0f / 255.0f && std::abs(a[1] - b[1]) < 2.0f / 255.0f
                        && std::abs(a[2] - b[2]) < 2.0f / 255.0f;
            }
        ASSERT_GT(checked, 100000u);
        EXPECT_GT(double(same) / double(checked), 0.99) << "filtering " << mode << ": " << same << " of " << checked;
    }
}
