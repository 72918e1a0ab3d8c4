// The mesh repair in front of the half-edge structure, on small broken
// meshes: what is removed, what is split, what the log says, and that the
// result is a consistent half-edge structure.

#include "baking/lowpoly/DirectedEdgeStructure.h"
#include "common/LogCapture.h"

#include <gtest/gtest.h>

using namespace Ond::Baking;

namespace {

struct TestMesh
{
    std::vector<Eigen::Vector4f> positions;
    std::vector<uint32_t> indices;
    std::vector<Eigen::Vector3f> normals;
    uint32_t vertexCount = 0;
    uint32_t faceCount = 0;

    TestMesh(std::vector<Eigen::Vector3f> points, std::vector<uint32_t> faces) : indices(std::move(faces))
    {
        for (const auto& p : points) {
            positions.emplace_back(p.x(), p.y(), p.z(), 0.0f);
            normals.push_back(Eigen::Vector3f(float(normals.size()), 0.0f, 0.0f)); // tells copies apart
        }
        vertexCount = uint32_t(points.size());
        faceCount = uint32_t(indices.size() / 3);
    }

    MeshArrays arrays() { return {&positions, &vertexCount, &indices, &faceCount, &normals, nullptr, nullptr}; }
};

QStringList sanityLines(const ZmfTest::LogCapture& log)
{
    QStringList lines;
    for (const auto& l : log.entries()) {
        EXPECT_EQ(l.channel, QStringLiteral("Mesh sanity check"));
        EXPECT_EQ(l.level, 0);
        lines << l.message;
    }
    return lines;
}

// Opposites pair up both ways, run against each other, and every vertex's
// fan reaches all faces around it.
void expectConsistent(const DirectedEdgeStructure& s, const TestMesh& m)
{
    ASSERT_EQ(s.getEdges().size(), size_t(m.faceCount) * 3);
    ASSERT_EQ(s.getVertices().size(), size_t(m.vertexCount));
    std::vector<size_t> faces(m.vertexCount, 0);
    for (uint32_t e = 0; e < s.getEdges().size(); ++e) {
        EXPECT_EQ(s.fromVertex(e), m.indices[e]);
        ++faces[s.fromVertex(e)];
        const uint32_t o = s.opposite(e);
        if (o == InvalidIndex)
            continue;
        EXPECT_EQ(s.opposite(o), e);
        EXPECT_EQ(s.fromVertex(o), s.toVertex(e));
        EXPECT_EQ(s.toVertex(o), s.fromVertex(e));
    }
    for (const auto& v : s.getVertices()) {
        if (v.edge == InvalidIndex)
            continue;
        EXPECT_EQ(s.fromVertex(v.edge), v.index);
        EXPECT_EQ(s.fanOf(v.edge).size(), faces[v.index]) << "vertex " << v.index;
    }
}

// Apex 0, a closed cone of three faces around it.
std::vector<uint32_t> coneFaces(uint32_t a, uint32_t b, uint32_t c)
{
    return {0, a, b, 0, b, c, 0, c, a};
}

} // namespace

TEST(DirectedEdgeStructure, CleanClosedMeshIsLinkedWithoutReports)
{
    TestMesh tetra({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 2, 3});
    ZmfTest::LogCapture log;
    DirectedEdgeStructure s;
    s.create(tetra.arrays());
    EXPECT_TRUE(log.entries().empty());
    EXPECT_EQ(tetra.faceCount, 4u);
    EXPECT_EQ(tetra.vertexCount, 4u);
    for (const auto& e : s.getEdges())
        EXPECT_NE(e.opposite, InvalidIndex);
    expectConsistent(s, tetra);
    EXPECT_EQ(s.getEdgeMap().size(), 12u);
}

TEST(DirectedEdgeStructure, MeshWithoutFacesStaysEmptyAndSilent)
{
    TestMesh empty({{0, 0, 0}, {1, 0, 0}}, {});
    ZmfTest::LogCapture log;
    DirectedEdgeStructure s;
    s.create(empty.arrays());
    EXPECT_TRUE(s.isEmpty());
    EXPECT_TRUE(s.getVertices().empty());
    EXPECT_TRUE(log.entries().empty());
}

