// Per-vertex convexity on welded meshes of known shape: a plane, spheres
// seen from outside and inside, the position scale, and the thread-pool
// chunking, which must not change a single value.

#include "baking/lowpoly/CurvatureComputation.h"
#include "baking/lowpoly/WeldedMesh.h"
#include "common/TestPaths.h"

#include <QFile>

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace Ond::Baking;

namespace {

struct RawMesh
{
    std::vector<float> positions; // 4 per vertex
    std::vector<float> normals;   // 3 per vertex
    std::vector<uint32_t> indices;

    uint32_t add(float x, float y, float z, float nx, float ny, float nz)
    {
        positions.insert(positions.end(), {x, y, z, 1.0f});
        normals.insert(normals.end(), {nx, ny, nz});
        return uint32_t(positions.size() / 4 - 1);
    }
    uint32_t vertexCount() const { return uint32_t(positions.size() / 4); }
    uint32_t triangleCount() const { return uint32_t(indices.size() / 3); }
    WeldedMesh weld() const
    {
        return WeldedMesh::weld(positions.data(), normals.empty() ? nullptr : normals.data(), vertexCount(),
                                indices.data(), triangleCount());
    }
};

// A grid of (columns + 1) x (rows + 1) vertices, two triangles per cell.
void addGridFaces(RawMesh& m, uint32_t first, int columns, int rows)
{
    for (int r = 0; r < rows; ++r)
        for (int c = 0; c < columns; ++c) {
            const uint32_t a = first + r * (columns + 1) + c, b = a + 1, d = a + columns + 1, e = d + 1;
            m.indices.insert(m.indices.end(), {a, b, e, a, e, d});
        }
}

// A latitude-longitude sphere as a file would hold it: the seam column is
// doubled and each pole is a row of coincident vertices, so only welding
// makes it closed. Normals point out, or in when inward is set.
RawMesh uvSphere(float radius, int slices, int stacks, bool inward = false)
{
    const double pi = 3.14159265358979323846;
    RawMesh m;
    for (int i = 0; i <= stacks; ++i)
        for (int j = 0; j <= slices; ++j) {
            const double theta = pi * i / stacks, phi = 2.0 * pi * (j % slices) / slices;
            // Exact poles, so that their rows weld.
            const double st = (i == 0 || i == stacks) ? 0.0 : std::sin(theta);
            const double ct = i == 0 ? 1.0 : i == stacks ? -1.0 : std::cos(theta);
            const float nx = float(st * std::cos(phi)), ny = float(st * std::sin(phi)), nz = float(ct);
            const float s = inward ? -1.0f : 1.0f;
            m.add(radius * nx, radius * ny, radius * nz, s * nx, s * ny, s * nz);
        }
    addGridFaces(m, 0, slices, stacks);
    return m;
}

} // namespace

TEST(WeldedMesh, MergesExactPositionsKeepsTrianglesAndAveragesNormals)
{
    RawMesh m;
    // One cube corner from three faces, each with its own normal.
    m.add(1, 1, 1, 1, 0, 0);
    m.add(1, 0, 0, 1, 0, 0);
    m.add(1, 1, 0, 1, 0, 0);
    m.add(1, 1, 1, 0, 1, 0);
    m.add(0, 1, 0, 0, 1, 0);
    m.add(-0.0f, 1, 1, 0, 1, 0);
    m.add(1, 1, 1, 0, 0, 1);
    m.add(0, 1, 1, 0, 0, 1);
    m.add(1, 0, 1, 0, 0, 1);
    m.indices = {0, 1, 2, 3, 4, 5, 6, 7, 8};

    const WeldedMesh w = m.weld();
    ASSERT_EQ(w.positions.size(), 6u); // the corner once, and -0 is 0
    EXPECT_EQ(w.weldedVertex[0], 0u);
    EXPECT_EQ(w.weldedVertex[3], 0u);
    EXPECT_EQ(w.weldedVertex[6], 0u);
    EXPECT_EQ(w.weldedVertex[7], w.weldedVertex[5]);
    ASSERT_EQ(w.indices.size(), 9u);
    for (size_t i = 0; i < 9; ++i)
        EXPECT_EQ(w.indices[i], w.weldedVertex[m.indices[i]]);
    const float d = 1.0f / std::sqrt(3.0f);
    EXPECT_TRUE(w.normals[0].isApprox(Eigen::Vector3f(d, d, d), 1e-6f));
    EXPECT_EQ(w.positions[0].w(), 1.0f);
}

