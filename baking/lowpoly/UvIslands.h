#pragma once
// Groups UV triangles into islands, the triangles that share an edge in UV
// space, and traces the border of each.

#include <QPainterPath>
#include <QPointF>
#include <QPolygonF>

#include <vector>

namespace Ond::Baking {

struct UvIsland
{
    // Closed loops (last point equal to the first), the one with the largest
    // bounds first. Each triangle adds its border counter-clockwise, so outer
    // borders turn one way and holes the other, and the non-zero rule fills
    // exactly the union of the triangles, also where they overlap or fold.
    std::vector<QPolygonF> loops;
};

// Three points per triangle. Triangles of zero area or with a point that
// isn't finite take no part. Islands come in the order of their first
// triangle.
std::vector<UvIsland> findUvIslands(const std::vector<QPointF>& corners);

// All loops of the island in one path, non-zero fill rule.
QPainterPath islandPath(const UvIsland& island);

} // namespace Ond::Baking
