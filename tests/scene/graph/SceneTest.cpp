#include "scene/graph/EnvironmentDisplayComponent.h"
#include "scene/graph/ISceneVisitor.h"
#include "scene/graph/Scene.h"
#include "scene/graph/SceneInfo.h"

#include "../SceneTestUtil.h"


#include "../SignalRecorder.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace Ond::SceneGraph;
using SceneTest::meshEntity;
using SceneTest::translation;

namespace {

// Records the order of the visitor calls.
class RecordingVisitor : public ISceneVisitor
{
public:
    QStringList calls;
    QString refuse;

    bool visitEntity(Entity& e) override
    {
        calls << "entity:" + e.getName();
        return e.getName() != refuse;
    }
    bool visitScene(Scene&) override
    {
        calls << "scene";
        return true;
    }
    void endVisitEntity(Entity& e) override { calls << "end:" + e.getName(); }
    void endVisitScene(Scene&) override { calls << "endScene"; }
    void visit(const MeshDisplayComponent* c) override { calls << "mesh:" + c->getEntity()->getName(); }
};

Eigen::Matrix4f rotationZ90()
{
    Eigen::Matrix4f m = Eigen::Matrix4f::Identity();
    m.topLeftCorner<3, 3>() = Eigen::AngleAxisf(float(M_PI / 2), Eigen::Vector3f::UnitZ()).toRotationMatrix();
    return m;
}

} // namespace

TEST(BoundingBox, EmptyMergeAndCompare)
{
    BoundingBox empty;
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_EQ(empty.getMin().x(), std::numeric_limits<float>::max());
    EXPECT_EQ(empty.getMax().z(), -std::numeric_limits<float>::max());

    BoundingBox box({0, 0, 0}, {1, 2, 3});
    const BoundingBox before = box;
    box.merge(empty);
    EXPECT_EQ(box, before);
    empty.merge(box);
    EXPECT_EQ(empty, box);
    EXPECT_NE(BoundingBox(), box);
    EXPECT_EQ(BoundingBox(), BoundingBox::emptyBox());
    // A flat box is not empty.
    EXPECT_FALSE(BoundingBox({0, 0, 0}, {1, 0, 1}).isEmpty());
    EXPECT_TRUE(BoundingBox({0, 1, 0}, {1, 0, 1}).isEmpty());

    auto data = SceneTest::makeData({}, {}, {});
    EXPECT_TRUE(data->getBoundingBox().isEmpty());
}

TEST(Entity, WorldBoxFollowsTransformsAndInstances)
{
    auto mesh = std::make_shared<Mesh>(SceneTest::unitCubeData());
    auto entity = meshEntity("cube", mesh, translation(10, 0, 0));
    BoundingBox box = entity->getGlobalBoundingBox();
    EXPECT_EQ(box, BoundingBox({10, 0, 0}, {11, 1, 1}));

    entity->getLocation()->setLocalTransform(rotationZ90());
    box = entity->getGlobalBoundingBox();
    EXPECT_TRUE(box.getMin().isApprox(Eigen::Vector3f(-1, 0, 0), 1e-5f)) << box.getMin().transpose();
    EXPECT_TRUE(box.getMax().isApprox(Eigen::Vector3f(0, 1, 1), 1e-5f)) << box.getMax().transpose();

    // Each instance adds its own copy of the box.
    entity->getLocation()->setLocalTransform(Eigen::Matrix4f::Identity());
    entity->getLocation()->setInstanceTransforms({translation(-5, 0, 0), translation(5, 0, 0)});
    box = entity->getGlobalBoundingBox();
    EXPECT_EQ(box, BoundingBox({-5, 0, 0}, {6, 1, 1}));

    // Without a location the display's box is returned as it stands.
    Entity bare("bare", nullptr, std::make_unique<MeshDisplayComponent>(mesh));
    EXPECT_EQ(bare.getGlobalBoundingBox(), BoundingBox({0, 0, 0}, {1, 1, 1}));
    Entity nothing("nothing");
    EXPECT_TRUE(nothing.getGlobalBoundingBox().isEmpty());
}

