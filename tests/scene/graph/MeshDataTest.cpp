#include "scene/graph/Mesh.h"
#include "scene/graph/MeshDisplayComponent.h"

#include "../SceneTestUtil.h"


#include "../SignalRecorder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace Ond::SceneGraph;

TEST(MeshData, BuffersAreMovedInNotCopied)
{
    std::vector<Eigen::Vector3f> positions{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    const Eigen::Vector3f* storage = positions.data();
    auto buffer = makeBuffer(std::move(positions));
    EXPECT_EQ(buffer->data(), storage);
    Mesh::Data data(std::move(buffer), nullptr, nullptr, nullptr, nullptr, {}, {});
    EXPECT_EQ(data.getPositions()->data(), storage);
    EXPECT_EQ(data.getVertexCount(), 3u);
    EXPECT_EQ(data.getNormals(), nullptr);
    EXPECT_EQ(data.getUvSet(0), nullptr);

    // clone() is deep.
    auto copy = data.getPositions()->clone();
    EXPECT_NE(copy->data(), storage);
    EXPECT_EQ((*copy)[1], Eigen::Vector3f(1, 0, 0));
}

TEST(MeshData, UvSetsAndChannels)
{
    Mesh::Data data;
    const uint64_t r0 = data.getRevision();
    data.addUvSet(nullptr, {1});
    data.addUvSet(makeBuffer(std::vector<Eigen::Vector2f>{}), {1});
    EXPECT_EQ(data.getUvSetCount(), 0u);
    EXPECT_TRUE(data.getUvChannelIds().empty());
    EXPECT_EQ(data.getRevision(), r0);

    data.addUvSet(makeBuffer(std::vector<Eigen::Vector2f>{{0, 0}}), {7, 2});
    data.addUvSet(makeBuffer(std::vector<Eigen::Vector2f>{{1, 1}}), {2});
    EXPECT_EQ(data.getUvSetCount(), 2u);
    EXPECT_EQ(data.getUvChannelIds(), (std::vector<int32_t>{2, 7}));
    EXPECT_EQ(data.getUvChannels().at(2), (std::vector<size_t>{0, 1}));
    EXPECT_EQ(data.getUvChannels().at(7), (std::vector<size_t>{0}));
    EXPECT_NE(data.getRevision(), r0);
}

TEST(MeshData, SubMeshAccessAndMaterials)
{
    std::vector<SubMesh> subs;
    subs.push_back(SceneTest::triangles({0, 1, 2}, VertexColorMaterialDefinition::instance()));
    subs.push_back(SceneTest::triangles({0, 1, 2, 2, 1, 0}, std::make_shared<UserMaterialDefinition>("steel")));
    subs.push_back(SubMesh(nullptr, PrimitiveType::Triangles, 3, nullptr));
    auto data = SceneTest::makeData({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {}, std::move(subs));

    EXPECT_EQ(data->getSubMesh(1)->primitiveCount, 2u);
    EXPECT_EQ(data->getSubMesh(2)->primitiveCount, 0u);
    EXPECT_EQ(data->getSubMesh(3), nullptr);
    EXPECT_EQ(data->findSubMeshByMaterialName("steel"), 1);
    EXPECT_EQ(data->findSubMeshByMaterialName("wood"), -1);
    EXPECT_EQ(data->getSubMeshFlags(0).value(), DefaultRenderFlags);
    EXPECT_EQ(data->getSubMeshFlags(9).value(), 0);

    data->setSubMeshName(0, "ignored"); // not a user material
    data->setSubMeshName(1, "iron");
    data->setSubMeshName(9, "ignored");
    EXPECT_EQ(data->findSubMeshByMaterialName("iron"), 1);
    data->setSubMeshColor(2, {1, 0, 0, 1}); // no material: nothing happens
    data->setSubMeshLabel(1, "Iron");
    EXPECT_EQ(data->getSubMesh(1)->material->label, "Iron");

    auto onlyShared = SceneTest::makeData({}, {}, {});
    onlyShared->addSubMesh(SceneTest::triangles({}, WireframeMaterialDefinition::instance()));
    EXPECT_EQ(onlyShared->findSubMeshByMaterialName(""), -1);
    EXPECT_EQ(WireframeMaterialDefinition::instance(), WireframeMaterialDefinition::instance());

    int visited = 0;
    EXPECT_FALSE(data->forAllSubMeshes([&](SubMesh&) { return ++visited < 2; }));
    EXPECT_EQ(visited, 2);
    const Mesh::Data& constData = *data;
    EXPECT_TRUE(constData.forAllSubMeshes([](const SubMesh&) { return true; }));
}

TEST(MeshData, BoxIsLazyAndBulkSetterLeavesIt)
{
    auto data = SceneTest::makeData({{-1, 2, 3}, {4, -5, 6}}, {}, {});
    EXPECT_EQ(data->getBoundingBox(), BoundingBox({-1, -5, 3}, {4, 2, 6}));

    const uint64_t before = data->getRevision();
    data->setBuffers(makeBuffer(std::vector<Eigen::Vector3f>{{100, 100, 100}}), nullptr, nullptr, nullptr,
                     nullptr, {}, {});
    EXPECT_NE(data->getRevision(), before);
    EXPECT_EQ(data->getBoundingBox(), BoundingBox({-1, -5, 3}, {4, 2, 6}));
    data->resetBoundingBox();
    EXPECT_EQ(data->getBoundingBox(), BoundingBox({100, 100, 100}, {100, 100, 100}));
}

TEST(MeshData, RevisionsDifferBetweenDataAndAfterEachChange)
{
    Mesh::Data a;
    Mesh::Data b;
    EXPECT_NE(a.getRevision(), b.getRevision());
    const uint64_t r = a.getRevision();
    a.setNormals(nullptr);
    const uint64_t r2 = a.getRevision();
    EXPECT_NE(r2, r);
    a.setTangents(nullptr, nullptr);
    EXPECT_NE(a.getRevision(), r2);
    EXPECT_NE(a.clone()->getRevision(), a.getRevision());
}

TEST(Mesh, NameAndDataDefaults)
{
    Mesh mesh;
    EXPECT_TRUE(mesh.getName().isEmpty());
    EXPECT_EQ(mesh.getData(), nullptr);
    EXPECT_FALSE(mesh.isUdim());
    mesh.setName("body");
    EXPECT_EQ(mesh.getName(), "body");
}

// Readers on other threads keep the Data they loaded while a writer swaps;
// every Data they see is whole (its vertex count matches its marker).
TEST(Mesh, AtomicDataSwapUnderReaders)
{
    auto makeMarked = [](size_t n) {
        std::vector<Eigen::Vector3f> positions(n, Eigen::Vector3f(float(n), 0, 0));
        return SceneTest::makeData(std::move(positions), {}, {});
    };
    auto mesh = std::make_shared<Mesh>(makeMarked(1));
    std::atomic<bool> stop{false};
    std::atomic<int> bad{0};
    std::atomic<long> reads{0};

    std::vector<std::thread> readers;
    for (int t = 0; t < 3; ++t) {
        readers.emplace_back([&] {
            while (!stop.load()) {
                const auto data = mesh->getData();
                const auto* positions = data->getPositions();
                const size_t n = positions->size();
                if ((*positions)[n - 1].x() != float(n) || (*positions)[0].x() != float(n))
                    ++bad;
                ++reads;
            }
        });
    }
    auto held = mesh->getData();
    for (size_t i = 2; i < 3000; ++i) {
        mesh->setData(makeMarked(i % 64 + 1));
        mesh->setName(QString::number(i));
    }
    // Let the readers run at least a little after the last swap.
    while (reads.load() < 100)
        std::this_thread::yield();
    stop = true;
    for (auto& r : readers)
        r.join();
    EXPECT_EQ(bad.load(), 0);
    // The Data taken before the swaps is still intact.
    EXPECT_EQ(held->getVertexCount(), 1u);
    EXPECT_EQ(mesh->getName(), "2999");
}

TEST(MeshDisplayComponent, FlagsAndParameters)
{
    std::vector<SubMesh> subs;
    subs.push_back(SceneTest::triangles({0, 1, 2}, nullptr, 0x1));
    subs.push_back(SceneTest::triangles({0, 1, 2}, nullptr, 0x4));
    auto mesh = std::make_shared<Mesh>(SceneTest::makeData({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {}, std::move(subs)));
    MeshDisplayComponent display(mesh);
    EXPECT_EQ(display.getRenderFlags().value(), 0x5);
    display.setRenderFlags(0x40);
    EXPECT_EQ(mesh->getData()->getSubMeshFlags(0).value(), 0x40);
    EXPECT_EQ(mesh->getData()->getSubMeshFlags(1).value(), 0x40);
    EXPECT_EQ(MeshDisplayComponent().getRenderFlags().value(), 0);
    EXPECT_TRUE(MeshDisplayComponent().getBoundingBox().isEmpty());
    EXPECT_TRUE(MeshDisplayComponent().getGlobalTransform().isIdentity());
    EXPECT_TRUE(MeshDisplayComponent().getGlobalTransforms().empty());

    SceneTest::SignalRecorder spy(&display, &MeshDisplayComponent::parameterChanged);
    display.setSubdivisionLength(10.0f);
    EXPECT_EQ(spy.count(), 0);
    MeshDisplayComponent source;
    source.setSubdivisionMethod(2);
    source.setSubdivisionNumber(4);
    display.copyFrom(source);
    EXPECT_EQ(spy.count(), 2);
    EXPECT_EQ(display.getSubdivisionNumber(), 4u);
    EXPECT_EQ(MeshDisplayComponent::parameterName(2), "subdivision_length");
    EXPECT_EQ(MeshDisplayComponent::parameterName(-1), "");
}
