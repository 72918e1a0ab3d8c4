// The position baker: the gradient of each channel under the three
// normalisations, the one-axis map, UV tiles and the mesh scope of the box.

#include "LowPolyBakeTestUtil.h"

#include "baking/lowpoly/PositionMapBaker.h"

using namespace LowPolyTest;
using Ond::Baking::PositionMapBaker;
using Ond::Surfaces::PixelFormat;
using Ond::Surfaces::SurfaceSPtr;

namespace {

struct PositionBake : BakerFixture<PositionMapBaker, 6>
{
};

// A slanted quad from (1, -2, 3) along x by 4 and along (y, z) by (1, 2):
// box (1, -2, 3) .. (5, -1, 5), extents (4, 1, 2).
SceneSPtr slantedQuad(Eigen::Vector2f uvOffset = Eigen::Vector2f::Zero(), bool selected = true)
{
    const Eigen::Vector3f origin(1, -2, 3), along(4, 0, 0), up(0, 1, 2);
    std::vector<Vertex> v;
    for (int i = 0; i < 4; ++i) {
        const float u = float(i & 1), w = float(i >> 1);
        v.push_back({origin + along * u + up * w, Eigen::Vector2f(u, w) + uvOffset, Eigen::Vector3f(0, 0, 1),
                     Eigen::Vector3f(1, 0, 0), Eigen::Vector3f(0, 1, 0)});
    }
    return makeScene(v, {0, 1, 3, 0, 3, 2}, selected);
}

Eigen::Vector3f worldAt(int x, int y)
{
    const Eigen::Vector2f uv = texelUv(x, y, 64, 64);
    return Eigen::Vector3f(1, -2, 3) + Eigen::Vector3f(4, 0, 0) * uv.x() + Eigen::Vector3f(0, 1, 2) * uv.y();
}

void expectMap(const SurfaceSPtr& map, const std::function<Eigen::Vector3f(const Eigen::Vector3f&)>& expected)
{
    ASSERT_TRUE(map);
    ASSERT_EQ(map->format(), PixelFormat::RGBA32F);
    for (int y = 0; y < 64; y += 7)
        for (int x = 0; x < 64; x += 7) {
            const Eigen::Vector4f c = texel(*map, x, y);
            const Eigen::Vector3f e = expected(worldAt(x, y));
            EXPECT_LT((c.head<3>() - e).norm(), 1e-4f) << x << "," << y;
            EXPECT_FLOAT_EQ(c.w(), 1.0f);
        }
}

} // namespace

TEST_F(PositionBake, BoxNormalisationFillsEachAxisByItself)
{
    setProperty(baker.properties(), "Position.Normalization", 0);
    expectMap(bake(slantedQuad()), [](const Eigen::Vector3f& p) {
        return Eigen::Vector3f((p.x() - 1) / 4, (p.y() + 2) / 1, (p.z() - 3) / 2);
    });
    EXPECT_EQ(context.progressLabels, std::vector<QString>{QStringLiteral("Position map computation")});
}

TEST_F(PositionBake, SphereNormalisationKeepsProportionsCentred)
{
    setProperty(baker.properties(), "Position.Normalization", 1);
    // Largest extent 4 (x); y and z are centred: offsets -2 + (1-4)/2 and 3 + (2-4)/2.
    expectMap(bake(slantedQuad()), [](const Eigen::Vector3f& p) {
        return Eigen::Vector3f((p.x() - 1) / 4, (p.y() + 3.5f) / 4, (p.z() - 2) / 4);
    });
}

TEST_F(PositionBake, NoNormalisationWritesWorldPositions)
{
    setProperty(baker.properties(), "Position.Normalization", 2);
    expectMap(bake(slantedQuad()), [](const Eigen::Vector3f& p) { return p; });
}

TEST_F(PositionBake, OneAxisGivesAOneChannelMapOfThatAxis)
{
    setProperty(baker.properties(), "Position.Mode", 1);
    setProperty(baker.properties(), "Position.Axis", 2);
    setProperty(baker.properties(), "Position.Normalization", 0);
    const SurfaceSPtr map = bake(slantedQuad());
    ASSERT_TRUE(map);
    ASSERT_EQ(map->format(), PixelFormat::L32F);
    ASSERT_EQ(map->width(), 64u);
    for (int y = 0; y < 64; y += 9)
        for (int x = 0; x < 64; x += 9)
            EXPECT_NEAR(texel(*map, x, y).x(), (worldAt(x, y).z() - 3) / 2, 1e-4f) << x << "," << y;
}

TEST_F(PositionBake, UvTileSelectsTheSquareThatIsBaked)
{
    setProperty(baker.properties(), "Position.Normalization", 0);
    const SceneSPtr shifted = slantedQuad(Eigen::Vector2f(1, 0));
    setProperty(baker.properties(), "Common.UVTile", QPoint(1, 0));
    expectMap(bake(shifted), [](const Eigen::Vector3f& p) {
        return Eigen::Vector3f((p.x() - 1) / 4, (p.y() + 2) / 1, (p.z() - 3) / 2);
    });
    // The square 0..1 holds nothing of it.
    setProperty(baker.properties(), "Common.UVTile", QPoint(0, 0));
    const SurfaceSPtr empty = bake(shifted);
    for (int y = 0; y < 64; y += 5)
        for (int x = 0; x < 64; x += 5)
            EXPECT_EQ(texel(*empty, x, y), Eigen::Vector4f::Zero());
}

TEST_F(PositionBake, FullSceneScaleSpansUnselectedPartsInTheBox)
{
    // box_low selected, an unselected slanted quad beside it.
    const SceneSPtr scene = loadBoxLow();
    ASSERT_TRUE(scene);
    const SceneSPtr quad = slantedQuad(Eigen::Vector2f(5, 5), false);
    scene->addEntities(quad->getEntities());
    setProperty(baker.properties(), "Position.Normalization", 0);

    // Selected parts only: the box is -1 .. 1 on every axis.
    setProperty(baker.properties(), "Position.NormalizationScale", 0);
    const SurfaceSPtr selected = bake(scene);
    // Full scene: -1 .. 5 on x.
    setProperty(baker.properties(), "Position.NormalizationScale", 1);
    const SurfaceSPtr full = bake(scene);

    const Mesh::DataSPtr data = firstMeshData(*scene);
    int compared = 0;
    for (int y = 0; y < 64; y += 3)
        for (int x = 0; x < 64; x += 3) {
            const UvHit hit = locate(*data, texelUv(x, y, 64, 64));
            const Eigen::Vector4f a = texel(*selected, x, y), b = texel(*full, x, y);
            if (hit.triangle < 0 || a.w() < 0.5f)
                continue;
            // Same world x seen through the two boxes.
            const float world = a.x() * 2.0f - 1.0f;
            EXPECT_NEAR(b.x(), (world + 1.0f) / 6.0f, 2e-3f);
            ++compared;
        }
    EXPECT_GT(compared, 50);
}
