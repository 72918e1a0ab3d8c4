#pragma once
// How a SubMesh's indices group into primitives. Importers produce
// Triangles with three indices per primitive; the other kinds matter to the
// UV tile walk and the statistics.

#include <cstdint>

namespace Ond::SceneGraph {

enum class PrimitiveType : int32_t {
    Points = 1,
    Lines = 2,
    LineStrip = 3,
    LineLoop = 4,
    Triangles = 5,
    TriangleStrip = 6,
    TriangleFan = 7,
    Quads = 8,
    QuadStrip = 9,
    Patches = 10,
    Polygon = 11,
};

// Each index stands for itself.
constexpr bool isVertexWise(PrimitiveType t)
{
    return t == PrimitiveType::Points || t == PrimitiveType::Patches || t == PrimitiveType::Polygon;
}
// The first two indices of a primitive form one edge.
constexpr bool isLineKind(PrimitiveType t)
{
    return t == PrimitiveType::Lines || t == PrimitiveType::LineStrip || t == PrimitiveType::LineLoop;
}
// The first three indices of a primitive form one triangle.
constexpr bool isTriangleKind(PrimitiveType t)
{
    return t == PrimitiveType::Triangles || t == PrimitiveType::TriangleStrip || t == PrimitiveType::TriangleFan;
}
constexpr bool isQuadKind(PrimitiveType t)
{
    return t == PrimitiveType::Quads || t == PrimitiveType::QuadStrip;
}
// What the statistics count as faces.
constexpr bool isFaceKind(PrimitiveType t)
{
    return isTriangleKind(t) || isQuadKind(t) || t == PrimitiveType::Polygon;
}

} // namespace Ond::SceneGraph