TEST(WeldedMesh, FaceNormalsStandInForMissingOnes)
{
    RawMesh m;
    m.add(0, 0, 0, 0, 0, 0);
    m.add(1, 0, 0, 0, 0, 0);
    m.add(0, 1, 0, 0, 0, 0);
    m.indices = {0, 1, 2};
    const WeldedMesh zero = m.weld();
    m.normals.clear();
    const WeldedMesh none = m.weld();
    for (const WeldedMesh* w : {&zero, &none})
        for (const auto& n : w->normals)
            EXPECT_TRUE(n.isApprox(Eigen::Vector3f(0, 0, 1)));
}

TEST(CurvatureComputation, PlaneIsFlatEverywhere)
{
    RawMesh m;
    for (int r = 0; r <= 8; ++r)
        for (int c = 0; c <= 8; ++c)
            m.add(0.3f * c, 0.2f * r, 5.0f, 0, 0, 1);
    addGridFaces(m, 0, 8, 8);
    const std::vector<float> k = CurvatureComputation::ofWeldedMesh(m.weld());
    ASSERT_EQ(k.size(), 81u);
    for (size_t i = 0; i < k.size(); ++i)
        EXPECT_EQ(k[i], 0.0f) << "vertex " << i;
}

TEST(CurvatureComputation, SphereIsOneOverItsRadiusSignedByItsNormals)
{
    const float radius = 2.0f;
    for (bool inward : {false, true}) {
        const WeldedMesh w = uvSphere(radius, 32, 16, inward).weld();
        ASSERT_EQ(w.positions.size(), size_t(32 * 15 + 2)); // seam and poles welded
        const std::vector<float> k = CurvatureComputation::ofWeldedMesh(w);
        ASSERT_EQ(k.size(), w.positions.size());
        const float expected = (inward ? -1.0f : 1.0f) / radius;
        for (size_t i = 0; i < k.size(); ++i)
            EXPECT_NEAR(k[i], expected, 0.05f * std::abs(expected)) << "vertex " << i << (inward ? " inward" : "");
    }
}

TEST(CurvatureComputation, PositionScaleDividesTheCurvature)
{
    const WeldedMesh w = uvSphere(3.0f, 24, 12).weld();
    const std::vector<float> unit = CurvatureComputation::ofWeldedMesh(w);
    const std::vector<float> doubled = CurvatureComputation::ofWeldedMesh(w, 2.0f);
    for (size_t i = 0; i < unit.size(); ++i)
        EXPECT_NEAR(doubled[i], unit[i] / 2.0f, 1e-5f);

    // 200 over the largest extent: any sphere reads 1/100.
    for (float radius : {0.01f, 3.0f, 500.0f}) {
        const WeldedMesh s = uvSphere(radius, 24, 12).weld();
        const float scale = CurvatureComputation::normalizingScale(s.positions);
        EXPECT_NEAR(scale, 100.0f / radius, 1e-3f * scale);
        const std::vector<float> k = CurvatureComputation::ofWeldedMesh(s, scale);
        for (float v : k)
            EXPECT_NEAR(v, 0.01f, 0.0005f) << "radius " << radius;
    }
}

TEST(CurvatureComputation, ChunksGiveTheSameValuesAsOneRange)
{
    // Over a thousand vertices, so that the default chunking splits.
    const WeldedMesh w = uvSphere(1.5f, 64, 40).weld();
    ASSERT_GT(w.positions.size(), 2 * size_t(CurvatureComputation::ChunkSize));

    std::vector<Eigen::Vector4f> positions = w.positions;
    std::vector<Eigen::Vector3f> normals = w.normals;
    std::vector<uint32_t> indices = w.indices;
    uint32_t vertexCount = uint32_t(positions.size()), faceCount = uint32_t(indices.size() / 3);
    DirectedEdgeStructure structure;
    structure.create({&positions, &vertexCount, &indices, &faceCount, &normals, nullptr, nullptr});
    const CurvatureComputation computation(positions, normals, structure);

    std::vector<float> single(positions.size(), -1.0f);
    computation.computeRange(0, uint32_t(structure.getVertices().size()), single.data());
    const std::vector<float> pooled = computation.compute();
    const std::vector<float> small = computation.compute(7);
    ASSERT_EQ(pooled.size(), single.size());
    for (size_t i = 0; i < single.size(); ++i) {
        EXPECT_EQ(pooled[i], single[i]) << i;
        EXPECT_EQ(small[i], single[i]) << i;
    }
    EXPECT_EQ(CurvatureComputation::ofWeldedMesh(w), pooled);
}

