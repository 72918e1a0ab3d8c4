// The shipped plugins on small hand-made triangle lists, through their C
// interface: mirrored UVs, degenerate triangles, and the welding that sets
// "mikkunrealtspace" apart.

#include "common/TestPaths.h"
#include "scene/processing/TangentSpacePlugin.h"

#include <Eigen/Geometry>

#include <gtest/gtest.h>

#include <vector>

using Ond::SceneGraph::MeshProcessing::TangentSpacePlugin;

namespace {

// Per-corner input and output, three corners a face.
struct Corners
{
    std::vector<Eigen::Vector3f> positions, normals, tangents;
    std::vector<Eigen::Vector2f> uvs;
    std::vector<float> signs;

    void add(const Eigen::Vector3f& p, const Eigen::Vector2f& uv, const Eigen::Vector3f& n = {0, 0, 1})
    {
        positions.push_back(p);
        uvs.push_back(uv);
        normals.push_back(n);
    }
};

const Corners& cornersOf(const TangentSpaceContext* c) { return *static_cast<const Corners*>(c->subMesh); }
Corners& mutableCornersOf(const TangentSpaceContext* c) { return *static_cast<Corners*>(c->subMesh); }

const TangentSpaceCallbacks callbacks = {
    [](const TangentSpaceContext* c) { return int(cornersOf(c).positions.size() / 3); },
    [](const TangentSpaceContext* c, float out[3], int f, int i) {
        Eigen::Map<Eigen::Vector3f>{out} = cornersOf(c).positions[size_t(f) * 3 + i];
    },
    [](const TangentSpaceContext* c, float out[3], int f, int i) {
        Eigen::Map<Eigen::Vector3f>{out} = cornersOf(c).normals[size_t(f) * 3 + i];
    },
    [](const TangentSpaceContext* c, float out[2], int f, int i) {
        Eigen::Map<Eigen::Vector2f>{out} = cornersOf(c).uvs[size_t(f) * 3 + i];
    },
    [](const TangentSpaceContext* c, const float t[3], float sign, int f, int i) {
        Corners& corners = mutableCornersOf(c);
        corners.tangents[size_t(f) * 3 + i] = Eigen::Vector3f(t[0], t[1], t[2]);
        corners.signs[size_t(f) * 3 + i] = sign;
    },
    nullptr};

void run(const char* plugin, Corners& corners)
{
    TangentSpacePlugin library(ZmfTest::buildDir()
                               + QStringLiteral("/plugins/tangentspace/%1.so").arg(QLatin1String(plugin)));
    ASSERT_TRUE(library.isValid());
    corners.tangents.assign(corners.positions.size(), Eigen::Vector3f::Constant(9.0f));
    corners.signs.assign(corners.positions.size(), 0.0f);
    const TangentSpaceContext context{&callbacks, &corners};
    ASSERT_TRUE(library.generate(&context, 180.0f));
}

void expectNear(const Eigen::Vector3f& a, const Eigen::Vector3f& b)
{
    EXPECT_LT((a - b).cwiseAbs().maxCoeff(), 1e-5f) << a.transpose() << " vs " << b.transpose();
}

// A unit square of two triangles sharing the diagonal (1, 0)-(0, 1); the
// second triangle's far corner has the given UV, and its copies of the
// diagonal's ends lie `crack` away from the first one's.
Corners square(const Eigen::Vector2f& uvFar, float crack)
{
    Corners c;
    c.add({0, 0, 0}, {0, 0});
    c.add({1, 0, 0}, {1, 0});
    c.add({0, 1, 0}, {0, 1});
    c.add({1 + crack, 0, 0}, {1, 0});
    c.add({1, 1, 0}, uvFar);
    c.add({0, 1 + crack, 0}, {0, 1});
    return c;
}

} // namespace

