// `zmfbaker info` on real files: the report, its flags, and the files that
// can't be loaded.

#include "common/ProcessRunner.h"
#include "common/TestPaths.h"

#include <QFile>

#include <gtest/gtest.h>

using ZmfTest::runZmfbaker;

namespace {

QString boxLow()
{
    return ZmfTest::testDataDir() + QStringLiteral("/box_low.obj");
}

QString writeFile(const QString& name, const QByteArray& content)
{
    const QString path = ZmfTest::makeTempDir() + QLatin1Char('/') + name;
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
    return path;
}

const char Identity[] = "((1, 0, 0, 0), (0, 1, 0, 0), (0, 0, 1, 0), (0, 0, 0, 1))";

} // namespace

TEST(InfoCommand, ReportsMeshUvSetAndTiles)
{
    const auto result = runZmfbaker({"info", boxLow(), "--list-uv-tiles"});
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    const QString expected = QStringLiteral(
        "File \"%1\":\n"
        "  Entity \"box_low\":\n"
        "    Label: box_low\n"
        "    Enabled: true\n"
        "    Bounding box:\n"
        "      Minimal point: (-1, -1, -1)\n"
        "      Maximal point: (1, 1, 1)\n"
        "      Center: (0, 0, 0)\n"
        "      Size: (2, 2, 2)\n"
        "    Location:\n"
        "      Local transformation: %2\n"
        "      Global transformation: %2\n"
        "    Mesh:\n"
        "      Name: box_low\n"
        "      Number of vertices: 150\n"
        "      UV 0:\n"
        "        Contained within unit square: true\n"
        "        Number of points: 150\n"
        "        UV tiles : (0, 0)\n"
        "        Udim tiles : 1001\n"
        "      Submesh \"\"\n"
        "        Label \n"
        "        Color: (1, 1, 1, 1)\n"
        "        Number of triangles: 188\n"
        "UV set 0\n"
        "  UV tiles : (0, 0)\n"
        "  Udim tiles : 1001\n").arg(boxLow(), QLatin1String(Identity));
    EXPECT_EQ(result.out.toStdString(), expected.toStdString());
}

TEST(InfoCommand, FlagsChooseEntitiesAndSections)
{
    const auto hidden = runZmfbaker({"info", "--hide-mesh", boxLow()});
    EXPECT_EQ(hidden.exitCode, 0);
    EXPECT_EQ(hidden.out, QStringLiteral("File \"%1\":\n").arg(boxLow()));

    const auto heads = runZmfbaker({"info", "--hide-mesh", "--hide-location", "--hide-bounding-box",
                                    "--list-all", boxLow()});
    EXPECT_EQ(heads.exitCode, 0);
    EXPECT_EQ(heads.out, QStringLiteral("File \"%1\":\n"
                                        "  Entity \"root\":\n"
                                        "    Label: Root\n"
                                        "    Enabled: true\n"
                                        "  Entity \"box_low\":\n"
                                        "    Label: box_low\n"
                                        "    Enabled: true\n").arg(boxLow()));

    // An OBJ file holds no camera: the flag adds nothing to the mesh report.
    const auto plain = runZmfbaker({"info", boxLow()});
    const auto camera = runZmfbaker({"info", "--print-camera", "--print-lighting", boxLow()});
    EXPECT_EQ(camera.exitCode, 0);
    EXPECT_EQ(camera.out, plain.out);
    EXPECT_FALSE(plain.out.contains("UV set"));
}

TEST(InfoCommand, ObjectsMaterialsAndUdimTiles)
{
    const QString path = writeFile(
        "tiles.obj",
        "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 2 2 2\n"
        "vt 0.5 0.5\nvt 1.5 0.5\nvt 0.5 1.5\n"
        "o left\nusemtl stone\nf 1/1 2/2 3/1\n"
        "o right\nusemtl wood\nf 1/1 4/3 2/1\nusemtl stone\nf 2/1 4/1 3/1\n");
    const auto result = runZmfbaker({"info", "--hide-location", "--hide-bounding-box", "--list-uv-tiles", path});
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(result.out.toStdString(),
              QStringLiteral("File \"%1\":\n"
                             "  Entity \"left\":\n"
                             "    Label: left\n"
                             "    Enabled: true\n"
                             "    Mesh:\n"
                             "      Name: left\n"
                             "      Number of vertices: 3\n"
                             "      UV 0:\n"
                             "        Contained within unit square: false\n"
                             "        Number of points: 3\n"
                             "        UV tiles : (0, 0) (1, 0)\n"
                             "        Udim tiles : 1001 1002\n"
                             "      Submesh \"stone\"\n"
                             "        Label stone\n"
                             "        Color: (1, 1, 1, 1)\n"
                             "        Number of triangles: 1\n"
                             "  Entity \"right\":\n"
                             "    Label: right\n"
                             "    Enabled: true\n"
                             "    Mesh:\n"
                             "      Name: right\n"
                             "      Number of vertices: 5\n"
                             "      UV 0:\n"
                             "        Contained within unit square: false\n"
                             "        Number of points: 5\n"
                             "        UV tiles : (0, 0) (0, 1)\n"
                             "        Udim tiles : 1001 1011\n"
                             "      Submesh \"wood\"\n"
                             "        Label wood\n"
                             "        Color: (1, 1, 1, 1)\n"
                             "        Number of triangles: 1\n"
                             "      Submesh \"stone\"\n"
                             "        Label stone\n"
                             "        Color: (1, 1, 1, 1)\n"
                             "        Number of triangles: 1\n"
                             "UV set 0\n"
                             "  UV tiles : (0, 0) (1, 0) (0, 1)\n"
                             "  Udim tiles : 1001 1002 1011\n")
                  .arg(path).toStdString());
}

