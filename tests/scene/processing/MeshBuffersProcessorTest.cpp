// Deindexing makes every corner a vertex of its own; reindexing merges the
// corners that agree in every buffer again.

#include "scene/SceneTestUtil.h"
#include "scene/processing/MeshBuffersProcessor.h"
#include "scene/processing/MeshProcessing.h"

#include <gtest/gtest.h>

using namespace Ond::SceneGraph;
using namespace Ond::SceneGraph::MeshProcessing;

namespace {

// A unit square of two triangles in the xy plane, then a second SubMesh
// with one triangle over vertices 1, 4, 2; UVs registered for channel 7.
std::shared_ptr<Mesh::Data> twoPartSquare()
{
    std::vector<SubMesh> subs;
    subs.push_back(SceneTest::triangles({0, 1, 2, 0, 2, 3}));
    subs.push_back(SceneTest::triangles({1, 4, 2}));
    auto data = std::make_shared<Mesh::Data>(
        makeBuffer(std::vector<Eigen::Vector3f>{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {2, 0.5f, 0}}),
        nullptr, nullptr, nullptr, nullptr, std::vector<Vec2BufferUPtr>(), std::move(subs));
    data->addUvSet(makeBuffer(std::vector<Eigen::Vector2f>{{0, 0}, {1, 0}, {1, 1}, {0, 1}, {2, 0.5f}}), {7});
    return data;
}

} // namespace

TEST(MeshBuffersProcessor, DeindexGivesEveryCornerItsOwnVertex)
{
    const auto source = twoPartSquare();
    const auto flat = MeshDeindexer(source).process();
    ASSERT_NE(flat, source);
    ASSERT_EQ(flat->getVertexCount(), 9u);
    ASSERT_EQ(flat->getSubMeshCount(), 2u);
    EXPECT_EQ(std::vector<uint32_t>(flat->getSubMesh(1)->indices->begin(), flat->getSubMesh(1)->indices->end()),
              (std::vector<uint32_t>{6, 7, 8}));
    EXPECT_EQ(flat->getSubMesh(1)->primitiveCount, 1u);
    const std::vector<uint32_t> corners{0, 1, 2, 0, 2, 3, 1, 4, 2};
    for (size_t k = 0; k < corners.size(); ++k) {
        EXPECT_EQ((*flat->getPositions())[k], (*source->getPositions())[corners[k]]);
        EXPECT_EQ((*flat->getUvSet(0))[k], (*source->getUvSet(0))[corners[k]]);
    }
    EXPECT_EQ(flat->getUvChannels().at(7), std::vector<size_t>{0});
    EXPECT_EQ(source->getVertexCount(), 5u); // the source is only read

    // Nothing to split: the same Data comes back.
    auto empty = SceneTest::makeData({}, {}, {});
    EXPECT_EQ(MeshDeindexer(empty).process(), empty);
}

TEST(MeshBuffersProcessor, ReindexRestoresSharedVertices)
{
    const auto source = twoPartSquare();
    const auto round = MeshReindexer(MeshDeindexer(source).process()).process();
    ASSERT_EQ(round->getVertexCount(), 5u);
    // Same corners in the same order.
    size_t k = 0;
    for (size_t s = 0; s < source->getSubMeshCount(); ++s) {
        const auto& before = *source->getSubMesh(s)->indices;
        const auto& after = *round->getSubMesh(s)->indices;
        ASSERT_EQ(before.size(), after.size());
        for (size_t i = 0; i < before.size(); ++i, ++k)
            EXPECT_EQ((*round->getPositions())[after[i]], (*source->getPositions())[before[i]]) << k;
    }
    EXPECT_EQ(round->getUvChannels().at(7), std::vector<size_t>{0});

    // Corners that differ in any buffer stay apart: vertex 2 gets another
    // normal in the second SubMesh.
    auto flat = MeshDeindexer(source).process();
    std::vector<Eigen::Vector3f> normals(flat->getVertexCount(), Eigen::Vector3f(0, 0, 1));
    normals[8] = Eigen::Vector3f(0, 1, 0);
    flat->setNormals(makeBuffer(std::move(normals)));
    EXPECT_EQ(MeshReindexer(flat).process()->getVertexCount(), 6u);
}

TEST(MeshProcessing, VertexNormalsAreAreaWeightedAndNormalised)
{
    auto data = twoPartSquare();
    computeVertexNormalBuffer(*data);
    ASSERT_NE(data->getNormals(), nullptr);
    for (const auto& n : *data->getNormals())
        EXPECT_TRUE(n.isApprox(Eigen::Vector3f(0, 0, 1))) << n.transpose();

    // A vertex no triangle uses keeps a zero normal.
    std::vector<SubMesh> subs;
    subs.push_back(SceneTest::triangles({0, 1, 2}));
    auto loose = SceneTest::makeData({{0, 0, 0}, {0, 0, 1}, {0, 1, 0}, {5, 5, 5}}, {}, std::move(subs));
    computeVertexNormalBuffer(*loose);
    EXPECT_TRUE((*loose->getNormals())[0].isApprox(Eigen::Vector3f(-1, 0, 0)));
    EXPECT_EQ((*loose->getNormals())[3], Eigen::Vector3f::Zero());
}
