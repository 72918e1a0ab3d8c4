// The surface-element tree on the CPU: leaves, node sums and the kept
// weight of empty children, the split rule, the walk links, the unit frame,
// the packed texture layout, the collection from a scene and the quality
// table.

#include "LowPolyBakeTestUtil.h"

#include "baking/lowpoly/SeAORenderer.h"
#include "baking/lowpoly/SurfaceElementTree.h"

#include <cmath>
#include <set>

using namespace Ond::Baking;
using namespace Ond::Baking::SeAO;

namespace {

Geometry trianglesAt(const std::vector<Eigen::Vector3f>& corners)
{
    Geometry g;
    for (const Eigen::Vector3f& p : corners) {
        g.vertices.push_back({p, Eigen::Vector3f::UnitZ(), Eigen::Vector2f::Zero()});
        g.triangles.push_back(uint32_t(g.triangles.size()));
    }
    g.drawnTriangles = g.triangles;
    return g;
}

// A wavy n x n grid of quads, two triangles each.
Geometry grid(int n)
{
    Geometry g;
    for (int j = 0; j <= n; ++j)
        for (int i = 0; i <= n; ++i)
            g.vertices.push_back({Eigen::Vector3f(float(i), 0.3f * std::sin(float(i + 2 * j)), float(j)),
                                  Eigen::Vector3f::UnitY(), Eigen::Vector2f(float(i) / n, float(j) / n)});
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            const uint32_t a = uint32_t(j * (n + 1) + i), b = a + 1, c = a + uint32_t(n) + 1, d = c + 1;
            g.triangles.insert(g.triangles.end(), {a, c, b, b, c, d});
        }
    g.drawnTriangles = g.triangles;
    return g;
}

// Elements in the order a walk that always descends meets them.
std::vector<int32_t> walkAll(const SurfaceElementTree& tree)
{
    std::vector<int32_t> order;
    for (int32_t i = tree.root; i != noElement && order.size() <= tree.elements.size();) {
        order.push_back(i);
        const SurfaceElement& e = tree.elements[size_t(i)];
        i = e.isLeaf() ? e.next : e.left;
    }
    return order;
}

} // namespace

TEST(SurfaceElementTree, LeavesAreTheTrianglesInOrderAndNodesSumTheirChildren)
{
    const Geometry g = grid(7);
    const SurfaceElementTree tree = SurfaceElementTree::build(g);
    const size_t n = g.triangleCount();
    ASSERT_EQ(tree.elements.size(), 2 * n - 1);
    EXPECT_EQ(tree.root, int32_t(n));

    for (size_t t = 0; t < n; ++t) {
        const SurfaceElement& leaf = tree.elements[t];
        ASSERT_TRUE(leaf.isLeaf());
        const Eigen::Vector3f v0 = g.vertices[g.triangles[3 * t]].position;
        const Eigen::Vector3f v1 = g.vertices[g.triangles[3 * t + 1]].position;
        const Eigen::Vector3f v2 = g.vertices[g.triangles[3 * t + 2]].position;
        const Eigen::Vector3f cross = (v1 - v0).cross(v2 - v0);
        EXPECT_NEAR(leaf.area, 0.5f * cross.norm(), 1e-5f);
        EXPECT_TRUE(leaf.normal.isApprox(cross.normalized(), 1e-5f));
        EXPECT_TRUE(leaf.position.isApprox((v0 + v1 + v2) * 0.33333334f, 1e-6f));
        EXPECT_NEAR(leaf.radius,
                    std::max({(v0 - leaf.position).norm(), (v1 - leaf.position).norm(), (v2 - leaf.position).norm()}),
                    1e-6f);
    }
    for (size_t i = n; i < tree.elements.size(); ++i) {
        const SurfaceElement& node = tree.elements[i];
        ASSERT_FALSE(node.isLeaf());
        const SurfaceElement& l = tree.elements[size_t(node.left)];
        const SurfaceElement& r = tree.elements[size_t(node.right)];
        EXPECT_FLOAT_EQ(node.area, l.area + r.area);
        const float w = l.area / node.area;
        EXPECT_TRUE(node.position.isApprox(w * l.position + (1 - w) * r.position, 1e-5f));
        EXPECT_NEAR(node.normal.norm(), 1.0f, 1e-5f);
        // The node's sphere holds both children's spheres.
        EXPECT_GE(node.radius + 1e-5f, (l.position - node.position).norm() + l.radius);
        EXPECT_GE(node.radius + 1e-5f, (r.position - node.position).norm() + r.radius);
    }
}

