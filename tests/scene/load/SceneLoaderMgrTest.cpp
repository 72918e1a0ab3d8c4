#include "scene/load/SceneFileLoader.h"
#include "scene/load/SceneImporter.h"
#include "scene/load/SceneLoader.h"
#include "scene/load/SceneLoaderMgr.h"

#include "common/LogCapture.h"
#include "common/TestPaths.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using namespace Ond::SceneLoad;
using Ond::SceneGraph::Scene;

namespace {

struct Calls
{
    QStringList created;
};

class FakeImporter : public SceneImporter
{
public:
    FakeImporter(const QString& path, const QByteArray& suffix, bool succeed)
        : SceneImporter(path, suffix), m_succeed(succeed)
    {
    }
    Scene* import(const SceneLoadOptions&, Ond::Core::ProgressInterface*) override
    {
        if (!m_succeed)
            return nullptr;
        auto* scene = new Scene(std::make_shared<Ond::SceneGraph::Entity>(QString::fromLatin1(suffix)));
        return scene;
    }

private:
    bool m_succeed;
};

class FakeLoader : public SceneLoader
{
public:
    FakeLoader(QString label, QStringList extensions, Calls* calls, bool succeed = true)
        : m_label(std::move(label)), m_extensions(std::move(extensions)), m_calls(calls), m_succeed(succeed)
    {
    }
    SceneImporter* createImporter(const QString& path, const QByteArray& suffix) const override
    {
        m_calls->created << m_label + ":" + QString::fromLatin1(suffix);
        return new FakeImporter(path, suffix, m_succeed);
    }
    SceneFormatList getSupportedFormats() const override { return {SceneFormat{m_label, m_extensions, {}}}; }

private:
    QString m_label;
    QStringList m_extensions;
    Calls* m_calls;
    bool m_succeed;
};

QString writeFile(const QString& name, const QByteArray& content)
{
    const QString path = QDir(ZmfTest::makeTempDir()).filePath(name);
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
    return path;
}

} // namespace

TEST(SceneLoaderMgr, FirstLoaderTakingTheSuffixWins)
{
    Calls calls;
    SceneLoaderMgr mgr({new FakeLoader("First", {"abc", "fbx"}, &calls),
                        new FakeLoader("Second", {"fbx", "obj"}, &calls)});
    ASSERT_EQ(mgr.getSupportedFormats().size(), 2);
    EXPECT_EQ(extensionsOf(mgr.getSupportedFormats()), QStringList({"abc", "fbx", "fbx", "obj"}));

    const SceneLoadOptions options(BakeLoadFlags);
    auto scene = mgr.load("/nowhere/model.fbX", "fbX", options, nullptr);
    ASSERT_TRUE(scene);
    EXPECT_EQ(scene->getRootEntity()->getName(), "fbX");
    EXPECT_TRUE(mgr.load("/nowhere/model.OBJ", "OBJ", options, nullptr));
    EXPECT_EQ(calls.created, QStringList({"First:fbX", "Second:OBJ"}));
}

TEST(SceneLoaderMgr, UnknownSuffixCreatesNoImporter)
{
    Calls calls;
    SceneLoaderMgr mgr({new FakeLoader("Only", {"obj"}, &calls)});
    EXPECT_FALSE(mgr.load("/nowhere/model.stl", "stl", SceneLoadOptions(), nullptr));
    EXPECT_FALSE(mgr.load("/nowhere/model", "", SceneLoadOptions(), nullptr));
    EXPECT_TRUE(calls.created.isEmpty());
}

TEST(SceneLoaderMgr, FailedImportGivesEmptyScene)
{
    Calls calls;
    SceneLoaderMgr mgr({new FakeLoader("Broken", {"obj"}, &calls, false)});
    EXPECT_FALSE(mgr.load("/nowhere/model.obj", "obj", SceneLoadOptions(), nullptr));
    EXPECT_EQ(calls.created.size(), 1);
}

TEST(SceneLoaderMgr, FiltersAndExtensions)
{
    Calls calls;
    FakeLoader loader("Autodesk FBX", {"fbx", "FBX"}, &calls);
    EXPECT_EQ(loader.getSupportedFilters(), QStringList({"Autodesk FBX (*.fbx)"}));
    EXPECT_EQ(loader.getSupportedExtensions(), QStringList({"fbx", "FBX"}));
    EXPECT_TRUE(loader.canLoad("Fbx", SceneLoadOptions()));
    EXPECT_FALSE(loader.canLoad("fbx2", SceneLoadOptions()));
}

