// Bakes from a high mesh with the options that change where rays come from:
// a cage, several high meshes matched by name, antialiasing.

#include "common/ProcessRunner.h"
#include "common/TestPaths.h"

#include <QDir>
#include <QFile>
#include <QTextStream>

#include <gtest/gtest.h>

using ZmfTest::runZmfbaker;

namespace {

QString boxLow() { return ZmfTest::testDataDir() + "/box_low.obj"; }
QString boxHigh() { return ZmfTest::testDataDir() + "/box_high.obj"; }

// box_low scaled about its centre: a cage around the high mesh. Without UVs
// when `withUvs` is false.
QString writeCage(const QString& dir, bool withUvs)
{
    QFile in(boxLow());
    EXPECT_TRUE(in.open(QIODevice::ReadOnly | QIODevice::Text));
    const QString path = dir + (withUvs ? "/cage.obj" : "/cage_nouv.obj");
    QFile out(path);
    EXPECT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Text));
    QTextStream text(&out);
    while (!in.atEnd()) {
        const QString line = QString::fromUtf8(in.readLine()).trimmed();
        const QStringList parts = line.split(' ', Qt::SkipEmptyParts);
        if (line.startsWith("v ")) {
            text << "v " << parts[1].toDouble() * 1.08 << ' ' << parts[2].toDouble() * 1.08 << ' '
                 << parts[3].toDouble() * 1.08 << '\n';
        } else if (line.startsWith("vt ") && !withUvs) {
            continue;
        } else if (line.startsWith("f ") && !withUvs) {
            text << 'f';
            for (int i = 1; i < parts.size(); ++i) {
                const QStringList ids = parts[i].split('/');
                text << ' ' << ids[0] << "//" << ids[2];
            }
            text << '\n';
        } else {
            text << line << '\n';
        }
    }
    return path;
}

QStringList filesIn(const QString& dir) { return QDir(dir).entryList({"*.png"}, QDir::Files, QDir::Name); }

} // namespace

TEST(DetailBakeCommandLine, CageBakesAndACageWithoutUvsIsMissingInputData)
{
    const QString out = ZmfTest::makeTempDir();
    auto r = runZmfbaker({"height-from-mesh", boxLow(), "--highdef-mesh", boxHigh(), "--use-cage", "true",
                          "--cage-mesh", writeCage(out, true), "--output-size", "7,7", "--output-path", out});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(filesIn(out), QStringList{"box_low_height-from-mesh.png"});

    const QString out2 = ZmfTest::makeTempDir();
    r = runZmfbaker({"height-from-mesh", boxLow(), "--highdef-mesh", boxHigh(), "--use-cage", "true",
                     "--cage-mesh", writeCage(out2, false), "--output-size", "7,7", "--output-path", out2});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, "[WARNING][Bakers]Could not find UV set 0 in cage mesh : box_low\n"
                     "[ERROR][Bakers]Baking failed (Height Map from Mesh)\n"
                     "Missing input data. Check the logs for more information.\n");
    EXPECT_TRUE(filesIn(out2).isEmpty());
}

TEST(DetailBakeCommandLine, SeveralHighMeshesMatchedByNameWithAntialiasing)
{
    const QString out = ZmfTest::makeTempDir();
    for (const QString& aa : {"0", "1", "2", "3"}) {
        const auto r = runZmfbaker({"normal-from-mesh", boxLow(), "--highdef-mesh", boxHigh(), "--highdef-mesh",
                                    boxHigh(), "--match", "1", "--antialiasing", aa, "--output-size", "6,6",
                                    "--output-path", out, "--output-name", "aa" + aa});
        EXPECT_EQ(r.exitCode, 0);
        EXPECT_EQ(r.err, "") << aa.toStdString();
    }
    EXPECT_EQ(filesIn(out), (QStringList{"aa0.png", "aa1.png", "aa2.png", "aa3.png"}));
}

TEST(DetailBakeCommandLine, NoHighMeshIsAnErrorUnlessTheLowMeshStandsIn)
{
    const QString out = ZmfTest::makeTempDir();
    auto r = runZmfbaker({"ambient-occlusion-from-mesh", boxLow(), "--output-path", out});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]Error: No high poly scene given.\n");
    EXPECT_TRUE(filesIn(out).isEmpty());
}