TEST(SurfaceElementTree, NextLinksLetAWalkMeetEveryElementOnceAndSkipWholeSubtrees)
{
    const SurfaceElementTree tree = SurfaceElementTree::build(grid(9));
    const std::vector<int32_t> order = walkAll(tree);
    ASSERT_EQ(order.size(), tree.elements.size());
    EXPECT_EQ(std::set<int32_t>(order.begin(), order.end()).size(), order.size());
    EXPECT_EQ(tree.elements[size_t(tree.root)].next, noElement);

    // Skipping a node lands on the first element after its subtree.
    std::vector<size_t> position(tree.elements.size());
    for (size_t k = 0; k < order.size(); ++k)
        position[size_t(order[k])] = k;
    std::vector<size_t> subtreeSize(tree.elements.size(), 1);
    for (size_t k = order.size(); k-- > 0;) {
        const SurfaceElement& e = tree.elements[size_t(order[k])];
        if (!e.isLeaf())
            subtreeSize[size_t(order[k])] = 1 + subtreeSize[size_t(e.left)] + subtreeSize[size_t(e.right)];
    }
    for (size_t i = 0; i < tree.elements.size(); ++i) {
        const size_t after = position[i] + subtreeSize[i];
        if (after == order.size())
            EXPECT_EQ(tree.elements[i].next, noElement);
        else
            EXPECT_EQ(tree.elements[i].next, order[after]);
    }
}

TEST(SurfaceElementTree, SplitsAtTheMiddleAlongTheWidestSpreadOfCentroids)
{
    // Four small triangles spread along z (widest), then x.
    std::vector<Eigen::Vector3f> corners;
    const float zs[4] = {3.0f, -2.0f, 9.0f, 0.5f};
    for (int t = 0; t < 4; ++t) {
        const Eigen::Vector3f o(float(t) * 0.5f, 0.0f, zs[t]);
        corners.insert(corners.end(), {o, o + Eigen::Vector3f(0.1f, 0, 0), o + Eigen::Vector3f(0, 0.1f, 0)});
    }
    const SurfaceElementTree tree = SurfaceElementTree::build(trianglesAt(corners));
    const SurfaceElement& root = tree.elements[size_t(tree.root)];
    const auto leaves = [&](int32_t node) {
        const SurfaceElement& e = tree.elements[size_t(node)];
        return std::set<int32_t>{e.left, e.right};
    };
    EXPECT_EQ(leaves(root.left), (std::set<int32_t>{1, 3}));
    EXPECT_EQ(leaves(root.right), (std::set<int32_t>{0, 2}));
}

TEST(SurfaceElementTree, ANodeOfEmptyTrianglesKeepsTheWeightFive)
{
    const Eigen::Vector3f a(1, 0, 0), b(3, 0, 0);
    // Two triangles of no area: normal and area 0.
    const SurfaceElementTree tree = SurfaceElementTree::build(trianglesAt({a, a, a, b, b, b}));
    ASSERT_EQ(tree.elements.size(), 3u);
    EXPECT_EQ(tree.elements[0].area, 0.0f);
    EXPECT_EQ(tree.elements[0].normal, Eigen::Vector3f::Zero());
    const SurfaceElement& node = tree.elements[2];
    const Eigen::Vector3f l = tree.elements[size_t(node.left)].position;
    const Eigen::Vector3f r = tree.elements[size_t(node.right)].position;
    EXPECT_TRUE(node.position.isApprox(5.0f * l - 4.0f * r));
    // The mixed normal is null: the node's position, made unit, stands in.
    EXPECT_TRUE(node.normal.isApprox(node.position.normalized()));
}

TEST(SurfaceElementTree, OneTriangleIsItsOwnRootAndEmptyGeometryHasNone)
{
    const SurfaceElementTree one = SurfaceElementTree::build(trianglesAt({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}));
    ASSERT_EQ(one.elements.size(), 1u);
    EXPECT_EQ(one.root, 0);
    EXPECT_EQ(one.elements[0].next, noElement);
    EXPECT_EQ(SurfaceElementTree::build(Geometry()).root, noElement);
}

TEST(SurfaceElementTree, UnitFrameCentresTheBoxAndScalesByItsLargestSide)
{
    Geometry g = trianglesAt({{1, 2, 3}, {5, 2, 3}, {1, 4, 7}});
    for (const Vertex& v : g.vertices) {
        g.boxMinimum = g.boxMinimum.cwiseMin(v.position);
        g.boxMaximum = g.boxMaximum.cwiseMax(v.position);
    }
    g.normalizeToUnitFrame();
    // Centre (3, 3, 5); x and z both span 4: the scale is 1/4.
    EXPECT_TRUE(g.vertices[0].position.isApprox(Eigen::Vector3f(-0.5f, -0.25f, -0.5f)));
    EXPECT_TRUE(g.vertices[2].position.isApprox(Eigen::Vector3f(-0.5f, 0.25f, 0.5f)));
    EXPECT_EQ(g.vertices[0].normal, Eigen::Vector3f::UnitZ());
}

TEST(PackedLayout, WidthFollowsHalfTheBitsOfTheCountWithinBounds)
{
    const PackedLayout small = PackedLayout::forCount(1);
    EXPECT_EQ(small.width, 64);
    EXPECT_EQ(small.height, 4);
    // ceil(log2 100000) = 17: width 2^8, rows 391 rounded up to 392.
    const PackedLayout mid = PackedLayout::forCount(100000);
    EXPECT_EQ(mid.log2Width, 8);
    EXPECT_EQ(mid.height, 392);
    EXPECT_EQ(PackedLayout::forCount(size_t(1) << 30).log2Width, 13);

    const auto c = mid.coordinates(256 * 3 + 5);
    EXPECT_FLOAT_EQ(c[0], 5.5f / 256.0f);
    EXPECT_FLOAT_EQ(c[1], 3.5f / 392.0f);
    EXPECT_EQ(mid.coordinates(noElement), (std::array<float, 2>{0.0f, 0.0f}));
}

