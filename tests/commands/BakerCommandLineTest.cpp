// What a script sees from a baker subcommand before any bake starts: exact
// messages and exit codes of the option transfer.

#include "common/ProcessRunner.h"

#include <gtest/gtest.h>

using ZmfTest::runZmfbaker;

TEST(BakerCommandLine, NoInputsIsAnError)
{
    const auto r = runZmfbaker({"height-from-mesh", "--output-size", "10,10"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]Error: No input(s) specified.\n");
}

TEST(BakerCommandLine, WrongTilesStopBeforeAnyInput)
{
    for (const QStringList& tile : {QStringList{"--uv-tile", "10,0"}, QStringList{"--udim", "1000"},
                                    QStringList{"--udim", "abc"}}) {
        const auto r = runZmfbaker(QStringList{"normal-from-mesh", "missing.obj"} + tile);
        EXPECT_EQ(r.exitCode, 1) << tile.join(' ').toStdString();
        EXPECT_EQ(r.err, "[ERROR][ZMFBaker]Wrong uv tile coordinates\n");
    }
}

TEST(BakerCommandLine, BothTileFormsAndSmallExponentsWarnAndGoOn)
{
    const auto r = runZmfbaker({"position", "missing.obj", "--uv-tile", "1,2", "--udim", "1001", "--output-size",
                                "4,11"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_TRUE(r.err.startsWith(
        "[WARNING][ZMFBaker]Exponent width for --output-size is smaller than 5 and will be raised to 5.\n"
        "[WARNING][ZMFBaker]Passed both --uv-tile and --udim, only --uv-tile will be used.\n"))
        << r.err.toStdString();
}

TEST(BakerCommandLine, MeshOptionsBelongToFromMeshBakersOnly)
{
    auto r = runZmfbaker({"position", "missing.obj", "--cage-mesh", "c.obj"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "[ERROR][CLIParser]Unknown option 'cage-mesh'.\n");

    // The older name of the SeAO option is no option of the normal baker.
    r = runZmfbaker({"normal-from-mesh", "missing.obj", "--normal-invert", "1"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "[ERROR][CLIParser]Unknown option 'normal-invert'.\n");
}

TEST(BakerCommandLine, HelpListsEnumEntriesWithTheDefault)
{
    const auto r = runZmfbaker({"uv-map", "--help"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_TRUE(r.out.contains("--mode <int>\n            How svg shapes will be colored.\n"
                               "            (0='Random', 1='Hue Shift',"))
        << r.out.toStdString();
    EXPECT_FALSE(r.out.contains("--cage-mesh"));
}