TEST(Entity, WorldBoxOfAChildOfAMovedParent)
{
    auto mesh = std::make_shared<Mesh>(SceneTest::unitCubeData());
    auto parent = std::make_shared<Entity>("parent", std::make_unique<LocationComponent>(translation(0, 5, 0)));
    auto child = meshEntity("child", mesh, translation(1, 0, 0));
    child->getLocation()->setParent(parent->getLocation());
    EXPECT_EQ(child->getGlobalBoundingBox(), BoundingBox({1, 5, 0}, {2, 6, 1}));

    parent->getLocation()->setLocalTransform(translation(0, 0, 3));
    EXPECT_EQ(child->getGlobalBoundingBox(), BoundingBox({1, 0, 3}, {2, 1, 4}));

    Scene scene(parent);
    scene.addEntity(child);
    auto other = std::make_shared<Scene>(meshEntity("far", mesh, translation(-20, 0, 0)));
    scene.addScene(other);
    EXPECT_EQ(scene.getBoundingBox(), BoundingBox({-20, 0, 0}, {2, 1, 4}));
}

TEST(Entity, LabelRules)
{
    Entity labelled("name");
    labelled.setLabel("Shown");
    EXPECT_EQ(labelled.getLabel(), "Shown");

    Entity located("node", std::make_unique<LocationComponent>());
    EXPECT_EQ(located.getLabel(), "node");

    // A bare entity does not show its name.
    Entity bare("hidden");
    EXPECT_EQ(bare.getLabel(), "Entity");
    Entity env("sky", nullptr, std::make_unique<EnvironmentDisplayComponent>());
    EXPECT_EQ(env.getLabel(), "sky");
    Entity unnamed("", std::make_unique<LocationComponent>());
    EXPECT_EQ(unnamed.getLabel(), "Entity");
}

TEST(Entity, ComponentsKnowTheirEntityAndParametersSignal)
{
    auto mesh = std::make_shared<Mesh>();
    auto entity = meshEntity("e", mesh);
    EXPECT_EQ(entity->getLocation()->getEntity(), entity.get());
    EXPECT_EQ(entity->getDisplay()->getEntity(), entity.get());
    ASSERT_NE(entity->getMetadata(), nullptr);

    SceneTest::SignalRecorder params(entity.get(), &Entity::parameterChanged);
    SceneTest::SignalRecorder meta(entity.get(), &Entity::metaDataChanged);
    EXPECT_FALSE(entity->setMetersPerUnit(0.0));
    EXPECT_FALSE(entity->setMetersPerUnit(-1.0));
    EXPECT_TRUE(entity->setMetersPerUnit(1.0));
    EXPECT_EQ(params.count(), 0);
    EXPECT_TRUE(entity->setMetersPerUnit(0.01));
    EXPECT_EQ(params.count(), 1);
    entity->getMetadata()->setValue("k", 1);
    entity->getMetadata()->setValue("k", 1);
    EXPECT_EQ(meta.count(), 1);
}

TEST(Scene, EntityListSignalsAndRevision)
{
    auto root = std::make_shared<Entity>("root", std::make_unique<LocationComponent>());
    Scene scene(root);
    ASSERT_EQ(scene.getEntities().size(), 1u);
    EXPECT_EQ(scene.getRootEntity(), root);
    EXPECT_GE(scene.getEntities().capacity(), 10000u);

    SceneTest::SignalRecorder added(&scene, &Scene::entityAdded);
    SceneTest::SignalRecorder aboutToRemove(&scene, &Scene::entityAboutToBeRemoved);
    SceneTest::SignalRecorder removed(&scene, &Scene::entityRemoved);

    const uint64_t r0 = scene.getRevision();
    scene.addEntity(nullptr);
    EXPECT_EQ(scene.getRevision(), r0);
    scene.addEntities({meshEntity("a", nullptr), nullptr, meshEntity("b", nullptr)});
    EXPECT_EQ(added.count(), 2);
    EXPECT_NE(scene.getRevision(), r0);

    // Signals of a sub-scene reach the parent, and adding it announces its
    // entities.
    auto sub = std::make_shared<Scene>(meshEntity("s1", nullptr));
    scene.addScene(sub);
    EXPECT_EQ(added.count(), 3);
    sub->addEntity(meshEntity("s2", nullptr));
    EXPECT_EQ(added.count(), 4);
    EXPECT_EQ(scene.findEntityByName("s2")->getName(), "s2");
    EXPECT_EQ(scene.findEntityByName(""), nullptr);

    scene.clear();
    EXPECT_TRUE(scene.getEntities().empty());
    EXPECT_TRUE(scene.getSubScenes().empty());
    EXPECT_EQ(aboutToRemove.count(), 5);
    EXPECT_EQ(removed.count(), 5);
    // Last first.
    EXPECT_EQ(removed.arg<0>(0)->getName(), "b");

    // Detached: the old sub-scene's signals no longer reach us.
    sub->addEntity(meshEntity("late", nullptr));
    EXPECT_EQ(added.count(), 4);
}