TEST(PackedTree, TexelsHoldTheElementsLinksAndCorners)
{
    const Geometry g = grid(3);
    const SurfaceElementTree tree = SurfaceElementTree::build(g);
    const PackedTree packed = PackedTree::pack(g, tree);
    const PackedLayout& layout = packed.layout;
    EXPECT_EQ(layout.width, 64);
    EXPECT_EQ(packed.root, layout.coordinates(tree.root));
    for (size_t i = 0; i < tree.elements.size(); ++i) {
        const SurfaceElement& e = tree.elements[i];
        EXPECT_EQ(packed.positions[i * 4 + 3], e.isLeaf() ? e.area : -e.area);
        EXPECT_EQ(packed.normals[i * 4 + 3], e.radius);
        EXPECT_EQ(packed.links[i * 4], layout.coordinates(e.next)[0]);
        EXPECT_EQ(packed.links[i * 4 + 3], layout.coordinates(e.left)[1]);
    }
    // Leaf 4's corners point at its vertices.
    EXPECT_EQ(packed.triangles0[4 * 4 + 2], layout.coordinates(int32_t(g.triangles[13]))[0]);
    EXPECT_EQ(packed.triangles1[4 * 4 + 1], layout.coordinates(int32_t(g.triangles[14]))[1]);
    EXPECT_EQ(packed.vertices[5 * 4 + 1], g.vertices[5].position.y());
}

TEST(SeAOCollect, InvertingTurnsTheWindingAndTheNormalsAndTheMaskPicksTheParts)
{
    using namespace LowPolyTest;
    const SceneSPtr scene = makeQuad(Eigen::Vector3f(0, 0, 1), Eigen::Vector3f(1, 0, 0), Eigen::Vector3f(0, 1, 0));
    CollectMeshDataVisitor plain(2u, 0, false);
    plain.walk(*scene);
    CollectMeshDataVisitor inverted(2u, 0, true);
    inverted.walk(*scene);
    ASSERT_EQ(plain.geometry.triangles.size(), 6u);
    EXPECT_EQ(plain.geometry.triangles, (std::vector<uint32_t>{0, 1, 3, 0, 3, 2}));
    EXPECT_EQ(inverted.geometry.triangles, (std::vector<uint32_t>{0, 3, 1, 0, 2, 3}));
    EXPECT_EQ(inverted.geometry.vertices[2].normal, Eigen::Vector3f(0, 0, -1));
    EXPECT_TRUE(plain.geometry.boxMaximum.isApprox(Eigen::Vector3f(1, 1, 0)));
    const SurfaceElementTree a = SurfaceElementTree::build(plain.geometry);
    const SurfaceElementTree b = SurfaceElementTree::build(inverted.geometry);
    EXPECT_TRUE(a.elements[0].normal.isApprox(-b.elements[0].normal));

    // An unselected part occludes with mask 1 but is never drawn.
    const SceneSPtr unselected = makeQuad(Eigen::Vector3f(0, 0, 1), Eigen::Vector3f(1, 0, 0),
                                          Eigen::Vector3f(0, 1, 0), Eigen::Vector2f::Zero(), false);
    CollectMeshDataVisitor selectedOnly(2u, 0, false);
    selectedOnly.walk(*unselected);
    EXPECT_TRUE(selectedOnly.geometry.empty());
    CollectMeshDataVisitor neighbours(1u, 0, false);
    neighbours.walk(*unselected);
    EXPECT_EQ(neighbours.geometry.triangles.size(), 6u);
    EXPECT_TRUE(neighbours.geometry.drawnTriangles.empty());
}

TEST(SeAOParameters, QualityTableAndTheBiasOfTheWalk)
{
    const uint32_t passes[4] = {3, 5, 10, 16};
    const float epsi[4] = {5.0f, 8.0f, 16.0f, 24.0f};
    for (int q = 0; q < 4; ++q) {
        EXPECT_EQ(SeAOParameters::forQuality(q).occlusionPasses, passes[q]);
        EXPECT_EQ(SeAOParameters::forQuality(q).epsi, epsi[q]);
        EXPECT_EQ(SeAOParameters::forQuality(q).triFade, 0.5f);
    }
    EXPECT_EQ(SeAOParameters::forQuality(7).occlusionPasses, 16u);
    SeAOParameters p;
    p.errorBias = 0.6f;
    EXPECT_NEAR(p.errbias(), std::pow(10.0f, -3.6f), 1e-7f);
    p.errorBias = 5.0f;
    EXPECT_EQ(p.errbias(), 1.0f);
    p.errorBias = 0.0f;
    EXPECT_NEAR(p.errbias(), 1e-9f, 1e-12f);
}
