// The program as a script sees it: exact words, channels, levels and exit
// statuses of the command-line frame, on the real binary.

#include "common/ProcessRunner.h"
#include "common/TestPaths.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <gtest/gtest.h>

using ZmfTest::runZmfbaker;

namespace {

QStringList bakerSubcommands()
{
    return {"ambient-occlusion",           "ambient-occlusion-from-mesh", "bent-normal-from-mesh",
            "color-from-mesh",             "curvature",                   "curvature-from-mesh",
            "curvature-from-mesh-v2",      "height-from-mesh",            "normal-from-mesh",
            "normal-world-space",          "opacity-mask-from-mesh",      "position",
            "position-from-mesh",          "texture-from-mesh",           "thickness-from-mesh",
            "uv-map",                      "world-space-direction"};
}

} // namespace

TEST(CommandLine, VersionWithoutDisplay)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove("DISPLAY");
    env.remove("QT_QPA_PLATFORM");
    env.remove("WAYLAND_DISPLAY");
    const auto r = runZmfbaker({"--version"}, QString(), env);
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.out, "version 14.0.1 (build 8268 commit 0x636da6f4)\n");
    EXPECT_EQ(r.err, "");
}

TEST(CommandLine, FallsBackToSurfacelessEglWithoutXvfb)
{
    // No Xvfb on the PATH and no display: the program must still get GL.
    QProcessEnvironment env;
    env.insert("PATH", "/nonexistent");
    env.insert("HOME", ZmfTest::makeTempDir());
    const auto r = runZmfbaker({"-V"}, QString(), env);
    EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_EQ(r.out, "version 14.0.1 (build 8268 commit 0x636da6f4)\n");
}

TEST(CommandLine, SubcommandMissingOrUnknown)
{
    auto r = runZmfbaker({});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err,
              "[ERROR][CLIParser]A subcommand must be provided.  Run 'zmfbaker --help' to see available "
              "subcommands.\n");

    r = runZmfbaker({"frobnicate"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err,
              "[ERROR][CLIParser]Unknown subcommand 'frobnicate'.  Run 'zmfbaker --help' to see available "
              "subcommands.\n");
}