TEST(DirectedEdgeStructure, LaminaTwinsLeaveOneFace)
{
    // (0, 1, 2), its twin (0, 2, 1), and the same face rotated (1, 2, 0).
    TestMesh m({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {0, 1, 2, 0, 2, 1, 1, 2, 0});
    ZmfTest::LogCapture log;
    DirectedEdgeStructure s;
    s.create(m.arrays());
    EXPECT_EQ(m.faceCount, 1u);
    EXPECT_EQ(m.indices, (std::vector<uint32_t>{0, 1, 2}));
    EXPECT_EQ(sanityLines(log), (QStringList{QStringLiteral("Detected and removed 2 lamina faces."),
                                             QStringLiteral("In total, 2 faces were removed while cleaning the mesh.")}));
    expectConsistent(s, m);
}

TEST(DirectedEdgeStructure, DegenerateFacesGoAndUnusedVerticesAreCounted)
{
    // Face 1 has two corners 1e-6 apart, which leaves vertex 4 unused, like
    // vertex 5.
    TestMesh m({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {1, 1.000001f, 0}, {7, 7, 7}},
               {0, 1, 2, 2, 3, 4, 1, 3, 2});
    ZmfTest::LogCapture log;
    DirectedEdgeStructure s;
    s.create(m.arrays());
    EXPECT_EQ(m.faceCount, 2u);
    // The last face filled the hole.
    EXPECT_EQ(m.indices, (std::vector<uint32_t>{0, 1, 2, 1, 3, 2}));
    EXPECT_EQ(m.vertexCount, 6u);
    EXPECT_EQ(sanityLines(log),
              (QStringList{QStringLiteral("In total, 1 faces were removed while cleaning the mesh."),
                           QStringLiteral("Detected and removed 2 isolated vertices."),
                           QStringLiteral("Detected and removed 1 faces (degenerate or duplicate).")}));
    expectConsistent(s, m);
    // The shared edge 1-2 is linked.
    EXPECT_NE(s.opposite(1), InvalidIndex);
}

TEST(DirectedEdgeStructure, ThirdFaceOnAnEdgeIsDetachedByNormal)
{
    // Edge 0 -> 1 is used by faces 0 and 1, 1 -> 0 by face 2. Faces 0 and 2
    // face +z, face 1 faces -z: face 1 loses the edge and gets copies of
    // vertices 0 and 1.
    TestMesh m({{0, 0, 0}, {1, 0, 0}, {0.5f, 1, 0}, {0.5f, -1, 0}, {0.5f, -1, 0.2f}},
               {0, 1, 2, 0, 1, 3, 1, 0, 4});
    ZmfTest::LogCapture log;
    DirectedEdgeStructure s;
    s.create(m.arrays());
    EXPECT_EQ(m.faceCount, 3u);
    EXPECT_EQ(m.vertexCount, 7u);
    EXPECT_EQ(m.indices, (std::vector<uint32_t>{0, 1, 2, 5, 6, 3, 1, 0, 4}));
    EXPECT_EQ(m.positions[5], m.positions[0]);
    EXPECT_EQ(m.positions[6], m.positions[1]);
    EXPECT_EQ(m.normals[5], m.normals[0]);
    EXPECT_EQ(m.normals[6], m.normals[1]);
    EXPECT_EQ(sanityLines(log), (QStringList{QStringLiteral("Detected and corrected 1 duplicated edges."),
                                             QStringLiteral("Detected and removed 1 isolated edges.")}));
    expectConsistent(s, m);
    EXPECT_EQ(s.opposite(0), 6u); // face 0's edge 0 -> 1 against face 2's 1 -> 0
    EXPECT_EQ(s.opposite(3), InvalidIndex);
}

TEST(DirectedEdgeStructure, FourFacesOnAnEdgePairUp)
{
    // Two sheets crossing along edge 0-1: each face pairs with the one that
    // continues its own sheet. The first pair keeps the edge, the second
    // moves to copies of vertices 0 and 1 and stays linked there.
    TestMesh m({{0, 0, 0}, {1, 0, 0}, {0.5f, 1, 0}, {0.5f, -1, 0}, {0.5f, 0, 1}, {0.5f, 0, -1}},
               {0, 1, 2, 1, 0, 3, 0, 1, 4, 1, 0, 5});
    ZmfTest::LogCapture log;
    DirectedEdgeStructure s;
    s.create(m.arrays());
    EXPECT_EQ(m.vertexCount, 8u);
    EXPECT_EQ(m.indices, (std::vector<uint32_t>{0, 1, 2, 1, 0, 3, 6, 7, 4, 7, 6, 5}));
    EXPECT_EQ(s.opposite(0), 3u);
    EXPECT_EQ(s.opposite(6), 9u);
    expectConsistent(s, m);
    EXPECT_EQ(sanityLines(log), (QStringList{QStringLiteral("Detected and corrected 1 duplicated edges."),
                                             QStringLiteral("Detected and removed 1 grouped edges.")}));
}

TEST(DirectedEdgeStructure, ConesSharingTheirApexAreSplit)
{
    std::vector<uint32_t> faces = coneFaces(1, 2, 3);
    const std::vector<uint32_t> lower = coneFaces(4, 6, 5);
    faces.insert(faces.end(), lower.begin(), lower.end());
    TestMesh m({{0, 0, 0}, {1, 0, 1}, {-1, 1, 1}, {-1, -1, 1}, {1, 0, -1}, {-1, 1, -1}, {-1, -1, -1}}, faces);
    ZmfTest::LogCapture log;
    DirectedEdgeStructure s;
    s.create(m.arrays());
    EXPECT_EQ(m.vertexCount, 8u);
    EXPECT_EQ(m.positions[7], m.positions[0]);
    EXPECT_EQ(m.normals[7], m.normals[0]);
    // One cone keeps the apex, the other uses the copy throughout.
    int onApex = 0, onCopy = 0;
    for (uint32_t f = 0; f < m.faceCount; ++f) {
        onApex += m.indices[f * 3] == 0;
        onCopy += m.indices[f * 3] == 7;
    }
    EXPECT_EQ(onApex, 3);
    EXPECT_EQ(onCopy, 3);
    EXPECT_EQ(sanityLines(log),
              (QStringList{QStringLiteral("Detected and corrected 1 incorrect neighborhoods. This is most likely due "
                                          "to parts of the mesh joined by a single vertex"),
                           QStringLiteral("Detected and corrected 1 non manifold vertices.")}));
    expectConsistent(s, m);
}
