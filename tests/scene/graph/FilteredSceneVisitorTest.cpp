#include "scene/graph/AbstractFilteredSceneVisitor.h"
#include "scene/graph/Scene.h"

#include "../SceneTestUtil.h"

#include <gtest/gtest.h>

using namespace Ond::SceneGraph;

namespace {

// Counts how often the visitor asks for the component's flags.
class CountingDisplay : public MeshDisplayComponent
{
public:
    using MeshDisplayComponent::MeshDisplayComponent;
    BitField<int> getRenderFlags() const override
    {
        ++flagQueries;
        return MeshDisplayComponent::getRenderFlags();
    }
    mutable int flagQueries = 0;
};

class Recorder : public AbstractFilteredSceneVisitor
{
public:
    using AbstractFilteredSceneVisitor::AbstractFilteredSceneVisitor;

    bool beginMesh(const MeshDisplayComponent* c, int uv) override
    {
        log << QString("begin:%1:%2").arg(c->getEntity()->getName()).arg(uv);
        return c->getEntity()->getName() != refuseMesh;
    }
    bool beginEntity(Entity& e, int index) override
    {
        entityIndices << QString("%1=%2").arg(e.getName()).arg(index);
        return e.getName() != refuseEntity;
    }
    void endMesh(const MeshDisplayComponent* c, int) override { log << "end:" + c->getEntity()->getName(); }
    void visitSubMesh(SubMesh&, int index) override { log << QString("sub:%1").arg(index); }

    QStringList log;
    QStringList entityIndices;
    QString refuseMesh;
    QString refuseEntity;
};

// Three SubMeshes with flags 0x1, 0x2, 0x1|selected, and uvSetCount UV sets.
std::shared_ptr<Mesh> flaggedMesh(size_t uvSetCount)
{
    std::vector<SubMesh> subs;
    subs.push_back(SceneTest::triangles({0, 1, 2}, nullptr, 0x1));
    subs.push_back(SceneTest::triangles({0, 1, 2}, nullptr, 0x2));
    subs.push_back(SceneTest::triangles({0, 1, 2}, nullptr, 0x1 | SelectedRenderFlag));
    std::vector<std::vector<Eigen::Vector2f>> uvs(uvSetCount, std::vector<Eigen::Vector2f>(3, {0.5f, 0.5f}));
    return std::make_shared<Mesh>(SceneTest::makeData({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, uvs, std::move(subs)));
}

Entity::SPtr countingEntity(const QString& name, std::shared_ptr<Mesh> mesh, CountingDisplay** display)
{
    auto d = std::make_unique<CountingDisplay>(std::move(mesh));
    *display = d.get();
    return std::make_shared<Entity>(name, std::make_unique<LocationComponent>(), std::move(d));
}

} // namespace

TEST(FilteredSceneVisitor, AllOnesVisitsEverythingWithoutAskingForFlags)
{
    CountingDisplay* display = nullptr;
    Scene scene(countingEntity("a", flaggedMesh(1), &display));
    Recorder visitor(AllRenderFlags, 0);
    scene.accept(visitor);
    EXPECT_EQ(visitor.log, QStringList({"begin:a:0", "sub:0", "sub:1", "sub:2", "end:a"}));
    EXPECT_EQ(display->flagQueries, 0);
}

TEST(FilteredSceneVisitor, MaskSelectsSubMeshesAndKeepsTheirIndices)
{
    CountingDisplay* display = nullptr;
    Scene scene(countingEntity("a", flaggedMesh(1), &display));
    Recorder selected(SelectedRenderFlag, 0);
    scene.accept(selected);
    EXPECT_EQ(selected.log, QStringList({"begin:a:0", "sub:2", "end:a"}));
    EXPECT_EQ(display->flagQueries, 1);

    Recorder second(0x2, 0);
    scene.accept(second);
    EXPECT_EQ(second.log, QStringList({"begin:a:0", "sub:1", "end:a"}));

    // No SubMesh has the bit: the mesh is skipped before beginMesh.
    Recorder none(0x8, 0);
    scene.accept(none);
    EXPECT_TRUE(none.log.isEmpty());
}

TEST(FilteredSceneVisitor, MissingUvSetSkipsTheMesh)
{
    Scene scene(SceneTest::meshEntity("two", flaggedMesh(2)));
    scene.addEntity(SceneTest::meshEntity("one", flaggedMesh(1)));
    scene.addEntity(SceneTest::meshEntity("empty", std::make_shared<Mesh>()));
    Recorder visitor(AllRenderFlags, 1);
    scene.accept(visitor);
    EXPECT_EQ(visitor.log, QStringList({"begin:two:1", "sub:0", "sub:1", "sub:2", "end:two"}));
}

TEST(FilteredSceneVisitor, RefusedMeshGetsNoSubMeshesNorEnd)
{
    Scene scene(SceneTest::meshEntity("a", flaggedMesh(1)));
    scene.addEntity(SceneTest::meshEntity("b", flaggedMesh(1)));
    Recorder visitor(0x2, 0);
    visitor.refuseMesh = "a";
    scene.accept(visitor);
    EXPECT_EQ(visitor.log, QStringList({"begin:a:0", "begin:b:0", "sub:1", "end:b"}));
}

TEST(FilteredSceneVisitor, EntityIndexCountsAcceptedEntities)
{
    Scene scene(SceneTest::meshEntity("a", flaggedMesh(1)));
    scene.addEntity(SceneTest::meshEntity("b", flaggedMesh(1)));
    scene.addEntity(SceneTest::meshEntity("c", flaggedMesh(1)));
    Recorder visitor(AllRenderFlags, 0);
    visitor.refuseEntity = "b";
    scene.accept(visitor);
    EXPECT_EQ(visitor.entityIndices, QStringList({"a=0", "b=1", "c=1"}));
    EXPECT_EQ(visitor.getEntityIndex(), 2);
}
