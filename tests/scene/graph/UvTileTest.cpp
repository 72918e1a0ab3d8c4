#include "scene/graph/Mesh.h"
#include "scene/graph/UvTile.h"

#include "../SceneTestUtil.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Ond::SceneGraph;

namespace {

UvTileSet walk(Eigen::Vector2f p, Eigen::Vector2f q)
{
    UvTileSet tiles;
    walkUvEdge(tiles, p, q);
    return tiles;
}

UvTileSet tilesOf(std::vector<Eigen::Vector2f> uv, PrimitiveType type, size_t stride, std::vector<uint32_t> indices)
{
    std::vector<SubMesh> subs;
    subs.emplace_back(makeBuffer(std::move(indices)), type, stride, nullptr);
    std::vector<Eigen::Vector3f> positions(uv.size(), Eigen::Vector3f::Zero());
    auto data = SceneTest::makeData(std::move(positions), {std::move(uv)}, std::move(subs));
    UvTileSet tiles;
    EXPECT_TRUE(data->collectUvTiles(tiles, 0, data->getSubMesh(0)));
    return tiles;
}

} // namespace

TEST(UvTile, IndexBordersBelongToTheLowerTileExceptZero)
{
    EXPECT_EQ(uvTileIndex(0.0), 0);
    EXPECT_EQ(uvTileIndex(0.5), 0);
    EXPECT_EQ(uvTileIndex(1.0), 0);
    EXPECT_EQ(uvTileIndex(1.0000001), 1);
    EXPECT_EQ(uvTileIndex(1.5), 1);
    EXPECT_EQ(uvTileIndex(2.0), 1);
    EXPECT_EQ(uvTileIndex(-0.5), -1);
    EXPECT_EQ(uvTileIndex(-1.0), -2);
    EXPECT_EQ(uvTileIndex(-1e-7), -1);
    EXPECT_EQ(uvTileIndex(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(UvTile, OrderAndUdim)
{
    UvTileSet set{{3, 0}, {0, 1}, {1, 0}};
    std::vector<UvTile> ordered(set.begin(), set.end());
    ASSERT_EQ(ordered.size(), 3u);
    EXPECT_EQ(ordered[0], (UvTile{1, 0}));
    EXPECT_EQ(ordered[1], (UvTile{3, 0}));
    EXPECT_EQ(ordered[2], (UvTile{0, 1}));
    EXPECT_EQ((UvTile{0, 0}).udim(), 1001);
    EXPECT_EQ((UvTile{1, 2}).udim(), 1022);
}

TEST(UvTile, SegmentReportsEveryTileItCrosses)
{
    EXPECT_EQ(walk({0.5f, 0.5f}, {2.5f, 0.5f}), (UvTileSet{{0, 0}, {1, 0}, {2, 0}}));
    // Same, walked backwards.
    EXPECT_EQ(walk({2.5f, 0.5f}, {0.5f, 0.5f}), (UvTileSet{{0, 0}, {1, 0}, {2, 0}}));
    EXPECT_EQ(walk({0.5f, 0.5f}, {0.5f, 3.5f}), (UvTileSet{{0, 0}, {0, 1}, {0, 2}, {0, 3}}));
    EXPECT_EQ(walk({-0.5f, 0.5f}, {0.5f, 0.5f}), (UvTileSet{{-1, 0}, {0, 0}}));
    // A diagonal through the middle of tiles, not through corners.
    EXPECT_EQ(walk({0.2f, 0.5f}, {1.8f, 1.1f}), (UvTileSet{{0, 0}, {1, 0}, {1, 1}}));
}

TEST(UvTile, ShellFillingTheUnitSquareStaysInTileZero)
{
    EXPECT_EQ(walk({0.0f, 0.0f}, {1.0f, 1.0f}), (UvTileSet{{0, 0}}));
    EXPECT_EQ(walk({1.0f, 0.0f}, {1.0f, 1.0f}), (UvTileSet{{0, 0}}));
}

TEST(UvTile, TriangleInteriorIsNotScanned)
{
    // Its edges run along row 0, column 0 and the diagonal u + v = 6; tiles
    // (1, 1) and (2, 2) lie wholly inside and are not reported.
    const auto tiles = tilesOf({{0.5f, 0.5f}, {5.5f, 0.5f}, {0.5f, 5.5f}}, PrimitiveType::Triangles, 3, {0, 1, 2});
    EXPECT_EQ(tiles.count({1, 1}), 0u);
    EXPECT_EQ(tiles.count({1, 2}), 0u);
    EXPECT_EQ(tiles.count({2, 1}), 0u);
    for (int i = 0; i <= 5; ++i) {
        EXPECT_EQ(tiles.count({i, 0}), 1u) << i;
        EXPECT_EQ(tiles.count({0, i}), 1u) << i;
    }
    EXPECT_EQ(tiles.count({3, 2}), 1u); // on the diagonal
}

TEST(UvTile, SmallTriangleSpanningThreeTiles)
{
    // The hypotenuse meets the corner (1, 1), which belongs to tile (0, 0).
    const auto tiles = tilesOf({{0.5f, 0.5f}, {1.5f, 0.5f}, {0.5f, 1.5f}}, PrimitiveType::Triangles, 3, {0, 1, 2});
    EXPECT_EQ(tiles, (UvTileSet{{0, 0}, {1, 0}, {0, 1}}));
}

TEST(UvTile, PrimitiveKinds)
{
    const std::vector<Eigen::Vector2f> uv{{0.5f, 0.5f}, {2.5f, 0.5f}, {0.5f, 2.5f}, {3.5f, 3.5f}};
    // Vertex-wise: the first index of each primitive only.
    EXPECT_EQ(tilesOf(uv, PrimitiveType::Points, 2, {1, 3, 2, 3}), (UvTileSet{{2, 0}, {0, 2}}));
    // Lines: the edge between the first two indices.
    EXPECT_EQ(tilesOf(uv, PrimitiveType::Lines, 2, {0, 1}), (UvTileSet{{0, 0}, {1, 0}, {2, 0}}));
    // Quads walk ab, ac, bc, bd, cd but never ad: a and d share row 0,
    // and tile (2, 0) lies only on ad.
    const std::vector<Eigen::Vector2f> quadUv{{0.5f, 0.5f}, {0.5f, 3.5f}, {4.5f, 3.5f}, {4.5f, 0.5f}};
    const auto quad = tilesOf(quadUv, PrimitiveType::Quads, 4, {0, 1, 2, 3});
    EXPECT_EQ(quad.count({2, 0}), 0u);
    EXPECT_EQ(quad.count({2, 3}), 1u); // bc
    EXPECT_EQ(quad.count({4, 1}), 1u); // cd
    EXPECT_EQ(quad.count({0, 2}), 1u); // ab
}

TEST(UvTile, CollectWithoutSubMeshTakesEveryPoint)
{
    auto data = SceneTest::makeData({{0, 0, 0}, {0, 0, 0}}, {{{0.5f, 0.5f}, {7.5f, 2.5f}}}, {});
    UvTileSet tiles;
    EXPECT_TRUE(data->collectUvTiles(tiles, 0, nullptr));
    EXPECT_EQ(tiles, (UvTileSet{{0, 0}, {7, 2}}));
    EXPECT_FALSE(data->collectUvTiles(tiles, 1, nullptr));
}

TEST(UvTile, BadIndicesAreSkippedNotRead)
{
    // The second triangle points past the UV set.
    const auto tiles = tilesOf({{0.5f, 0.5f}, {0.6f, 0.5f}, {0.5f, 0.6f}}, PrimitiveType::Triangles, 3,
                               {0, 1, 2, 0, 1, 99});
    EXPECT_EQ(tiles, (UvTileSet{{0, 0}}));
}
