// Islands of UV triangles and their borders: what joins triangles, the
// loops that come out, and the fill of those loops.

#include "baking/lowpoly/UvIslands.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace Ond::Baking;

namespace {

using Corners = std::vector<QPointF>;

void addTriangle(Corners& c, QPointF a, QPointF b, QPointF d)
{
    c.push_back(a);
    c.push_back(b);
    c.push_back(d);
}

// A square cell as two triangles; `clockwise` gives both the other winding.
void addCell(Corners& c, double x, double y, double side, bool clockwise = false)
{
    const QPointF p0(x, y), p1(x + side, y), p2(x + side, y + side), p3(x, y + side);
    if (clockwise) {
        addTriangle(c, p0, p2, p1);
        addTriangle(c, p0, p3, p2);
    } else {
        addTriangle(c, p0, p1, p2);
        addTriangle(c, p0, p2, p3);
    }
}

bool filled(const UvIsland& island, double x, double y) { return islandPath(island).contains(QPointF(x, y)); }

} // namespace

TEST(UvIslands, TrianglesMeetingAlongAnEdgeAreOneIslandWithOneClosedLoop)
{
    Corners c;
    addCell(c, 0.0, 0.0, 0.5);
    const auto islands = findUvIslands(c);
    ASSERT_EQ(islands.size(), 1u);
    ASSERT_EQ(islands[0].loops.size(), 1u);
    const QPolygonF& loop = islands[0].loops[0];
    // The square's four corners and the first again: the diagonal is inside.
    EXPECT_EQ(loop.size(), 5);
    EXPECT_EQ(loop.front(), loop.back());
    EXPECT_EQ(loop.boundingRect(), QRectF(0.0, 0.0, 0.5, 0.5));
    EXPECT_TRUE(filled(islands[0], 0.25, 0.1));
    EXPECT_FALSE(filled(islands[0], 0.6, 0.1));
}

TEST(UvIslands, IslandsAreSplitByGapsAndByCornersThatOnlyTouch)
{
    Corners c;
    addCell(c, 0.0, 0.0, 0.2);
    addCell(c, 0.5, 0.0, 0.2);
    // Meets the first cell at its corner (0.2, 0.2) and nowhere else.
    addTriangle(c, {0.2, 0.2}, {0.3, 0.2}, {0.3, 0.3});
    const auto islands = findUvIslands(c);
    ASSERT_EQ(islands.size(), 3u);
    // In the order of their first triangles.
    EXPECT_TRUE(filled(islands[0], 0.1, 0.1));
    EXPECT_TRUE(filled(islands[1], 0.6, 0.1));
    EXPECT_TRUE(filled(islands[2], 0.28, 0.22));
    EXPECT_FALSE(filled(islands[0], 0.6, 0.1));
}

TEST(UvIslands, EqualPositionsJoinTrianglesThatShareNoVertexIndex)
{
    // Two triangles given with their own corners, as a mesh split at a
    // normal seam gives them: one island all the same.
    Corners c;
    addTriangle(c, {0, 0}, {1, 0}, {1, 1});
    addTriangle(c, {1, 1}, {0, 1}, {0, 0});
    EXPECT_EQ(findUvIslands(c).size(), 1u);
}

TEST(UvIslands, ARingHasItsOuterBorderFirstAndItsHoleUnfilled)
{
    Corners c;
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x)
            if (x != 1 || y != 1)
                addCell(c, 0.1 + 0.2 * x, 0.1 + 0.2 * y, 0.2, (x + y) % 2 == 1);
    const auto islands = findUvIslands(c);
    ASSERT_EQ(islands.size(), 1u);
    ASSERT_EQ(islands[0].loops.size(), 2u);
    EXPECT_EQ(islands[0].loops[0].boundingRect(), QRectF(0.1, 0.1, 0.6, 0.6));
    EXPECT_NEAR(islands[0].loops[1].boundingRect().width(), 0.2, 1e-12);
    EXPECT_TRUE(filled(islands[0], 0.2, 0.2));
    EXPECT_FALSE(filled(islands[0], 0.4, 0.4));
}

TEST(UvIslands, ABorderThatMeetsItselfAtACornerStillFillsOnlyTheCells)
{
    // Seven cells of a 3 × 3 grid round the centre, joined by edges; the
    // top-left cell and the centre are empty, and the border of the rest
    // passes twice through the corner where those two meet.
    Corners c;
    for (auto [x, y] : {std::pair{0, 0}, {1, 0}, {2, 0}, {2, 1}, {2, 2}, {1, 2}, {0, 1}})
        addCell(c, 0.1 * x, 0.1 * y, 0.1);
    const auto islands = findUvIslands(c);
    ASSERT_EQ(islands.size(), 1u);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x) {
            const bool empty = (x == 1 && y == 1) || (x == 0 && y == 2);
            EXPECT_EQ(filled(islands[0], 0.1 * x + 0.05, 0.1 * y + 0.05), !empty) << x << ", " << y;
        }
}

TEST(UvIslands, StackedAndFoldedTrianglesFillTheirUnion)
{
    Corners c;
    // The same cell twice, once mirrored: as stacked symmetric halves are laid out.
    addCell(c, 0.0, 0.0, 0.5);
    addCell(c, 0.0, 0.0, 0.5, true);
    // A triangle folded back over its neighbour along their shared edge.
    addTriangle(c, {0.6, 0.0}, {0.9, 0.0}, {0.6, 0.3});
    addTriangle(c, {0.9, 0.0}, {0.6, 0.3}, {0.7, 0.05});
    const auto islands = findUvIslands(c);
    ASSERT_EQ(islands.size(), 2u);
    EXPECT_TRUE(filled(islands[0], 0.25, 0.25));
    EXPECT_TRUE(filled(islands[0], 0.45, 0.05));
    EXPECT_TRUE(filled(islands[1], 0.65, 0.05));
    EXPECT_TRUE(filled(islands[1], 0.7, 0.1));
    EXPECT_FALSE(filled(islands[1], 0.85, 0.2));
}

TEST(UvIslands, FlatAndNonFiniteTrianglesTakeNoPart)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Corners c;
    addTriangle(c, {0, 0}, {0.5, 0.5}, {1, 1});
    addTriangle(c, {0, 0}, {0, 0}, {0.3, 0.1});
    addTriangle(c, {nan, 0}, {0.5, 0}, {0.5, 0.5});
    EXPECT_TRUE(findUvIslands(c).empty());
    addCell(c, 0.2, 0.2, 0.1);
    EXPECT_EQ(findUvIslands(c).size(), 1u);
}