TEST(CommandLine, BadValuesAreRejectedWithStatusOne)
{
    auto r = runZmfbaker({"height-from-mesh", "--output-size", "10"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err,
              "[ERROR][CLIParser]Option output-size expected a value of type QSize, but received "
              "non-convertible \"10\".\n");

    // The boolean words are case-sensitive.
    r = runZmfbaker({"height-from-mesh", "a.obj", "--use-cage", "YES"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err,
              "[ERROR][CLIParser]Option use-cage expected a value of type bool, but received "
              "non-convertible \"YES\".\n");

    r = runZmfbaker({"height-from-mesh", "--nonsense"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "[ERROR][CLIParser]Unknown option 'nonsense'.\n");
}

TEST(CommandLine, TileRulesAndMissingInputs)
{
    auto r = runZmfbaker({"height-from-mesh", "a.obj", "--udim", "1000"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]Wrong uv tile coordinates\n");

    r = runZmfbaker({"height-from-mesh", "--uv-tile", "1,2", "--udim", "1001"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err,
              "[WARNING][ZMFBaker]Passed both --uv-tile and --udim, only --uv-tile will be used.\n"
              "[ERROR][ZMFBaker]Error: No input(s) specified.\n");

    // -q hides the warning, before or after the subcommand alike.
    for (const QStringList& args : {QStringList{"-q", "height-from-mesh", "--uv-tile", "1,2", "--udim", "1001"},
                                    QStringList{"height-from-mesh", "--uv-tile", "1,2", "--udim", "1001", "-q"}}) {
        r = runZmfbaker(args);
        EXPECT_EQ(r.exitCode, 1);
        EXPECT_EQ(r.err, "[ERROR][ZMFBaker]Error: No input(s) specified.\n");
    }

    r = runZmfbaker({"position", "--output-size", "4,11"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err,
              "[WARNING][ZMFBaker]Exponent width for --output-size is smaller than 5 and will be raised to 5.\n"
              "[ERROR][ZMFBaker]Error: No input(s) specified.\n");
}

TEST(CommandLine, LowPolyBakersHaveNoHighMeshOptions)
{
    const auto r = runZmfbaker({"position", "a.obj", "--highdef-mesh", "b.obj"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "[ERROR][CLIParser]Unknown option 'highdef-mesh'.\n");
}

TEST(CommandLine, HelpListsTheBakerSubcommandsSorted)
{
    const auto r = runZmfbaker({"--help"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_TRUE(r.out.startsWith("Usage:\n      zmfbaker [<global_option>...] <command> [<option>...] <inputs>...\n"
                                 "      zmfbaker [<global_option>...]\n"))
        << r.out.toStdString();
    const int listStart = r.out.indexOf("Available commands are:\n");
    ASSERT_GE(listStart, 0);
    QStringList names;
    QRegularExpression commandLine("^      ([a-z0-9-]+)$", QRegularExpression::MultilineOption);
    auto it = commandLine.globalMatch(r.out.mid(listStart));
    while (it.hasNext())
        names << it.next().captured(1);
    for (const QString& name : bakerSubcommands())
        EXPECT_TRUE(names.contains(name)) << name.toStdString();
    QStringList sorted = names;
    sorted.sort();
    EXPECT_EQ(names, sorted);
    EXPECT_TRUE(r.out.contains("--version, -V\n")) << r.out.toStdString();
    EXPECT_FALSE(r.out.contains("--opt-descr")) << "hidden options stay out of help";
}

TEST(CommandLine, CommandHelpShowsBothGroupsWithValuesAndDefaults)
{
    const auto r = runZmfbaker({"ambient-occlusion-from-mesh", "--help"});
    EXPECT_EQ(r.exitCode, 0);
    // The usage line is wrapped like all help text.
    EXPECT_TRUE(r.out.startsWith("Usage:\n      zmfbaker [<global_option>...] ambient-occlusion-from-mesh "
                                 "[<option>...]\n      <inputs>...\n"))
        << r.out.toStdString();
    EXPECT_TRUE(r.out.contains("Input and output options"));
    EXPECT_TRUE(r.out.contains("ambient-occlusion-from-mesh options"));
    EXPECT_TRUE(r.out.contains("--output-name <name>"));
    EXPECT_TRUE(r.out.contains("[default: \"{inputName}_{bakerName}\"]"));
    EXPECT_TRUE(r.out.contains("--output-size <w>,<h>"));
    EXPECT_TRUE(r.out.contains("--highdef-mesh <path>"));
    EXPECT_TRUE(r.out.contains("--cage-mesh <path>"));
    EXPECT_TRUE(r.out.contains("--uv-tile <u>,<v>"));
    EXPECT_FALSE(r.out.contains("--output-format-compression"));
}

TEST(CommandLine, OptionDescriptionIsJsonAScriptCanRead)
{
    const auto r = runZmfbaker({"--opt-descr"});
    EXPECT_EQ(r.exitCode, 0);
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(r.out.toUtf8(), &error);
    ASSERT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    ASSERT_TRUE(doc.isArray());
    const QJsonArray commands = doc.array();
    EXPECT_EQ(commands.at(0).toObject().value("name").toString(), "");

    QStringList names;
    for (const auto& value : commands)
        names << value.toObject().value("name").toString();
    for (const QString& name : bakerSubcommands())
        EXPECT_TRUE(names.contains(name)) << name.toStdString();

    for (const auto& value : commands) {
        const QJsonObject command = value.toObject();
        if (command.value("name").toString() != "normal-from-mesh")
            continue;
        bool sawOutputName = false;
        for (const auto& optionValue : command.value("options").toArray()) {
            const QJsonObject option = optionValue.toObject();
            EXPECT_TRUE(option.contains("type"));
            EXPECT_TRUE(option.contains("category"));
            if (option.value("name").toString() == "output-name") {
                sawOutputName = true;
                EXPECT_EQ(option.value("type").toString(), "string");
                EXPECT_EQ(option.value("default").toString(), "{inputName}_{bakerName}");
            }
        }
        EXPECT_TRUE(sawOutputName);
    }
}

TEST(CommandLine, UsageShowsTheNameTheBinaryWasStartedUnder)
{
    const QString copy = ZmfTest::buildDir() + "/renamed-baker";
    QFile::remove(copy);
    ASSERT_TRUE(QFile::copy(ZmfTest::binaryPath(), copy));
    QFile::setPermissions(copy, QFile::permissions(ZmfTest::binaryPath()));
    const auto r = ZmfTest::runProgram(copy, {});
    QFile::remove(copy);
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err,
              "[ERROR][CLIParser]A subcommand must be provided.  Run 'renamed-baker --help' to see available "
              "subcommands.\n");
}

TEST(CommandLine, ThreadCapIsAGlobalOptionOrAVariable)
{
    auto r = runZmfbaker({"--threads", "two", "height-from-mesh", "a.obj"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err,
              "[ERROR][CLIParser]Option threads expected a value of type uint, but received non-convertible "
              "\"two\".\n");

    r = runZmfbaker({"--threads", "1", "height-from-mesh"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]Error: No input(s) specified.\n");

    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("OND_THREADS", "-3");
    r = runZmfbaker({"height-from-mesh"}, QString(), env);
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err,
              "[WARNING][CLIParser]Environment variable OND_THREADS expected a value of type uint, but received "
              "non-convertible \"-3\"; all cores are used.\n"
              "[ERROR][ZMFBaker]Error: No input(s) specified.\n");

    r = runZmfbaker({"--help"});
    EXPECT_TRUE(r.out.contains("--threads <count>\n")) << r.out.toStdString();
}
