// The OBJ importer: the scene it builds, what the load flags keep, the
// naming rules, and the error report.

#include "common/TestPaths.h"
#include "program/LogManager.h"
#include "scene/graph/LocationComponent.h"
#include "scene/graph/MaterialDefinition.h"
#include "scene/graph/MeshDisplayComponent.h"
#include "scene/load/SceneImporter.h"
#include "scene/obj/OBJSceneLoader.h"

#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

using namespace Ond::SceneLoad;
using namespace Ond::SceneGraph;

namespace {

class LogCollector : public Ond::Core::ILogDelegate
{
public:
    void log(int level, const QString& channel, const QString& message) override
    {
        lines << QStringLiteral("%1|%2|%3").arg(level).arg(channel, message);
    }
    QStringList lines;
};

struct Imported
{
    std::unique_ptr<Scene> scene;
    QStringList log;

    const Mesh::Data& data(size_t entity) const
    {
        return *scene->getEntities().at(entity)->getMeshDisplay()->getMesh()->getData();
    }
};

QString writeFile(const QString& name, const QByteArray& content)
{
    const QString path = ZmfTest::makeTempDir() + QLatin1Char('/') + name;
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
    return path;
}

Imported import(const QString& path, uint32_t flags, Ond::Core::ProgressInterface* progress = nullptr)
{
    auto collector = std::make_shared<LogCollector>();
    Ond::Core::LogManager::instance().addDelegate(collector);
    OBJSceneLoader loader;
    std::unique_ptr<SceneImporter> importer(loader.createImporter(path, "obj"));
    Imported result;
    result.scene.reset(importer->import(SceneLoadOptions(flags), progress));
    Ond::Core::LogManager::instance().removeDelegate(collector);
    result.log = collector->lines;
    return result;
}

const QByteArray Quad = "mtllib quad.mtl\n"
                        "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
                        "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
                        "vn 0 0 1\n"
                        "#MRGB ff000000ff111111ff222222ff333333\r\n"
                        "o quad\nusemtl paint\nf 1/1/1 2/2/1 3/3/1 4/4/1\n";

} // namespace

TEST(OBJSceneImporter, BuildsRootAndMeshEntities)
{
    const Imported imported = import(writeFile("quad.obj", Quad), 63);
    ASSERT_TRUE(imported.scene);
    EXPECT_TRUE(imported.log.isEmpty()) << imported.log.join("\n").toStdString();
    const auto& entities = imported.scene->getEntities();
    ASSERT_EQ(entities.size(), 2u);
    EXPECT_EQ(imported.scene->getRootEntity(), entities[0]);
    EXPECT_EQ(entities[0]->getName(), "root");
    EXPECT_EQ(entities[0]->getLabel(), "Root");
    ASSERT_TRUE(entities[0]->getLocation());

    const Entity& entity = *entities[1];
    EXPECT_EQ(entity.getName(), "quad");
    ASSERT_TRUE(entity.getLocation());
    EXPECT_EQ(entity.getLocation()->getParent(), entities[0]->getLocation());
    const Mesh::SPtr mesh = entity.getMeshDisplay()->getMesh();
    EXPECT_EQ(mesh->getName(), "quad");

    const Mesh::Data& data = imported.data(1);
    EXPECT_EQ(data.getVertexCount(), 4u);
    ASSERT_TRUE(data.getNormals());
    ASSERT_TRUE(data.getColors());
    EXPECT_TRUE((*data.getColors())[2].isApprox(Eigen::Vector4f(0x22, 0x22, 0x22, 0xff) / 255.0f));
    EXPECT_FALSE(data.getTangents());
    EXPECT_FALSE(data.getBinormals());
    ASSERT_EQ(data.getUvSetCount(), 1u);
    EXPECT_EQ((*data.getUvSet(0))[2], Eigen::Vector2f(1, 1));

    ASSERT_EQ(data.getSubMeshCount(), 1u);
    const SubMesh& subMesh = *data.getSubMesh(0);
    EXPECT_EQ(subMesh.primitiveType, PrimitiveType::Triangles);
    EXPECT_EQ(subMesh.indicesPerPrimitive, 3u);
    EXPECT_EQ(subMesh.primitiveCount, 2u);
    EXPECT_EQ(subMesh.renderFlags.value(), 0x40000000);
    const auto* material = dynamic_cast<const UserMaterialDefinition*>(subMesh.material.get());
    ASSERT_TRUE(material);
    EXPECT_EQ(material->name, "paint");
    EXPECT_EQ(material->label, "paint");
    EXPECT_EQ(data.findSubMeshByMaterialName("paint"), 0);
}

