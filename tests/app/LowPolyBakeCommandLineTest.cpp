// Low-poly bakes as a script runs them: what is written, and what is not
// when the bake fails.

#include "common/ProcessRunner.h"
#include "common/TestPaths.h"

#include <QDir>
#include <QImage>

#include <gtest/gtest.h>

using ZmfTest::runZmfbaker;

namespace {

QString boxLow() { return ZmfTest::testDataDir() + "/box_low.obj"; }

QStringList filesIn(const QString& dir) { return QDir(dir).entryList(QDir::Files, QDir::Name); }

} // namespace

TEST(LowPolyBakeCommandLine, MissingUvSetFailsTheBakeAndWritesNothing)
{
    const QString out = ZmfTest::makeTempDir();
    const auto r = runZmfbaker({"normal-world-space", boxLow(), "--uv-set", "3", "--output-path", out});
    // The command line made sense: status 0, the failure is in the log.
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, "[ERROR][Bakers]Baking failed (World Space Normals)\nUV set 3 doesn't exist\n");
    EXPECT_TRUE(filesIn(out).isEmpty());
}

TEST(LowPolyBakeCommandLine, GpuOptionsAreReadAndIgnoredByTheGlBakers)
{
    const QString out = ZmfTest::makeTempDir();
    const auto r = runZmfbaker({"-v", "normal-world-space", boxLow(), "--output-size", "5,5", "--disable-gpu", "true",
                                "--force-optix", "true", "--force-dxr", "false", "--nodxr", "true", "--nooptix", "yes",
                                "--output-path", out});
    EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_TRUE(r.err.contains(QStringLiteral("[INFO][ZMFBaker]Writing file '%1/box_low_normal-world-space.png'...")
                                   .arg(out)))
        << r.err.toStdString();
    EXPECT_EQ(filesIn(out), QStringList{"box_low_normal-world-space.png"});
}

TEST(LowPolyBakeCommandLine, EachInputIsBakedInTurnAndAFailedOneDoesNotStopTheRest)
{
    const QString out = ZmfTest::makeTempDir();
    const QString missing = out + "/missing.obj";
    const auto r = runZmfbaker({"position", missing, boxLow(), "--output-size", "5,5", "--output-path", out});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, QStringLiteral("[ERROR][ZMFBaker]Error: Scene \"%1\" couldn't be loaded .\n").arg(missing));
    EXPECT_EQ(filesIn(out), QStringList{"box_low_position.png"});
}

namespace {

// Bakes box_low's world normals at 128² and counts the texels left empty.
int emptyTexelsAfterBake(const QStringList& extraArgs)
{
    const QString out = ZmfTest::makeTempDir();
    const auto r = runZmfbaker(QStringList{"normal-world-space", boxLow(), "--output-size", "7,7", "--output-path", out} +
                               extraArgs);
    EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
    const QImage image(out + "/box_low_normal-world-space.png");
    EXPECT_EQ(image.size(), QSize(128, 128));
    int empty = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            // Empty texels are transparent black; diffusion fills the rest with blends.
            const QRgba64 texel = image.pixelColor(x, y).rgba64();
            if (texel.alpha() != 65535 || (texel.red() == 0 && texel.green() == 0 && texel.blue() == 0))
                ++empty;
        }
    return empty;
}

} // namespace

TEST(LowPolyBakeCommandLine, DefaultDilationAndDiffusionLeaveNoEmptyTexel)
{
    EXPECT_EQ(emptyTexelsAfterBake({}), 0);
    EXPECT_GT(emptyTexelsAfterBake({"--apply-diffusion", "false"}), 1000);
}