TEST(InfoCommand, TilesWithoutUdimNumberAreListedAsTilesOnly)
{
    const QString path = writeFile("outside.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\n"
                                                  "vt -0.5 0.5\nvt -0.4 0.5\nvt -0.5 0.6\n"
                                                  "vt 0.5 0.5\nvt 0.6 0.5\nvt 0.5 0.6\n"
                                                  "vt 10.5 0.5\nvt 10.6 0.5\nvt 10.5 0.6\n"
                                                  "o part\nf 1/1 2/2 3/3\nf 1/4 2/5 3/6\nf 1/7 2/8 3/9\n");
    const auto result = runZmfbaker({"info", "--hide-mesh", "--list-uv-tiles", path});
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_TRUE(result.out.endsWith("UV set 0\n"
                                    "  UV tiles : (-1, 0) (0, 0) (10, 0)\n"
                                    "  Udim tiles : 1001\n"))
        << result.out.toStdString();
}

TEST(InfoCommand, UnreadableInputsAreReportedAndSkipped)
{
    const QString missing = ZmfTest::makeTempDir() + "/missing.obj";
    const QString empty = writeFile("empty.obj", "");
    const auto result = runZmfbaker({"info", "--hide-mesh", "--list-all", "--hide-location",
                                     "--hide-bounding-box", missing, empty, boxLow()});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.err.contains(QStringLiteral("[ERROR][ZMFBaker]File \"%1\" cannot be loaded .").arg(missing)))
        << result.err.toStdString();
    EXPECT_TRUE(result.err.contains(QStringLiteral("[ERROR][ZMFBaker]Open File Failed:\n  File is empty\n")))
        << result.err.toStdString();
    EXPECT_TRUE(result.err.contains(QStringLiteral("[ERROR][ZMFBaker]File \"%1\" cannot be loaded .").arg(empty)));
    EXPECT_TRUE(result.out.startsWith(QStringLiteral("File \"%1\":\n  Entity \"root\"").arg(boxLow())))
        << result.out.toStdString();

    const auto none = runZmfbaker({"info"});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_TRUE(none.err.contains("[ERROR][ZMFBaker]Error: No input(s) specified.")) << none.err.toStdString();
    EXPECT_TRUE(none.out.isEmpty());

    // Flags take no value: "true" is one more input.
    const auto flagValue = runZmfbaker({"info", "--print-camera", "true"});
    EXPECT_EQ(flagValue.exitCode, 0);
    EXPECT_TRUE(flagValue.err.contains("File \"true\" cannot be loaded ."));
}

TEST(InfoCommand, MalformedObjStillReportsWhatItHolds)
{
    const QString path = writeFile("bad.obj", "v 0 0 0\nv 1 0 0\nv 0 1\nv 0 1 0\nf 1 2 4\nf 1 2 3 4 1\n");
    const auto result = runZmfbaker({"info", "--hide-location", "--hide-bounding-box", path});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.err.contains("[ERROR][ZMFBaker]Parsing error:\n  Invalid vertex\nline 3 => v 0 1\n"
                                    "Parsing error:\n  N-Gone face not supported\nline 6 => f 1 2 3 4 1\n"))
        << result.err.toStdString();
    EXPECT_TRUE(result.out.contains("      Number of vertices: 3\n")) << result.out.toStdString();
    EXPECT_TRUE(result.out.contains("        Number of triangles: 1\n"));
}

TEST(InfoCommand, ListFormatsPrintsEachSuffixWithItsLabel)
{
    const auto result = runZmfbaker({"info", "--list-formats"});
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_TRUE(result.err.isEmpty()) << result.err.toStdString();
    const QStringList lines = result.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    const char* const expected[] = {
        "obj    Wavefront OBJ",           "fbx    Autodesk FBX",
        "glb    glTF 2.0 Binary",         "gltf   glTF 2.0",
        "ply    Stanford Polygon File",   "dae    COLLADA Digital Asset",
        "3ds    Autodesk 3D Studio Mesh", "dxf    Autodesk AutoCAD Drawing",
    };
    for (const char* line : expected)
        EXPECT_EQ(lines.count(QString::fromLatin1(line)), 1) << line << "\n" << result.out.toStdString();
    // Listed in the order the loaders are asked: the Assimp formats first.
    EXPECT_EQ(lines.indexOf("obj    Wavefront OBJ"), lines.size() - 1) << result.out.toStdString();
    QStringList suffixes;
    for (const QString& line : lines)
        suffixes << line.section(QLatin1Char(' '), 0, 0);
    EXPECT_EQ(suffixes.removeDuplicates(), 0) << result.out.toStdString();

    // With inputs the list comes first, then the usual report.
    const auto withInput = runZmfbaker({"info", "--list-formats", "--hide-mesh", boxLow()});
    EXPECT_EQ(withInput.exitCode, 0);
    EXPECT_EQ(withInput.out, result.out + QStringLiteral("File \"%1\":\n").arg(boxLow()));

    const auto help = runZmfbaker({"info", "--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.contains("--list-formats\n")) << help.out.toStdString();
}