TEST(SceneLoaderMgr, ProgramManagerOffersAssimpObjAndRegisteredLoaders)
{
    static Calls calls;
    registerSceneLoader("test-xyz", [] { return new FakeLoader("Test XYZ", {"xyz"}, &calls); });
    const SceneLoaderMgrSPtr mgr = createSceneLoaderMgr();
    const QStringList filters = filtersOf(mgr->getSupportedFormats());
    ASSERT_GE(filters.size(), 2);
    // The Assimp formats stand before OBJ, in the order of their table.
    EXPECT_EQ(filters.mid(0, 3), QStringList({"Autodesk 3D Studio Mesh (*.3ds)", "Autodesk AutoCAD Drawing (*.dxf)",
                                              "Autodesk FBX (*.fbx)"}));
    EXPECT_GT(filters.indexOf("Wavefront OBJ (*.obj)"), filters.indexOf("COLLADA Digital Asset (*.dae)"));
    EXPECT_EQ(filters.back(), "Test XYZ (*.xyz)");

    EXPECT_NE(mgr->findLoader("OBJ", SceneLoadOptions(BakeLoadFlags)), nullptr);
    EXPECT_NE(mgr->findLoader("obj", SceneLoadOptions(RecomputeTangentsLoadFlags)), nullptr);
    // An OBJ file has no tangents to keep.
    EXPECT_EQ(mgr->findLoader("obj", SceneLoadOptions(KeepTangents)), nullptr);
    EXPECT_NE(mgr->findLoader("obj", SceneLoadOptions(KeepTangents | ComputeTangents)), nullptr);
    EXPECT_NE(mgr->findLoader("obj", SceneLoadOptions(0)), nullptr);
}

TEST(SceneFileLoader, FailureLines)
{
    ZmfTest::LogCapture log;
    const QString missing = QDir(ZmfTest::makeTempDir()).filePath("missing.obj");
    EXPECT_FALSE(SceneFileLoader::load(missing, BakeLoadFlags));
    const QString unknown = writeFile("mesh.stl", "solid x\n");
    EXPECT_FALSE(SceneFileLoader::load(unknown, BakeLoadFlags));
    EXPECT_EQ(log.lines(), QStringList({QString("[2][ZMFBaker]Error: Scene \"%1\" couldn't be loaded .").arg(missing),
                                        QString("[2][ZMFBaker]Error: Scene \"%1\" couldn't be loaded .").arg(unknown)}));
}

TEST(SceneFileLoader, LoadsObjFileAndPostProcesses)
{
    const QString path = ZmfTest::testDataDir() + "/box_low.obj";
    ASSERT_TRUE(QFile::exists(path));
    // Bit 0x04 set without 0x08: the OBJ loader refuses, as an OBJ file
    // has no tangents to keep.
    {
        ZmfTest::LogCapture log;
        EXPECT_FALSE(SceneFileLoader::load(path, SceneLoadOptions(KeepTangents)));
        EXPECT_EQ(log.lines().size(), 1);
    }
    auto scene = SceneFileLoader::load(path, RecomputeTangentsLoadFlags & ~(KeepTangents | ComputeTangents));
    ASSERT_TRUE(scene);
    const auto meshes = scene->getMeshes();
    ASSERT_EQ(meshes.size(), 1u);
    const auto data = meshes.front()->getData();
    ASSERT_TRUE(data);
    EXPECT_GE(data->getVertexCount(), 96u);
    EXPECT_EQ(data->getUvSetCount(), 1u);
    EXPECT_NE(data->getNormals(), nullptr);
    EXPECT_FALSE(data->getBoundingBox().isEmpty());
    EXPECT_TRUE(scene->findEntityByName("box_low"));
}

// The mask of the bake commands runs the whole post-processing; whether a
// tangent plugin is found or not, the scene comes back whole.
TEST(SceneFileLoader, BakeFlagsGiveAProcessedScene)
{
    ZmfTest::LogCapture log;
    auto scene = SceneFileLoader::load(ZmfTest::testDataDir() + "/box_low.obj", BakeLoadFlags);
    ASSERT_TRUE(scene);
    const auto data = scene->getMeshes().front()->getData();
    EXPECT_NE(data->getNormals(), nullptr);
    EXPECT_EQ(data->getSubMeshCount(), 1u);
    EXPECT_EQ(data->getSubMesh(0)->primitiveCount, 188u);
    for (const QString& line : log.lines())
        EXPECT_FALSE(line.startsWith("[2]")) << line.toStdString();
}
