// `zmfbaker run` on real plans and meshes: the failures of a plan with their
// words and statuses, shared and per-node settings, tile lists, references
// between nodes, and the files each plan writes.

#include "common/ProcessRunner.h"
#include "common/TestPaths.h"

#include <QDir>
#include <QFile>
#include <QImage>

#include <gtest/gtest.h>

using ZmfTest::runZmfbaker;

namespace {

QString boxLow()
{
    return ZmfTest::testDataDir() + QStringLiteral("/box_low.obj");
}

QString udimPebble()
{
    return ZmfTest::examplesDir() + QStringLiteral("/pebble_udim_low.obj");
}

QString writePlan(const QString& dir, const QByteArray& json)
{
    const QString path = dir + QStringLiteral("/plan.json");
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(json);
    return path;
}

// A plan over `input` writing into `dir`, with `nodes` (members of the root
// object) after the shared settings.
QByteArray plan(const QString& input, const QString& dir, const QByteArray& nodes,
                const QByteArray& shared = QByteArray())
{
    return QStringLiteral("{\"inputs\": [\"%1\"], \"output-path\": \"%2\", \"output-size\": {\"width\": 5, "
                          "\"height\": 5}%3%4}")
               .arg(input, dir, QString::fromUtf8(shared.isEmpty() ? QByteArray() : ", " + shared),
                    QString::fromUtf8(nodes.isEmpty() ? QByteArray() : ", " + nodes))
        .toUtf8();
}

QStringList pngFiles(const QString& dir)
{
    return QDir(dir).entryList({QStringLiteral("*.png")}, QDir::Files, QDir::Name);
}

QStringList writtenLines(const QString& err)
{
    QStringList lines;
    for (const QString& line : err.split(QLatin1Char('\n')))
        if (line.startsWith(QLatin1String("[INFO][ZMFBaker]Writing file")))
            lines << line;
    return lines;
}

QStringList errorLines(const QString& err)
{
    QStringList lines;
    for (const QString& line : err.split(QLatin1Char('\n')))
        if (line.startsWith(QLatin1String("[ERROR]")))
            lines << line;
    return lines;
}

// Largest difference of one channel over the pixels where `mask` is set.
int maxDifference(const QImage& a, const QImage& b)
{
    const QImage x = a.convertToFormat(QImage::Format_RGBA64);
    const QImage y = b.convertToFormat(QImage::Format_RGBA64);
    int worst = 0;
    for (int row = 0; row < x.height(); ++row) {
        for (int col = 0; col < x.width(); ++col) {
            const QRgba64 p = x.pixelColor(col, row).rgba64();
            const QRgba64 q = y.pixelColor(col, row).rgba64();
            worst = std::max({worst, std::abs(int(p.red()) - int(q.red())), std::abs(int(p.green()) - int(q.green())),
                              std::abs(int(p.blue()) - int(q.blue()))});
        }
    }
    return worst;
}

} // namespace

TEST(BatchCommand, PlanFileFailures)
{
    const QString dir = ZmfTest::makeTempDir();
    auto r = runZmfbaker({"run"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]You must provide a path to a json path with option json.\n");

    const QString missing = dir + QStringLiteral("/missing.json");
    r = runZmfbaker({"run", "--json", missing});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, QStringLiteral("[ERROR][ZMFBaker]File \"%1\" not found.\n").arg(missing));

    r = runZmfbaker({"run", dir});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, QStringLiteral("[ERROR][ZMFBaker]Could not open file \"%1\".\n").arg(dir));

    const QString broken = writePlan(dir, "{\"inputs\": [");
    r = runZmfbaker({"run", broken});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, QStringLiteral("[ERROR][ZMFBaker]An error occurred while parsing \"%1\".\n").arg(broken));
}

