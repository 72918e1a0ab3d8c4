// The world-space direction baker: a constant direction and a direction map
// turned into the tangent frame of the low mesh.

#include "LowPolyBakeTestUtil.h"

#include "baking/lowpoly/WorldDirectionMapBaker.h"

using namespace LowPolyTest;
using Ond::Baking::WorldDirectionMapBaker;
using Ond::Surfaces::PixelFormat;
using Ond::Surfaces::SurfaceDesc;
using Ond::Surfaces::SurfaceSPtr;

namespace {

struct DirectionBake : BakerFixture<WorldDirectionMapBaker, 5>
{
    void SetUp() override
    {
        BakerFixture::SetUp();
        setProperty(baker.properties(), "Additional.InvertGreen", 0);
    }
};

Eigen::Vector3f decode(const Eigen::Vector4f& c)
{
    return c.head<3>() * 2.0f - Eigen::Vector3f::Ones();
}

// A frame that is not the identity: T = -z, B = x, N = -y.
const Eigen::Vector3f T(0, 0, -1), B(1, 0, 0), N(0, -1, 0);

} // namespace

TEST_F(DirectionBake, ConstantDirectionIsExpressedInTheTangentFrame)
{
    setProperty(baker.properties(), "WorldDirection.ConstDirection", 1);
    setProperty(baker.properties(), "WorldDirection.X", 2.0f);
    setProperty(baker.properties(), "WorldDirection.Y", 0.0f);
    setProperty(baker.properties(), "WorldDirection.Z", -2.0f);
    const SurfaceSPtr map = bake(makeQuad(N, T, B));
    ASSERT_TRUE(map);
    ASSERT_EQ(map->format(), PixelFormat::RGBA32F);
    // World (1, 0, -1)/sqrt2: along T by 1, along B by 1, along N by 0.
    const Eigen::Vector3f expected = Eigen::Vector3f(1, 1, 0).normalized();
    for (int y = 0; y < 32; y += 6)
        for (int x = 0; x < 32; x += 6) {
            EXPECT_LT((decode(texel(*map, x, y)) - expected).norm(), 1e-4f) << x << "," << y;
            EXPECT_FLOAT_EQ(texel(*map, x, y).w(), 1.0f);
        }
    EXPECT_TRUE(context.loadedPaths.empty());
    EXPECT_EQ(context.progressLabels, std::vector<QString>{QStringLiteral("Map computation")});

    // Green inversion negates the tangent-space y after normalising.
    setProperty(baker.properties(), "Additional.InvertGreen", 1);
    const SurfaceSPtr inverted = bake(makeQuad(N, T, B));
    EXPECT_LT((decode(texel(*inverted, 9, 9)) - Eigen::Vector3f(expected.x(), -expected.y(), 0)).norm(), 1e-4f);
}

TEST_F(DirectionBake, DirectionMapIsReadTileByTileAndItsAlphaLeavesTexelsEmpty)
{
    // A 16 x 16 map, smaller than the output: world +y on the left half,
    // world -z on the right half, alpha 0 in its top quarter.
    auto directions = SurfaceSPtr::create(SurfaceDesc(16, 16, PixelFormat::RGBA32F));
    for (uint32_t y = 0; y < 16; ++y)
        for (uint32_t x = 0; x < 16; ++x) {
            const Eigen::Vector3f d = x < 8 ? Eigen::Vector3f(0, 1, 0) : Eigen::Vector3f(0, 0, -1);
            directions->writePixel(x, y, Eigen::Vector4f(d.x() * 0.5f + 0.5f, d.y() * 0.5f + 0.5f,
                                                         d.z() * 0.5f + 0.5f, y < 4 ? 0.0f : 1.0f));
        }
    context.surfaces[QStringLiteral("/maps/dir.exr")] = directions;
    setProperty(baker.properties(), "WorldDirection.ConstDirection", 0);
    setProperty(baker.properties(), "WorldDirection.DirectionMap", QStringLiteral("/maps/dir.exr"));
    const SurfaceSPtr map = bake(makeQuad(N, T, B));
    ASSERT_TRUE(map);
    EXPECT_EQ(context.loadedPaths, std::vector<QString>{QStringLiteral("/maps/dir.exr")});
    // World +y is -N; world -z is +T.
    EXPECT_LT((decode(texel(*map, 5, 20)) - Eigen::Vector3f(0, 0, -1)).norm(), 1e-3f);
    EXPECT_LT((decode(texel(*map, 27, 20)) - Eigen::Vector3f(1, 0, 0)).norm(), 1e-3f);
    EXPECT_EQ(texel(*map, 5, 2), Eigen::Vector4f::Zero());
}

TEST_F(DirectionBake, MapThatDoesNotLoadFallsBackToANullDirection)
{
    setProperty(baker.properties(), "WorldDirection.ConstDirection", 0);
    setProperty(baker.properties(), "WorldDirection.DirectionMap", QStringLiteral("/maps/absent.png"));
    const SurfaceSPtr map = bake(makeQuad(N, T, B));
    ASSERT_TRUE(map);
    const Eigen::Vector4f c = texel(*map, 16, 16);
    EXPECT_LT((c - Eigen::Vector4f(0.5f, 0.5f, 0.5f, 1.0f)).norm(), 1e-5f);
}

TEST_F(DirectionBake, OnlySelectedPartsAreDrawn)
{
    // Two parts of one mesh side by side in UV: the left one selected.
    std::vector<Vertex> v;
    for (int part = 0; part < 2; ++part)
        for (int i = 0; i < 4; ++i) {
            const float u = 0.5f * float(part) + 0.5f * float(i & 1), w = float(i >> 1);
            v.push_back({T * u + B * w, Eigen::Vector2f(u, w), N, T, B});
        }
    const SceneSPtr scene = makeScene(v, {0, 1, 3, 0, 3, 2});
    const Mesh::DataSPtr data = firstMeshData(*scene);
    data->addSubMesh(SubMesh(makeBuffer(std::vector<uint32_t>{4, 5, 7, 4, 7, 6}), PrimitiveType::Triangles, 3,
                             nullptr, DefaultRenderFlags));
    setProperty(baker.properties(), "WorldDirection.ConstDirection", 1);
    const SurfaceSPtr map = bake(scene);
    ASSERT_TRUE(map);
    EXPECT_FLOAT_EQ(texel(*map, 5, 16).w(), 1.0f);
    EXPECT_EQ(texel(*map, 26, 16), Eigen::Vector4f::Zero());
}