TEST(Scene, VisitOrderAndRefusal)
{
    Scene scene(meshEntity("a", std::make_shared<Mesh>()));
    scene.addEntity(meshEntity("b", std::make_shared<Mesh>()));
    scene.addScene(std::make_shared<Scene>(meshEntity("c", std::make_shared<Mesh>())));
    RecordingVisitor visitor;
    visitor.refuse = "b";
    scene.accept(visitor);
    EXPECT_EQ(visitor.calls, QStringList({"scene", "entity:a", "mesh:a", "end:a", "entity:b", "scene", "entity:c",
                                          "mesh:c", "end:c", "endScene", "endScene"}));
}

TEST(Scene, SharedMeshIsListedOnceAndUdimFlags)
{
    auto shared = std::make_shared<Mesh>(SceneTest::unitCubeData());
    auto other = std::make_shared<Mesh>(SceneTest::unitCubeData());
    Scene scene(meshEntity("a", shared));
    scene.addEntity(meshEntity("b", shared));
    auto sub = std::make_shared<Scene>(meshEntity("c", other));
    sub->addEntity(meshEntity("d", shared));
    scene.addScene(sub);

    EXPECT_EQ(scene.getMeshes(), (std::vector<Mesh::SPtr>{shared, other}));
    int subMeshes = 0;
    scene.forAllSubMeshes([&](SubMesh&) { return ++subMeshes > 0; });
    EXPECT_EQ(subMeshes, 2);

    EXPECT_FALSE(isSceneUdim(&scene));
    other->setUdim(true);
    EXPECT_TRUE(isSceneUdim(&scene));
    setSceneUdim(&scene, false);
    EXPECT_FALSE(other->isUdim());
}

TEST(Scene, MetersPerUnitSetsUnitAndReachesEverything)
{
    Scene scene(meshEntity("a", nullptr));
    auto sub = std::make_shared<Scene>(meshEntity("b", nullptr));
    scene.addScene(sub);
    EXPECT_EQ(scene.getLengthUnit(), LengthUnit::Meter);
    EXPECT_FALSE(scene.setMetersPerUnit(0));
    EXPECT_TRUE(scene.setMetersPerUnit(0.0254));
    EXPECT_EQ(scene.getLengthUnit(), LengthUnit::Inch);
    EXPECT_EQ(sub->getLengthUnit(), LengthUnit::Inch);
    EXPECT_DOUBLE_EQ(sub->getEntities()[0]->getMetersPerUnit(), 0.0254);
    EXPECT_TRUE(scene.setMetersPerUnit(0.5));
    EXPECT_EQ(scene.getLengthUnit(), LengthUnit::None);
    EXPECT_EQ(lengthUnitFromMetersPerUnit(1609.34 + 5e-7), LengthUnit::Mile);
}

TEST(SceneInfo, CountsFacesVerticesAndMaterialTiles)
{
    std::vector<Eigen::Vector3f> positions(4, Eigen::Vector3f::Zero());
    std::vector<Eigen::Vector2f> uv{{0.5f, 0.5f}, {0.6f, 0.5f}, {0.5f, 0.6f}, {2.5f, 0.5f}};
    std::vector<SubMesh> subs;
    subs.push_back(SceneTest::triangles({0, 1, 2}, std::make_shared<UserMaterialDefinition>("left")));
    subs.push_back(SceneTest::triangles({0, 1, 3, 1, 2, 3}, std::make_shared<UserMaterialDefinition>("right")));
    subs.emplace_back(makeBuffer(std::vector<uint32_t>{0, 1}), PrimitiveType::Lines, 2, nullptr);
    auto mesh = std::make_shared<Mesh>(SceneTest::makeData(std::move(positions), {std::move(uv)}, std::move(subs)));
    Scene scene(meshEntity("a", mesh));
    scene.addEntity(meshEntity("instance", mesh)); // shared: counted once

    const SceneInfo info(scene);
    EXPECT_EQ(info.vertexCount, 4u);
    EXPECT_EQ(info.faceCount, 3u);
    EXPECT_EQ(info.primitiveCounts.at(PrimitiveType::Lines), 1u);
    ASSERT_EQ(info.materials.size(), 2u);
    EXPECT_EQ(info.materials.at("left").uvTiles.at(0), (UvTileSet{{0, 0}}));
    EXPECT_EQ(info.materials.at("right").uvTiles.at(0), (UvTileSet{{0, 0}, {1, 0}, {2, 0}}));
}
