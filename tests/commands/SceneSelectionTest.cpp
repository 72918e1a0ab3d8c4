// Which mesh parts a selection keeps: by part or group name, by material
// index or name, and what is said about tokens that name nothing.

#include "commands/SceneSelection.h"

#include "common/LogCapture.h"
#include "program/LogChannel.h"
#include "scene/graph/Entity.h"
#include "scene/graph/MaterialDefinition.h"
#include "scene/graph/MeshDisplayComponent.h"

#include <gtest/gtest.h>

using namespace Ond::SceneGraph;
using ProgramCommand::SceneSelection;
using ZmfTest::LogCapture;

namespace {

SubMesh triangle(const QString& material)
{
    auto indices = std::make_unique<VectorBinaryBuffer<uint32_t>>(std::vector<uint32_t>{0, 1, 2});
    return SubMesh(std::move(indices), PrimitiveType::Triangles, 3, std::make_shared<UserMaterialDefinition>(material));
}

// scene: "group" (location only) over "left" (materials "red", "blue") and
// "right" ("red"); "loose" stands apart with "green".
class SceneSelectionTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Ond::Core::zmfBakerChannel().setName(QStringLiteral("ZMFBaker"));
        auto group = std::make_shared<Entity>(QStringLiteral("group"), std::make_unique<LocationComponent>());
        scene = std::make_shared<Scene>(group);
        left = addPart(QStringLiteral("left"), {QStringLiteral("red"), QStringLiteral("blue")}, group.get());
        right = addPart(QStringLiteral("right"), {QStringLiteral("red")}, group.get());
        loose = addPart(QStringLiteral("loose"), {QStringLiteral("green")}, nullptr);
    }

    Mesh::DataSPtr addPart(const QString& name, const QStringList& materials, Entity* parent)
    {
        std::vector<SubMesh> subMeshes;
        for (const QString& m : materials)
            subMeshes.push_back(triangle(m));
        std::vector<Eigen::Vector3f> points = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
        auto data = std::make_shared<Mesh::Data>(std::make_unique<VectorBinaryBuffer<Eigen::Vector3f>>(std::move(points)),
                                                 nullptr, nullptr, nullptr, nullptr, std::vector<Vec2BufferUPtr>(),
                                                 std::move(subMeshes));
        auto location = std::make_unique<LocationComponent>();
        if (parent)
            location->setParent(parent->getLocation());
        scene->addEntity(std::make_shared<Entity>(name, std::move(location),
                                                  std::make_unique<MeshDisplayComponent>(std::make_shared<Mesh>(data, name))));
        return data;
    }

    // "1" per selected SubMesh, "0" otherwise, part by part.
    QString selected() const
    {
        QString out;
        for (const auto& data : {left, right, loose}) {
            for (size_t i = 0; i < data->getSubMeshCount(); ++i)
                out += data->getSubMeshFlags(i).testAny(SelectedRenderFlag) ? QLatin1Char('1') : QLatin1Char('0');
            out += QLatin1Char(' ');
        }
        return out.trimmed();
    }

    SceneSPtr scene;
    Mesh::DataSPtr left, right, loose;
};

} // namespace

TEST_F(SceneSelectionTest, EmptySelectionKeepsEverything)
{
    SceneSelection::apply(*scene, {QStringLiteral("loose")});
    EXPECT_EQ(selected(), QStringLiteral("00 0 1"));
    SceneSelection::apply(*scene, {});
    EXPECT_EQ(selected(), QStringLiteral("11 1 1"));
    // The importer's bit stays.
    EXPECT_TRUE(left->getSubMeshFlags(0).testAny(DefaultRenderFlags));
}

TEST_F(SceneSelectionTest, PartsGroupsAndMaterials)
{
    SceneSelection::apply(*scene, {QStringLiteral("group")});
    EXPECT_EQ(selected(), QStringLiteral("11 1 0"));
    SceneSelection::apply(*scene, {QStringLiteral("left@1")});
    EXPECT_EQ(selected(), QStringLiteral("01 0 0"));
    SceneSelection::apply(*scene, {QStringLiteral("group@red"), QStringLiteral("loose@0")});
    EXPECT_EQ(selected(), QStringLiteral("10 1 1"));
}

TEST_F(SceneSelectionTest, BadTokensAreToldAndSkipped)
{
    LogCapture log;
    SceneSelection::apply(*scene, {QStringLiteral("left@red@x"), QStringLiteral("nowhere"), QStringLiteral("group@5"),
                                   QStringLiteral("right@blue"), QStringLiteral("loose@"), QStringLiteral("right")});
    EXPECT_EQ(log.lines(), (QStringList{QStringLiteral("[2][ZMFBaker]selection token left@red@x isn't formated properly."),
                                        QStringLiteral("[2][ZMFBaker]selection node nowhere doesn't exist."),
                                        QStringLiteral("[2][ZMFBaker]material id 5 not found in \"group\"."),
                                        QStringLiteral("[2][ZMFBaker]material \"blue\" not found in \"right\"."),
                                        QStringLiteral("[2][ZMFBaker]material \"\" not found in \"loose\".")}));
    // What the valid tokens chose is kept.
    EXPECT_EQ(selected(), QStringLiteral("00 1 0"));
}

TEST_F(SceneSelectionTest, MaterialSearchKeys)
{
    const QString node = QStringLiteral("left");
    EXPECT_EQ(SceneSelection::findMaterial(*left, QVariant(QStringLiteral("blue")), &node), std::vector<size_t>{1});
    EXPECT_EQ(SceneSelection::findMaterial(*left, QVariant(0), &node), std::vector<size_t>{0});
    LogCapture log;
    EXPECT_TRUE(SceneSelection::findMaterial(*left, QVariant(-1), &node).empty());
    EXPECT_TRUE(SceneSelection::findMaterial(*left, QVariant(2.5), &node).empty());
    EXPECT_TRUE(SceneSelection::findMaterial(*left, QVariant(), &node).empty());
    EXPECT_TRUE(SceneSelection::findMaterial(*left, QVariant(7), nullptr).empty());
    EXPECT_EQ(log.lines(),
              (QStringList{QStringLiteral("[2][ZMFBaker]material id -1 not found in \"left\"."),
                           QStringLiteral("[2][ZMFBaker]Cannot search material id with invalid search key of type double "
                                          "in \"left\"."),
                           QStringLiteral("[2][ZMFBaker]Cannot search material id with invalid search key of unknown "
                                          "type.")}));
}