TEST(MikkTSpaceCore, MirroredUvsKeepSeparateFramesWithOppositeSigns)
{
    // Left triangle: u grows with x. Right one, across x = 1: u mirrored.
    Corners c;
    c.add({0, 0, 0}, {0, 0});
    c.add({1, 0, 0}, {1, 0});
    c.add({1, 1, 0}, {1, 1});
    c.add({1, 0, 0}, {1, 0});
    c.add({2, 0, 0}, {0, 0});
    c.add({1, 1, 0}, {1, 1});
    run("mikktspace", c);
    for (int k = 0; k < 3; ++k) {
        expectNear(c.tangents[k], {1, 0, 0});
        EXPECT_EQ(c.signs[k], 1.0f);
        expectNear(c.tangents[3 + k], {-1, 0, 0});
        EXPECT_EQ(c.signs[3 + k], -1.0f);
        // Either way the bitangent follows growing v.
        expectNear(c.signs[3 + k] * c.normals[3 + k].cross(c.tangents[3 + k]), {0, 1, 0});
    }
}

TEST(MikkTSpaceCore, FramesAreOrthogonalToTheNormalAndAveragedAcrossFaces)
{
    // A ridge: two faces at an angle, smooth normals on the shared edge.
    Corners c;
    const Eigen::Vector3f up(0, 0, 1);
    const Eigen::Vector3f ridge = Eigen::Vector3f(0, -1, 1).normalized();
    c.add({0, 0, 0}, {0, 0}, up);
    c.add({1, 0, 0}, {1, 0}, ridge);
    c.add({0, 1, 0}, {0, 1}, up);
    c.add({1, 0, 0}, {1, 0}, ridge);
    c.add({1, 1, 1}, {1, 1}, Eigen::Vector3f(0, -1, 2).normalized());
    c.add({0, 1, 0}, {0, 1}, up);
    run("mikktspace", c);
    for (size_t k = 0; k < 6; ++k) {
        EXPECT_NEAR(c.tangents[k].norm(), 1.0f, 1e-5f);
        EXPECT_NEAR(c.tangents[k].dot(c.normals[k]), 0.0f, 1e-5f);
    }
    // Shared corners of both faces carry one frame.
    expectNear(c.tangents[1], c.tangents[3]);
    expectNear(c.tangents[2], c.tangents[5]);
}

TEST(MikkTSpaceCore, DegenerateTriangleBorrowsTheFrameOfItsVertex)
{
    Corners c;
    c.add({0, 0, 0}, {0, 0});
    c.add({0, 0, 1}, {1, 0});
    c.add({0, 1, 0}, {0, 1});
    // Two corners on one point.
    c.add({0, 0, 0}, {0, 0});
    c.add({0, 0, 0}, {0, 0});
    c.add({0, 1, 0}, {0, 1});
    for (auto& n : c.normals)
        n = Eigen::Vector3f(1, 0, 0);
    run("mikktspace", c);
    expectNear(c.tangents[0], {0, 0, 1});
    expectNear(c.tangents[3], c.tangents[0]);
    expectNear(c.tangents[5], c.tangents[2]);
}

TEST(MikkTSpaceCore, WeldingToleranceSetsTheUnrealVariantApart)
{
    // The second face has u growing along (1, 1), the first along x, so the
    // two disagree on the tangent of their shared corners.
    const Eigen::Vector2f stretched(1.0f, 0.5f);

    // Exactly shared corners: both plugins average the two faces.
    Corners exactMikk = square(stretched, 0.0f), exactUnreal = square(stretched, 0.0f);
    run("mikktspace", exactMikk);
    run("mikkunrealtspace", exactUnreal);
    expectNear(exactMikk.tangents[1], exactMikk.tangents[3]);
    for (size_t k = 0; k < 6; ++k)
        expectNear(exactUnreal.tangents[k], exactMikk.tangents[k]);

    // A crack of 1e-6: "mikktspace" splits the vertex, the tolerant weld
    // closes it again.
    Corners crackedMikk = square(stretched, 1e-6f), crackedUnreal = square(stretched, 1e-6f);
    run("mikktspace", crackedMikk);
    run("mikkunrealtspace", crackedUnreal);
    EXPECT_GT((crackedMikk.tangents[1] - crackedMikk.tangents[3]).norm(), 0.05f);
    expectNear(crackedUnreal.tangents[1], crackedUnreal.tangents[3]);
    expectNear(crackedUnreal.tangents[1], exactMikk.tangents[1]);
}