TEST(BatchCommand, ValidationErrorsAndNoInputs)
{
    const QString dir = ZmfTest::makeTempDir();
    QString path = writePlan(dir, "{\"output-path\": \"x\"}");
    auto r = runZmfbaker({"run", path});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, QStringLiteral("[ERROR][ZMFBaker]JSON file \"%1\" is an invalid file.\n"
                                    "[ERROR][ZMFBaker]inputs not found at top level.\n")
                         .arg(path));

    // Every error is listed, the root's first, then the nodes' (nested ones too).
    path = writePlan(dir, R"({"inputs": "a.obj", "colour": 1, "uvTile": "1001",
        "a": {"baker": "no-such-baker"},
        "b": {"baker": "position", "parameters": {"nb-second-rays": 4, "uv-tile": {"u": 1, "v": 0},
              "inner": {"baker": "height-from-mesh", "parameters": {"cage-mesh": "c.obj", "min": 1}}}},
        "c": {"baker": "position", "parameters": 3}})");
    r = runZmfbaker({"run", path});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, QStringLiteral("[ERROR][ZMFBaker]JSON file \"%1\" is an invalid file.\n"
                                    "[ERROR][ZMFBaker]c: invalid attribute.\n"
                                    "[ERROR][ZMFBaker]colour: invalid attribute.\n"
                                    "[ERROR][ZMFBaker]uvTile: invalid attribute.\n"
                                    "[ERROR][ZMFBaker]Error: baker no-such-baker not found.\n"
                                    "[ERROR][ZMFBaker]min: invalid attribute.\n"
                                    "[ERROR][ZMFBaker]nb-second-rays: invalid attribute.\n")
                         .arg(path));

    path = writePlan(dir, R"({"inputs": [], "p": {"baker": "position"}})");
    r = runZmfbaker({"run", path});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]Error: No input(s) specified !\n");
}

TEST(BatchCommand, CycleWritesNothing)
{
    const QString dir = ZmfTest::makeTempDir();
    const QString path = writePlan(
        dir, plan(boxLow(), dir,
                  R"("a": {"baker": "texture-from-mesh", "parameters": {"texture-file": "baker://b"}},
                     "b": {"baker": "texture-from-mesh", "parameters": {"texture-file": "baker://a"}},
                     "c": {"baker": "position"})"));
    const auto r = runZmfbaker({"run", path});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]You have defined cyclic dependencies between your bakers.\n");
    EXPECT_EQ(pngFiles(dir), QStringList());
}

TEST(BatchCommand, SharedAndNodeSettings)
{
    const QString dir = ZmfTest::makeTempDir();
    // The plan forces OptiX, which this machine lacks: the command line's
    // "false" overwrites it and the detail bake runs on Embree. One node
    // fails on its format; the others are baked all the same.
    const QString path = writePlan(
        dir, plan(boxLow(), dir,
                  R"("height": {"baker": "height-from-mesh", "parameters": {"use-lowdef-as-highdef": true}},
                     "position": {"baker": "position",
                                  "parameters": {"output-size": {"width": 6, "height": 7}}},
                     "broken": {"baker": "normal-world-space", "parameters": {"output-format": "foo"}})",
                  R"("force-optix": true, "output-name": "{inputName}_{bakerName}")"));
    const auto r = runZmfbaker({"-v", "run", path});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(errorLines(r.err), QStringList{"[ERROR][ZMFBaker]unknown output format \"foo\""});
    EXPECT_EQ(writtenLines(r.err),
              (QStringList{"[INFO][ZMFBaker]Writing file ''...",
                           QStringLiteral("[INFO][ZMFBaker]Writing file '%1/box_low_height-from-mesh.png'...").arg(dir),
                           QStringLiteral("[INFO][ZMFBaker]Writing file '%1/box_low_position.png'...").arg(dir)}));
    EXPECT_EQ(pngFiles(dir), (QStringList{"box_low_height-from-mesh.png", "box_low_position.png"}));
    EXPECT_EQ(QImage(dir + "/box_low_height-from-mesh.png").size(), QSize(32, 32));
    EXPECT_EQ(QImage(dir + "/box_low_position.png").size(), QSize(64, 128));
}

