// The bake run on the real binary: what a script sees when an input, a
// format, a plugin, a high mesh or a selection is wrong. No baker algorithm
// is needed for any of these.

#include "common/ProcessRunner.h"
#include "common/TestPaths.h"

#include <QDir>
#include <QFile>
#include <QUrl>

#include <gtest/gtest.h>

using ZmfTest::runZmfbaker;

namespace {

QString boxLow()
{
    return ZmfTest::testDataDir() + QStringLiteral("/box_low.obj");
}

QStringList outputFiles(const QString& dir)
{
    return QDir(dir).entryList(QDir::Files | QDir::NoDotAndDotDot);
}

} // namespace

TEST(BakeRun, InputThatCannotBeLoaded)
{
    const QString out = ZmfTest::makeTempDir();
    const auto r = runZmfbaker({"normal-world-space", "missing.obj", "--output-path", out});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]Error: Scene \"missing.obj\" couldn't be loaded .\n");
    EXPECT_EQ(outputFiles(out), QStringList());
}

TEST(BakeRun, FormatAndPluginFailures)
{
    const QString out = ZmfTest::makeTempDir();
    auto r = runZmfbaker({"position", boxLow(), "--output-path", out, "--output-format", "foo"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]unknown output format \"foo\"\n");

    r = runZmfbaker({"position", boxLow(), "--output-path", out, "--tangent-space-plugin", "/nowhere/plugin.so"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]Tangent space plugin not found: /nowhere/plugin.so\n");
    EXPECT_EQ(outputFiles(out), QStringList());
}

TEST(BakeRun, DetailBakerWithoutHighMesh)
{
    const QString out = ZmfTest::makeTempDir();
    auto r = runZmfbaker({"height-from-mesh", boxLow(), "--output-path", out});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]Error: No high poly scene given.\n");

    // The low mesh stands in for the high one: the bake runs and writes its map.
    r = runZmfbaker({"height-from-mesh", boxLow(), "--output-path", out, "--use-lowdef-as-highdef", "true"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_FALSE(r.err.contains(QStringLiteral("No high poly scene given")));
    EXPECT_FALSE(r.err.contains(QStringLiteral("[ERROR]"))) << r.err.toStdString();
    EXPECT_EQ(outputFiles(out), QStringList{QStringLiteral("box_low_height-from-mesh.png")});
}

TEST(BakeRun, MissingHighMeshEndsTheProcess)
{
    const QString out = ZmfTest::makeTempDir();
    const QString high = out + QStringLiteral("/high.obj");
    const auto r = runZmfbaker({"height-from-mesh", boxLow(), boxLow(), "--highdef-mesh", high, "--output-path", out});
    EXPECT_TRUE(r.crashed || r.exitCode != 0);
    EXPECT_TRUE(r.err.contains(QStringLiteral("Unable to load high poly scene from Url '%1'")
                                   .arg(QUrl::fromLocalFile(high).toString())))
        << r.err.toStdString();
    // Stopped at the first input, before anything was written.
    EXPECT_EQ(outputFiles(out), QStringList());
}

TEST(BakeRun, SelectionMessages)
{
    const QString out = ZmfTest::makeTempDir();
    const auto r = runZmfbaker({"position", boxLow(), "--output-path", out, "--output-format", "foo",
                                "--input-selection", "a@b@c", "--input-selection", "nothing", "--input-selection",
                                "box_low@2"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]selection token a@b@c isn't formated properly.\n"
                     "[ERROR][ZMFBaker]selection node nothing doesn't exist.\n"
                     "[ERROR][ZMFBaker]material id 2 not found in \"box_low\".\n"
                     "[ERROR][ZMFBaker]unknown output format \"foo\"\n");
}

TEST(BakeRun, OutputNamesAndPaths)
{
    const QString dir = ZmfTest::makeTempDir();
    ASSERT_TRUE(QFile::copy(boxLow(), dir + QStringLiteral("/a.b.obj")));
    ASSERT_TRUE(QDir(dir).mkpath(QStringLiteral("maps")));

    // A failed input doesn't keep the next one from being baked.
    auto r = runZmfbaker({"position", "missing.obj", "a.b.obj", "--output-size", "5,5", "--uv-tile", "1,2",
                          "--output-name", "{mesh}_{udim}"},
                         dir);
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]Error: Scene \"missing.obj\" couldn't be loaded .\n");
    EXPECT_EQ(outputFiles(dir), (QStringList{"a.b.obj", "a.b_1022.png"}));

    r = runZmfbaker({"--verbose", "position", "a.b.obj", "--output-size", "5,5", "--output-path", "{inputPath}/maps",
                     "--output-format", "PNG"},
                    dir);
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_TRUE(r.err.contains(QStringLiteral("[INFO][ZMFBaker]Writing file '%1/maps/a_position.PNG'...").arg(dir)))
        << r.err.toStdString();
    EXPECT_EQ(outputFiles(dir + QStringLiteral("/maps")), QStringList{"a_position.PNG"});
}

TEST(BakeRun, WritingFailures)
{
    const QString dir = ZmfTest::makeTempDir();
    auto r = runZmfbaker({"position", boxLow(), "--output-size", "5,5", "--output-path", dir + "/missing"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, QStringLiteral("[ERROR][ZMFBaker]Writing file \"%1/missing/box_low_position.png\" failed.\n").arg(dir));
    EXPECT_FALSE(QDir(dir + QStringLiteral("/missing")).exists());

    // SVG is the UV map's format only; the map is baked first.
    r = runZmfbaker({"position", boxLow(), "--output-size", "5,5", "--output-path", dir, "--output-format", "svg"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, QStringLiteral("[ERROR][ZMFBaker]Cannot save file \"%1/box_low_position.svg\" in format \"svg\" "
                                    "with baker \"Position\".\n")
                         .arg(dir));
    EXPECT_EQ(outputFiles(dir), QStringList());
}