TEST(OBJSceneImporter, LoadFlagsChooseTheBuffers)
{
    const QString path = writeFile("quad.obj", Quad);
    const Imported bare = import(path, 0);
    const Mesh::Data& data = bare.data(1);
    EXPECT_EQ(data.getVertexCount(), 4u);
    EXPECT_FALSE(data.getNormals());
    EXPECT_FALSE(data.getColors());
    EXPECT_EQ(data.getUvSetCount(), 0u);

    // The importer computes normals only for a file without any.
    const QString noNormals = writeFile("flat.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    const Imported withNormals = import(noNormals, 0x03);
    const Mesh::Data& computed = withNormals.data(1);
    ASSERT_TRUE(computed.getNormals());
    EXPECT_EQ((*computed.getNormals())[1], Eigen::Vector3f(0, 0, 1));
    EXPECT_FALSE(import(noNormals, 0x01).data(1).getNormals());
}

TEST(OBJSceneImporter, NamesFromObjectsGroupsOrTheFile)
{
    const QByteArray triangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";
    const Imported unnamed = import(writeFile("plain.part.obj", triangle + "f 1 2 3\n"), 63);
    ASSERT_EQ(unnamed.scene->getEntities().size(), 2u);
    EXPECT_EQ(unnamed.scene->getEntities()[1]->getName(), "plain");

    const Imported groups = import(writeFile("g.obj", triangle + "g a\nf 1 2 3\ng ZBrushPolyMesh3D\nf 1 2 3\n"), 63);
    ASSERT_EQ(groups.scene->getEntities().size(), 3u);
    EXPECT_EQ(groups.scene->getEntities()[1]->getName(), "a");
    EXPECT_EQ(groups.scene->getEntities()[2]->getName(), "g");

    const Imported sculpt = import(
        writeFile("sculpt.obj", "# File exported by ZBrush version 2022\n" + triangle + "g a\nf 1 2 3\n"), 63);
    EXPECT_EQ(sculpt.scene->getEntities()[1]->getName(), "sculpt");
    EXPECT_EQ(sculpt.scene->getEntities()[1]->getMeshDisplay()->getMesh()->getName(), "sculpt");

    // A group with no face gets no entity.
    const Imported comments = import(writeFile("c.obj", "# only\n# comments\n"), 63);
    ASSERT_TRUE(comments.scene);
    EXPECT_EQ(comments.scene->getEntities().size(), 1u);
}

TEST(OBJSceneImporter, ErrorsAreLoggedAsOneReport)
{
    const Imported parsed = import(writeFile("bad.obj", "v 0 0 0\nv 1 0\nv 0 1 0\nf 1 2 3\nvt x\n"), 63);
    ASSERT_TRUE(parsed.scene);
    ASSERT_EQ(parsed.log.size(), 1);
    EXPECT_EQ(parsed.log[0], "2|ZMFBaker|Parsing error:\n  Invalid vertex\nline 2 => v 1 0\n"
                             "Parsing error:\n  Invalid texture coordinate\nline 5 => vt x\n");
    EXPECT_EQ(parsed.data(1).getVertexCount(), 3u);

    const Imported empty = import(writeFile("empty.obj", ""), 63);
    EXPECT_FALSE(empty.scene);
    EXPECT_EQ(empty.log, QStringList{"2|ZMFBaker|Open File Failed:\n  File is empty\n"});

    const Imported range = import(writeFile("range.obj", "v 0 0 0\nf 1 2 3\n"), 63);
    EXPECT_FALSE(range.scene);
    ASSERT_EQ(range.log.size(), 1);
    EXPECT_TRUE(range.log[0].startsWith("2|ZMFBaker|Invalid data error:\n  invalid indices (index / first_invalid_index)\n"
                                        "  position: 2 / 2\n"));
}

TEST(OBJSceneImporter, ReportsProgressAndHonoursCancellation)
{
    struct Recorder : Ond::Core::ProgressInterface
    {
        void setText(const QString& text) override { texts << text; }
        void setValue(double fraction) override { values.push_back(fraction); }
        bool isCancelled() const override { return cancelled; }
        QStringList texts;
        std::vector<double> values;
        bool cancelled = false;
    };

    const QString path = writeFile("quad.obj", Quad);
    Recorder recorder;
    const Imported loaded = import(path, 63, &recorder);
    ASSERT_TRUE(loaded.scene);
    ASSERT_FALSE(recorder.texts.isEmpty());
    EXPECT_EQ(recorder.texts.first(), "Loading 3D model");
    ASSERT_FALSE(recorder.values.empty());
    EXPECT_DOUBLE_EQ(recorder.values.back(), 1.0);
    EXPECT_TRUE(std::is_sorted(recorder.values.begin(), recorder.values.end()));

    Recorder cancelled;
    cancelled.cancelled = true;
    const Imported none = import(path, 63, &cancelled);
    EXPECT_FALSE(none.scene);
    EXPECT_TRUE(none.log.isEmpty());
}

TEST(OBJSceneLoader, SuffixAndTangentFlags)
{
    OBJSceneLoader loader;
    EXPECT_TRUE(loader.canLoad("OBJ", SceneLoadOptions(63 & ~0x04u)));
    EXPECT_TRUE(loader.canLoad("obj", SceneLoadOptions(0)));
    EXPECT_TRUE(loader.canLoad("obj", SceneLoadOptions(12)));
    EXPECT_FALSE(loader.canLoad("obj", SceneLoadOptions(4)));
    EXPECT_FALSE(loader.canLoad("fbx", SceneLoadOptions(0)));
    ASSERT_EQ(loader.getSupportedFormats().size(), 1);
    EXPECT_EQ(loader.getSupportedFormats()[0].label, "Wavefront OBJ");
}
