// Which post-processing steps a mesh gets, from the load flags and from
// what the mesh already has.

#include "common/TestPaths.h"
#include "scene/SceneTestUtil.h"
#include "common/LogCapture.h"
#include "scene/processing/MainProcessTaskList.h"
#include "scene/processing/TangentSpaceGenerator.h"

#include <gtest/gtest.h>

using namespace Ond::SceneGraph;
using namespace Ond::SceneGraph::MeshProcessing;
using Ond::SceneLoad::SceneLoadOptions;

namespace {

TangentSpaceGenerator::SPtr mikktspace()
{
    return std::make_shared<TangentSpaceGenerator>(ZmfTest::buildDir()
                                                   + QStringLiteral("/plugins/tangentspace/mikktspace.so"));
}

std::shared_ptr<MainProcessTaskList> listFor(uint32_t flags, TangentSpaceGenerator::SPtr generator = mikktspace())
{
    return MainProcessTaskList::fromOptions(SceneLoadOptions(flags, std::move(generator)), true, true);
}

std::shared_ptr<Mesh::Data> withNormals(std::shared_ptr<Mesh::Data> data)
{
    data->setNormals(makeBuffer(std::vector<Eigen::Vector3f>(data->getVertexCount(), Eigen::Vector3f(0, 0, 1))));
    return data;
}

} // namespace

TEST(MainProcessTaskList, FlagsDecideTheSteps)
{
    // Bits 0x02 and 0x80 are the importer's business; 0x10 and 0x20 ask
    // for nothing here.
    for (uint32_t flags : {0x00u, 0x02u, 0x82u, 0x30u, 0xB2u})
        EXPECT_EQ(listFor(flags), nullptr) << flags;

    const auto bake = listFor(63);
    ASSERT_NE(bake, nullptr);
    EXPECT_FALSE(bake->forceNormals);
    EXPECT_TRUE(bake->normalsIfMissing);
    EXPECT_TRUE(bake->forceTangents);
    EXPECT_TRUE(bake->tangentsIfMissing);
    EXPECT_FALSE(bake->forceBoundingBox);
    EXPECT_FALSE(bake->boundingBoxIfMissing);
    EXPECT_TRUE(bake->deindexBeforeTangents);
    EXPECT_TRUE(bake->reindexAfterTangents);

    const auto keep = listFor(0x04 | 0x40);
    ASSERT_NE(keep, nullptr);
    EXPECT_FALSE(keep->normalsIfMissing);
    EXPECT_FALSE(keep->forceTangents);
    EXPECT_TRUE(keep->tangentsIfMissing);
    EXPECT_TRUE(keep->boundingBoxIfMissing);

    // Without a generator in the options the process-wide default is taken.
    auto generator = mikktspace();
    TangentSpaceGenerator::setDefault(generator);
    EXPECT_EQ(listFor(0x08, nullptr)->tangentGenerator, generator);
    TangentSpaceGenerator::setDefault(nullptr);
}

TEST(MainProcessTaskList, StepsFollowWhatTheMeshLacks)
{
    const auto keepAll = listFor(0x01 | 0x04 | 0x40);
    // No normals, no tangents: normals, deindex, tangents, reindex, box.
    EXPECT_EQ(keepAll->getTasks(nullptr, SceneTest::unitCubeData()).size(), 5u);
    // Normals present.
    EXPECT_EQ(keepAll->getTasks(nullptr, withNormals(SceneTest::unitCubeData())).size(), 4u);

    // Tangents with binormals from a file are recomputed all the same;
    // tangents without binormals are kept.
    auto both = withNormals(SceneTest::unitCubeData());
    both->setTangents(both->getNormals()->clone(), both->getNormals()->clone());
    EXPECT_EQ(keepAll->getTasks(nullptr, both).size(), 4u);
    auto tangentsOnly = withNormals(SceneTest::unitCubeData());
    tangentsOnly->setTangents(tangentsOnly->getNormals()->clone(), nullptr);
    EXPECT_EQ(keepAll->getTasks(nullptr, tangentsOnly).size(), 1u);

    // Neither deindex nor reindex when the caller says so.
    auto plain = MainProcessTaskList::fromOptions(SceneLoadOptions(0x08, mikktspace()), false, false);
    EXPECT_EQ(plain->getTasks(nullptr, withNormals(SceneTest::unitCubeData())).size(), 1u);
}

TEST(MainProcessTaskList, MeshesWithoutUvsOrTrianglesGetNoFrames)
{
    ZmfTest::LogCapture log;
    const auto list = listFor(0x01 | 0x08, nullptr);
    ASSERT_EQ(list->tangentGenerator, nullptr);

    // No UV set: no tangents and not even the missing-generator warning.
    auto noUv = SceneTest::unitCubeData(DefaultRenderFlags, 0);
    EXPECT_EQ(list->getTasks(nullptr, noUv).size(), 1u); // normals only
    EXPECT_TRUE(log.lines().isEmpty());

    // Lines only: neither normals nor tangents.
    std::vector<SubMesh> lines;
    lines.emplace_back(makeBuffer(std::vector<uint32_t>{0, 1, 1, 2}), PrimitiveType::Lines, 2, nullptr);
    auto lineMesh = SceneTest::makeData({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}, {{{0, 0}, {1, 0}, {1, 1}}},
                                        std::move(lines));
    EXPECT_TRUE(list->getTasks(nullptr, lineMesh).empty());
    auto normalsDone = list->execute(lineMesh);
    EXPECT_EQ(normalsDone, lineMesh);
    EXPECT_EQ(normalsDone->getNormals(), nullptr);

    // UVs but no generator: one warning for the whole list, no frames.
    EXPECT_EQ(list->getTasks(nullptr, SceneTest::unitCubeData()).size(), 1u);
    EXPECT_EQ(list->getTasks(nullptr, SceneTest::unitCubeData()).size(), 1u);
    EXPECT_EQ(log.lines(), QStringList{QStringLiteral("[1][ZMFBaker]Not tangent space generator found.")});
}

TEST(MainProcessTaskList, ExecuteLeavesThePublishedDataAlone)
{
    const auto list = listFor(0x01 | 0x08 | 0x40);
    const auto source = SceneTest::unitCubeData();
    const uint64_t revision = source->getRevision();
    const auto result = list->execute(source);
    ASSERT_NE(result, nullptr);
    EXPECT_NE(result, source);
    EXPECT_EQ(source->getNormals(), nullptr);
    EXPECT_EQ(source->getTangents(), nullptr);
    EXPECT_EQ(source->getRevision(), revision);
    EXPECT_NE(result->getNormals(), nullptr);
    EXPECT_NE(result->getTangents(), nullptr);
    EXPECT_NE(result->getBinormals(), nullptr);
    EXPECT_FALSE(result->getBoundingBox().isEmpty());
}

TEST(MainProcessTaskList, AMissingBoxAloneCopiesNothing)
{
    const auto list = listFor(0x01 | 0x40);
    auto withNormals = SceneTest::unitCubeData();
    const auto normalsDone = listFor(0x01)->execute(withNormals);
    ASSERT_NE(normalsDone->getNormals(), nullptr);
    const uint64_t revision = normalsDone->getRevision();
    const auto result = list->execute(normalsDone);
    // The very same Data, its box filled in; readers see no change.
    EXPECT_EQ(result, normalsDone);
    EXPECT_EQ(result->getRevision(), revision);
    EXPECT_FALSE(result->getBoundingBox().isEmpty());
}
