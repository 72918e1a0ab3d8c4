// Post-processing of whole scenes: every mesh once, in parallel, results
// published by atomic store and cached by revision.

#include "common/TestPaths.h"
#include "scene/SceneTestUtil.h"
#include "scene/graph/Scene.h"
#include "scene/processing/SceneProcessor.h"
#include "scene/processing/TangentSpaceGenerator.h"

#include <gtest/gtest.h>

using namespace Ond::SceneGraph;
using namespace Ond::SceneGraph::MeshProcessing;
using Ond::SceneLoad::SceneLoadOptions;

namespace {

SceneLoadOptions bakeOptions()
{
    return SceneLoadOptions(Ond::SceneLoad::BakeLoadFlags,
                            std::make_shared<TangentSpaceGenerator>(
                                ZmfTest::buildDir() + QStringLiteral("/plugins/tangentspace/mikktspace.so")));
}

class CancelledProgress : public Ond::Core::ProgressInterface
{
public:
    bool isCancelled() const override { return true; }
};

} // namespace

TEST(SceneProcessor, ProcessesEachMeshOnceAndCachesByRevision)
{
    auto shared = std::make_shared<Mesh>(SceneTest::unitCubeData(), QStringLiteral("cube"));
    auto other = std::make_shared<Mesh>(SceneTest::unitCubeData(DefaultRenderFlags, 0), QStringLiteral("bare"));
    auto scene = std::make_shared<Scene>();
    scene->addEntity(SceneTest::meshEntity(QStringLiteral("a"), shared));
    scene->addEntity(SceneTest::meshEntity(QStringLiteral("b"), shared));
    scene->addEntity(SceneTest::meshEntity(QStringLiteral("c"), other));
    const auto original = shared->getData();

    SceneProcessor processor;
    processor.processScene(scene, bakeOptions(), nullptr, true, true);
    const auto processed = shared->getData();
    ASSERT_NE(processed, original);
    EXPECT_NE(processed->getNormals(), nullptr);
    EXPECT_NE(processed->getTangents(), nullptr);
    EXPECT_NE(processed->getBinormals(), nullptr);
    // No UV set: normals, no frames.
    EXPECT_NE(other->getData()->getNormals(), nullptr);
    EXPECT_EQ(other->getData()->getTangents(), nullptr);

    // Seen again: nothing is recomputed.
    processor.processScene(scene, bakeOptions(), nullptr, true, true);
    EXPECT_EQ(shared->getData(), processed);

    // Another mesh holding the unprocessed Data takes the cached result.
    auto again = std::make_shared<Mesh>(original);
    auto second = std::make_shared<Scene>();
    second->addEntity(SceneTest::meshEntity(QStringLiteral("d"), again));
    processor.processScene(second, bakeOptions(), nullptr, true, true);
    EXPECT_EQ(again->getData(), processed);
}

TEST(SceneProcessor, NothingAskedOrCancelledLeavesMeshesAsTheyWere)
{
    auto mesh = std::make_shared<Mesh>(SceneTest::unitCubeData());
    auto scene = std::make_shared<Scene>();
    scene->addEntity(SceneTest::meshEntity(QStringLiteral("a"), mesh));
    const auto original = mesh->getData();

    SceneProcessor processor;
    processor.processScene(scene, SceneLoadOptions(0x02), nullptr, true, true);
    EXPECT_EQ(mesh->getData(), original);

    CancelledProgress cancelled;
    processor.processScene(scene, bakeOptions(), &cancelled, true, true);
    EXPECT_EQ(mesh->getData(), original);
    EXPECT_EQ(processor.cachedMeshCount(), 0u);

    processor.processScene(nullptr, bakeOptions(), nullptr, true, true);
}
