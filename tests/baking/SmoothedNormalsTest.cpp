// Smoothed normals: an average over the distinct directions met at one
// position, not over the faces.

#include "baking/detail/SmoothedNormals.h"

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include <vector>

using Ond::Baking::computeSmoothedNormals;
using V = Eigen::Vector3f;

namespace {

std::vector<V> smooth(const std::vector<V>& positions, const std::vector<V>& normals)
{
    std::vector<V> out(positions.size(), V::Constant(-9.0f));
    computeSmoothedNormals(positions.data(), normals.data(), positions.size(), out.data());
    return out;
}

void expectNear(const V& a, const V& b)
{
    EXPECT_NEAR(a.x(), b.x(), 1e-5f);
    EXPECT_NEAR(a.y(), b.y(), 1e-5f);
    EXPECT_NEAR(a.z(), b.z(), 1e-5f);
}

} // namespace

TEST(SmoothedNormals, RepeatedDirectionsAtACornerCountOnce)
{
    // A cube corner split into five vertices: the +x face brings three of
    // them, two with a normal off by less than the tolerance. A face
    // average would lean towards +x.
    const V corner(1, 1, 1);
    const std::vector<V> positions = {corner, corner, corner, corner, corner, V(0, 0, 0)};
    const std::vector<V> normals = {V(1, 0, 0), V(0, 1, 0), V(1, 0, 0), V(0, 0, 1), V(1.00005f, 0, 0), V(0, 1, 0)};
    const std::vector<V> out = smooth(positions, normals);
    for (int i = 0; i < 5; ++i)
        expectNear(out[size_t(i)], V(1, 1, 1).normalized());
    // A lone vertex keeps its direction.
    expectNear(out[5], V(0, 1, 0));
}

TEST(SmoothedNormals, PositionsMustMatchExactly)
{
    const std::vector<V> positions = {V(0, 0, 0), V(0, 0, 1e-6f), V(0, 0, 0)};
    const std::vector<V> normals = {V(1, 0, 0), V(0, 1, 0), V(0, 1, 0)};
    const std::vector<V> out = smooth(positions, normals);
    expectNear(out[0], V(1, 1, 0).normalized());
    expectNear(out[2], V(1, 1, 0).normalized());
    expectNear(out[1], V(0, 1, 0));
}

TEST(SmoothedNormals, OppositeDirectionsFallBackToTheFirstVertexNormal)
{
    // The sum vanishes: every vertex of the group takes the first vertex's
    // normal, including the one that pointed the other way.
    const std::vector<V> positions = {V(2, 0, 0), V(2, 0, 0)};
    const std::vector<V> normals = {V(0, 0, 1), V(0, 0, -1)};
    const std::vector<V> out = smooth(positions, normals);
    expectNear(out[0], V(0, 0, 1));
    expectNear(out[1], V(0, 0, 1));
}

TEST(SmoothedNormals, UnnormalisedSumsAreNormalised)
{
    const std::vector<V> positions = {V(0, 1, 0), V(0, 1, 0)};
    const std::vector<V> normals = {V(3, 0, 0), V(0, 4, 0)};
    const std::vector<V> out = smooth(positions, normals);
    expectNear(out[0], V(3, 4, 0) / 5.0f);
    expectNear(out[1], V(3, 4, 0) / 5.0f);
}