TEST(BatchCommand, UvTileLists)
{
    const QString dir = ZmfTest::makeTempDir();
    const QByteArray node = R"("p": {"baker": "position"})";
    const QByteArray name = R"("output-name": "{bakerName}_{udim}")";

    // One string splits at its blanks; "0x1" is tile 1011.
    auto r = runZmfbaker({"-v", "run", writePlan(dir, plan(boxLow(), dir, node, name + R"(, "uvTiles": "1001 1002 0x1")"))});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(writtenLines(r.err).size(), 3);
    EXPECT_EQ(pngFiles(dir), (QStringList{"position_1001.png", "position_1002.png", "position_1011.png"}));

    // In a list, "1001 1002" is one item and no tile; the node's own list wins over the shared one.
    const QString other = ZmfTest::makeTempDir();
    r = runZmfbaker({"run", writePlan(other, plan(boxLow(), other,
                                                  R"("p": {"baker": "position", "parameters": {"uvTiles": ["1001 1002", "1003"]}})",
                                                  name + R"(, "uvTiles": "1005")"))});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, "[WARNING][ZMFBaker]Wrong uv tile coordinate in uvTiles list, must be udim (1001) or tile (0x1) "
                     "format, given 1001 1002, skipped.\n");
    EXPECT_EQ(pngFiles(other), QStringList{"position_1003.png"});

    // A column beyond 9 is dropped silently: one bake, at the settings' tile.
    const QString third = ZmfTest::makeTempDir();
    r = runZmfbaker({"run", writePlan(third, plan(boxLow(), third, node, name + R"(, "uvTiles": ["12x0"], "udim": "1013")"))});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(pngFiles(third), QStringList{"position_1013.png"});
}

