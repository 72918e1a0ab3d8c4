// Reuse of loaded scenes by a context that bakes many maps: the same file
// and flags give the same scene until the file changes.

#include "baking/BakingContext.h"
#include "common/TestPaths.h"
#include "scene/load/SceneExporterMgr.h"
#include "scene/load/SceneLoaderMgr.h"
#include "scene/load/SceneMgr.h"

#include <QFile>
#include <QThread>

#include <gtest/gtest.h>

TEST(BakingContextReuse, SameFileSameFlagsSameSceneUntilItChanges)
{
    const QString path = ZmfTest::makeTempDir() + QStringLiteral("/cage.obj");
    ASSERT_TRUE(QFile::copy(ZmfTest::testDataDir() + QStringLiteral("/box_low.obj"), path));
    Vrn::Baking::BakingContext context(std::make_shared<Ond::SceneLoad::SceneMgr>(
        Ond::SceneLoad::createSceneLoaderMgr(), Ond::SceneLoad::createSceneExporterMgr()));

    const auto first = context.loadSceneFile(path, 16);
    ASSERT_TRUE(first);
    EXPECT_NE(context.loadSceneFile(path, 16), first); // off by default

    context.setReuseLoadedScenes(true);
    const auto kept = context.loadSceneFile(path, 16);
    EXPECT_EQ(context.loadSceneFile(QStringLiteral("file://") + path, 16), kept);
    EXPECT_TRUE(context.convertedMeshes(kept));
    EXPECT_NE(context.loadSceneFile(path, 63), kept); // other flags, other scene

    // A rewritten file is loaded again.
    QThread::msleep(20);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::Append));
    file.write("\n# touched\n");
    file.close();
    EXPECT_NE(context.loadSceneFile(path, 16), kept);
}
