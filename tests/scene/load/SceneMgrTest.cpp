#include "scene/graph/MurmurHash3.h"
#include "scene/load/SceneHandlerProvider.h"
#include "scene/load/SceneMgr.h"
#include "scene/load/UrlSceneHandler.h"

#include "common/LogCapture.h"
#include "common/TestPaths.h"

#include <QDir>
#include <QFile>
#include <QUrl>

#include "../SignalRecorder.h"

#include <gtest/gtest.h>

using namespace Ond::SceneLoad;

namespace {

QString writeFile(const QString& name, const QByteArray& content)
{
    const QString path = QDir(ZmfTest::makeTempDir()).filePath(name);
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
    return path;
}

const char* const triangleObj = "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 0 1\nf 1/1 2/2 3/3\n";

SceneId fileId(const QString& path)
{
    return QUrl::fromLocalFile(path).toString().toStdString();
}

} // namespace

TEST(UrlSceneHandler, ContentHashIsMurmurOfTheWholeFile)
{
    const QByteArray content = "The quick brown fox jumps over the lazy dog";
    UrlSceneHandler handler(QUrl::fromLocalFile(writeFile("a.obj", content)));
    EXPECT_EQ(handler.getContentHash(), 0x2E4FF723u);
    EXPECT_TRUE(handler.isValid());

    // An empty file and a missing one can't be told apart.
    UrlSceneHandler empty(QUrl::fromLocalFile(writeFile("empty.obj", "")));
    EXPECT_EQ(empty.getContentHash(), 0u);
    UrlSceneHandler missing(QUrl::fromLocalFile(ZmfTest::makeTempDir() + "/none.obj"));
    EXPECT_EQ(missing.getContentHash(), 0u);
    EXPECT_FALSE(missing.loadScene(SceneLoadOptions(), createSceneLoaderMgr().data(), nullptr));
}

TEST(UrlSceneHandler, NoManagerNoScene)
{
    UrlSceneHandler handler(QUrl::fromLocalFile(writeFile("t.obj", triangleObj)));
    EXPECT_FALSE(handler.loadScene(SceneLoadOptions(BakeLoadFlags), nullptr, nullptr));
    EXPECT_TRUE(handler.loadScene(SceneLoadOptions(BakeLoadFlags), createSceneLoaderMgr().data(), nullptr));
}

TEST(UrlSceneHandlerProvider, ServesExistingFileUrlsOnly)
{
    const QString path = writeFile("p.obj", triangleObj);
    UrlSceneHandlerProvider provider;
    auto handler = std::dynamic_pointer_cast<UrlSceneHandler>(provider.createHandler(fileId(path)));
    ASSERT_TRUE(handler);
    EXPECT_EQ(handler->getUrl(), QUrl::fromLocalFile(path));

    EXPECT_FALSE(provider.createHandler(fileId(path + ".gone")));
    EXPECT_FALSE(provider.createHandler(path.toStdString()));           // no "file:"
    EXPECT_FALSE(provider.createHandler("pkg://resource/mesh.obj"));
    EXPECT_FALSE(provider.createHandler("file:no/such/relative.obj"));
}

TEST(SceneMgr, EmptyIdIsRefusedWithADebugLine)
{
    SceneMgr mgr(createSceneLoaderMgr(), createSceneExporterMgr());
    ZmfTest::LogCapture log;
    mgr.registerScene("", std::make_shared<UrlSceneHandler>(QUrl::fromLocalFile("/x.obj")));
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_TRUE(log.lines().front().startsWith("[0]"));
    EXPECT_TRUE(log.lines().front().endsWith("]Can't register a scene with an id null or empty !"));
    EXPECT_FALSE(mgr.isSceneRegistered(""));
    EXPECT_FALSE(mgr.getHandler(""));
}

TEST(SceneMgr, LoadsLazilyKeepsVersionsAndInvalidates)
{
    SceneMgr mgr(createSceneLoaderMgr(), createSceneExporterMgr());
    mgr.setOptions(SceneLoadOptions(InfoLoadFlags));
    const QString path = writeFile("m.obj", triangleObj);
    const SceneId id = fileId(path);
    SceneTest::SignalRecorder loaded(&mgr, &SceneMgr::sceneIsLoadedChanged);
    SceneTest::SignalRecorder invalidated(&mgr, &SceneMgr::sceneInvalidated);

    EXPECT_FALSE(mgr.isSceneRegistered(id));
    auto scene = mgr.getScene(id);
    ASSERT_TRUE(scene);
    EXPECT_TRUE(mgr.isSceneRegistered(id)); // the provider made its handler
    EXPECT_TRUE(mgr.isSceneLoaded(id));
    ASSERT_EQ(loaded.count(), 1);
    EXPECT_EQ(loaded.arg<1>(0), true);
    const uint64_t version = mgr.getSceneVersion(id);
    EXPECT_EQ(mgr.getScene(id), scene); // as it stands, no reload
    EXPECT_EQ(loaded.count(), 1);

    // A new version of the file invalidates the entry; the next get reloads.
    emit mgr.getHandler(id)->newVersionAvailable();
    EXPECT_EQ(invalidated.count(), 1);
    EXPECT_FALSE(mgr.isSceneLoaded(id));
    auto reloaded = mgr.getScene(id);
    ASSERT_TRUE(reloaded);
    EXPECT_NE(reloaded, scene);
    EXPECT_GT(mgr.getSceneVersion(id), version);

    {
        SceneMgr::LockGuard guard(mgr);
        mgr.unloadScene(id); // recursive: the guard's thread may go on
    }
    EXPECT_FALSE(mgr.isSceneLoaded(id));
    EXPECT_EQ(loaded.arg<1>(loaded.count() - 1), false);
}

TEST(SceneMgr, UnknownOrMissingScenesStayEmpty)
{
    SceneMgr mgr(createSceneLoaderMgr(), createSceneExporterMgr());
    EXPECT_FALSE(mgr.getScene("pkg://x"));
    EXPECT_FALSE(mgr.getScene(fileId(ZmfTest::makeTempDir() + "/gone.obj")));

    // A registered handler whose file fails to parse: empty, reported.
    const QString bad = writeFile("bad.txt", "v 1 2 3\n");
    const SceneId id = "bad";
    mgr.registerScene(id, std::make_shared<UrlSceneHandler>(QUrl::fromLocalFile(bad)));
    SceneTest::SignalRecorder loaded(&mgr, &SceneMgr::sceneIsLoadedChanged);
    EXPECT_FALSE(mgr.getScene(id));
    ASSERT_EQ(loaded.count(), 1);
    EXPECT_FALSE(loaded.arg<1>(0));

    auto given = std::make_shared<Ond::SceneGraph::Scene>();
    mgr.setScene(id, given, 42);
    EXPECT_EQ(mgr.getScene(id), given);
    EXPECT_EQ(mgr.getSceneVersion(id), 42u);
}