TEST(BatchCommand, EveryCoveredTile)
{
    // The plan and the baker command write the same files: one per tile the
    // UVs cover, the UDIM number added to a name that lacks it.
    const QString planDir = ZmfTest::makeTempDir();
    auto r = runZmfbaker({"run", writePlan(planDir, plan(udimPebble(), planDir, R"("p": {"baker": "position"})",
                                                         R"("uvTiles": "auto")"))});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, "");
    const QStringList expected{"pebble_udim_low_position_1001.png", "pebble_udim_low_position_1002.png"};
    EXPECT_EQ(pngFiles(planDir), expected);

    const QString commandDir = ZmfTest::makeTempDir();
    r = runZmfbaker({"position", udimPebble(), "--udim", "auto", "--output-size", "5,5", "--output-path", commandDir});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(pngFiles(commandDir), expected);

    // Each tile is the single-tile bake of that tile.
    const QString singleDir = ZmfTest::makeTempDir();
    r = runZmfbaker({"position", udimPebble(), "--udim", "1002", "--output-size", "5,5", "--output-path", singleDir,
                     "--output-name", "single"});
    EXPECT_EQ(r.exitCode, 0);
    const QImage single(singleDir + "/single.png");
    ASSERT_FALSE(single.isNull());
    EXPECT_EQ(maxDifference(QImage(commandDir + "/" + expected[1]), single), 0);
    EXPECT_GT(maxDifference(QImage(commandDir + "/" + expected[0]), single), 0);

    // The same for a detail baker, whose seeds are drawn per tile.
    const QString high = ZmfTest::examplesDir() + QStringLiteral("/pebble_high.obj");
    const QString detailDir = ZmfTest::makeTempDir();
    r = runZmfbaker({"run", writePlan(detailDir, plan(udimPebble(), detailDir, R"("h": {"baker": "height-from-mesh"})",
                                                      QStringLiteral(R"("uvTiles": "auto", "highdef-mesh": "%1")")
                                                          .arg(high)
                                                          .toUtf8()))});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(pngFiles(detailDir), (QStringList{"pebble_udim_low_height-from-mesh_1001.png",
                                                "pebble_udim_low_height-from-mesh_1002.png"}));
    r = runZmfbaker({"height-from-mesh", udimPebble(), "--highdef-mesh", high, "--udim", "1001", "--output-size",
                     "5,5", "--output-path", singleDir, "--output-name", "height"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(maxDifference(QImage(detailDir + "/pebble_udim_low_height-from-mesh_1001.png"),
                            QImage(singleDir + "/height.png")),
              0);

    // A pattern with the tile keeps its form; a mesh in one tile gives one file.
    const QString boxDir = ZmfTest::makeTempDir();
    r = runZmfbaker({"position", boxLow(), "--udim", "auto", "--output-size", "5,5", "--output-path", boxDir,
                     "--output-name", "{udim}-{mesh}"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(pngFiles(boxDir), QStringList{"1001-box_low.png"});

    // A mesh without UVs covers no tile: told, and nothing written.
    const QString noUvDir = ZmfTest::makeTempDir();
    const QString noUv = ZmfTest::examplesDir() + QStringLiteral("/pebble_high.obj");
    r = runZmfbaker({"position", noUv, "--udim", "auto", "--output-path", noUvDir});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err,
              QStringLiteral("[ERROR][ZMFBaker]Error: The uv set 0 of \"%1\" covers no uv tile, nothing to bake.\n")
                  .arg(noUv));
    EXPECT_EQ(pngFiles(noUvDir), QStringList());
}

TEST(BatchCommand, ReferenceReadsTheProducersFileOfTheSameTile)
{
    // The consumer transfers the producer's map through the same UVs, so
    // each of its tiles matches the producer's file of that tile.
    const QString dir = ZmfTest::makeTempDir();
    const QString path = writePlan(
        dir, plan(udimPebble(), dir,
                  R"("copy": {"baker": "texture-from-mesh",
                              "parameters": {"texture-file": "baker://source", "use-lowdef-as-highdef": true,
                                             "output-name": "copy_{udim}"}},
                     "source": {"baker": "position", "parameters": {"output-name": "source_{udim}"}},
                     "loose": {"baker": "position", "parameters": {"uv-set": "baker://nowhere",
                                                                   "output-name": "loose"}})",
                  R"("uvTiles": "1001 1002")"));
    const auto r = runZmfbaker({"-v", "run", path});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(errorLines(r.err), QStringList());
    // Producer first, then its consumer, then the rest in name order.
    const QStringList written = writtenLines(r.err);
    ASSERT_EQ(written.size(), 6);
    EXPECT_TRUE(written[0].contains("source_1001")) << written[0].toStdString();
    EXPECT_TRUE(written[2].contains("copy_1001")) << written[2].toStdString();
    EXPECT_TRUE(written[4].contains("loose")) << written[4].toStdString();

    for (const QString udim : {QStringLiteral("1001"), QStringLiteral("1002")}) {
        const QImage source(dir + "/source_" + udim + ".png");
        const QImage copy(dir + "/copy_" + udim + ".png");
        ASSERT_FALSE(source.isNull());
        ASSERT_FALSE(copy.isNull());
        // Colours carried through an 8-bit texture: a few levels of 16 bits.
        EXPECT_LT(maxDifference(source, copy), 2 * 257) << udim.toStdString();
    }
    EXPECT_GT(maxDifference(QImage(dir + "/source_1001.png"), QImage(dir + "/copy_1002.png")), 20 * 257);
}

TEST(BatchCommand, HelpAndDescriptions)
{
    const auto help = runZmfbaker({"run", "--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.contains("Batch options:\n--json <path>\n            Json file describing an execution plan."))
        << help.out.toStdString();
    const auto description = runZmfbaker({"run", "--opt-descr"});
    EXPECT_TRUE(description.out.contains("\"name\": \"Batch options\"")) << description.out.toStdString();
    EXPECT_TRUE(description.out.contains("\"name\": \"force-dxr\"")) << description.out.toStdString();
    const auto all = runZmfbaker({"--help"});
    EXPECT_TRUE(all.out.contains("      run\n")) << all.out.toStdString();
    const auto udim = runZmfbaker({"position", "--help"});
    EXPECT_TRUE(udim.out.contains("\"auto\" bakes every tile")) << udim.out.toStdString();
}