TEST(CurvatureComputation, LoneTriangleAndLooseVertices)
{
    // Two neighbours only: the fit is singular and the largest directional
    // curvature stands. Normals tilt away from the centre, like a cap.
    RawMesh m;
    m.add(0, 0, 0, 0, 0, 1);
    const float t = 0.1f / std::sqrt(1.01f), z = 1.0f / std::sqrt(1.01f);
    m.add(1, 0, 0, t, 0, z);
    m.add(0, 2, 0, 0, t, z);
    m.add(9, 9, 9, 0, 0, 1); // on no face
    m.indices = {0, 1, 2};
    const WeldedMesh w = m.weld();
    const std::vector<float> k = CurvatureComputation::ofWeldedMesh(w);
    ASSERT_EQ(k.size(), 4u);
    // Towards vertex 1: -(1, 0, 0).(t, 0, z - 1) / 1 = -t; towards 2: -(2 t) / 4.
    EXPECT_FLOAT_EQ(k[0], t / 2.0f);
    EXPECT_EQ(k[3], 0.0f);

    // A mesh whose faces all vanish in the repair: all zero, no crash.
    RawMesh flat;
    flat.add(0, 0, 0, 0, 0, 1);
    flat.add(0, 0, 0, 0, 0, 1);
    flat.add(1, 0, 0, 0, 0, 1);
    flat.indices = {0, 1, 2};
    const std::vector<float> none = CurvatureComputation::ofWeldedMesh(flat.weld());
    ASSERT_EQ(none.size(), 2u);
    EXPECT_EQ(none[0], 0.0f);
    EXPECT_EQ(none[1], 0.0f);
}

namespace {

// box_high.obj as a grab sees it: one vertex per corner, with its normal.
RawMesh readCorners(const QString& path)
{
    RawMesh m;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return m;
    std::vector<Eigen::Vector3f> v, vn;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine();
        const QList<QByteArray> f = line.simplified().split(' ');
        if (f.size() == 4 && f[0] == "v")
            v.emplace_back(f[1].toFloat(), f[2].toFloat(), f[3].toFloat());
        else if (f.size() == 4 && f[0] == "vn")
            vn.emplace_back(f[1].toFloat(), f[2].toFloat(), f[3].toFloat());
        else if (f.size() == 4 && f[0] == "f")
            for (int c = 1; c <= 3; ++c) {
                const QList<QByteArray> ix = f[c].split('/');
                const Eigen::Vector3f& p = v[size_t(ix[0].toInt() - 1)];
                const Eigen::Vector3f& n = vn[size_t(ix[2].toInt() - 1)];
                m.indices.push_back(m.add(p.x(), p.y(), p.z(), n.x(), n.y(), n.z()));
            }
    }
    return m;
}

} // namespace

// The reference high mesh, from corners as a grab sees them: the dome is a
// sphere of radius 0.35, the bevelled box corners bulge, the fillet at the
// bottom of the round hole and the floors of the grooves are hollow.
TEST(CurvatureComputation, BoxHighReadsItsShapes)
{
    const RawMesh corners = readCorners(ZmfTest::testDataDir() + "/box_high.obj");
    ASSERT_EQ(corners.triangleCount(), 64544u);
    const WeldedMesh w = corners.weld();
    const std::vector<float> k = CurvatureComputation::ofWeldedMesh(w);
    ASSERT_EQ(k.size(), w.positions.size());

    int dome = 0, corner = 0, fillet = 0, groove = 0;
    for (size_t i = 0; i < k.size(); ++i) {
        ASSERT_TRUE(std::isfinite(k[i])) << "vertex " << i;
        const Eigen::Vector3f p = w.positions[i].head<3>();
        if (p.z() < -1.04f && std::hypot(p.x(), p.y()) < 0.15f) {
            EXPECT_NEAR(k[i], 1.0f / 0.35f, 0.01f / 0.35f) << "dome vertex " << i;
            ++dome;
        } else if (p.x() > 0.9f && p.y() > 0.9f && p.z() > 0.9f) {
            EXPECT_GT(k[i], 0.0f) << "corner vertex " << i;
            ++corner;
        } else if (const float r = std::hypot(p.x(), p.y()); p.z() > 0.951f && p.z() < 0.99f && r > 0.3f && r < 0.42f) {
            EXPECT_LT(k[i], 0.0f) << "fillet vertex " << i;
            ++fillet;
        } else if (p.x() > 0.965f && p.x() < 0.975f && std::abs(std::abs(p.y()) - 0.4f) < 0.01f) {
            EXPECT_LT(k[i], 0.0f) << "groove vertex " << i;
            ++groove;
        }
    }
    EXPECT_GT(dome, 50);
    EXPECT_GT(corner, 1000);
    EXPECT_GT(fillet, 100);
    EXPECT_GT(groove, 5);
}
