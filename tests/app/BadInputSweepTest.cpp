// What a build farm throws at the program: broken meshes, impossible output
// paths, numbers out of every range, two writers of one name. Each case runs
// the real binary and checks its words and status; none may crash or hang
// (the runner fails a case after 120 s).

#include "commands/AtomicFileWriter.h"

#include "common/ProcessRunner.h"
#include "common/TestPaths.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>

#include <random>
#include <sys/stat.h>
#include <unistd.h>

using ZmfTest::runZmfbaker;

namespace {

QString boxLow()
{
    return ZmfTest::testDataDir() + QStringLiteral("/box_low.obj");
}

QStringList files(const QString& dir)
{
    return QDir(dir).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

const QByteArray Triangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 0 1\n";

struct Case
{
    const char* name;
    QStringList args;          // the input is appended unless empty
    QByteArray mesh;           // written as the input when not null
    int exitCode;
    QStringList said;          // lines or pieces the error stream must hold
    bool writes;               // whether the map is written
};

class BadInputSweep : public ::testing::Test
{
protected:
    void SetUp() override { m_dir = ZmfTest::makeTempDir(); }

    // Runs `baker` on `input` into a fresh output folder.
    ZmfTest::ProcessResult bake(const QStringList& args, const QString& out)
    {
        return runZmfbaker(args + QStringList{QStringLiteral("--output-path"), out});
    }

    void check(const Case& c, const QString& input)
    {
        SCOPED_TRACE(c.name);
        const QString out = ZmfTest::makeTempDir();
        QStringList args = c.args;
        if (!input.isEmpty())
            args.insert(1, input);
        const auto r = bake(args, out);
        EXPECT_FALSE(r.crashed) << r.err.toStdString();
        EXPECT_EQ(r.exitCode, c.exitCode) << r.err.toStdString();
        for (const QString& piece : c.said)
            EXPECT_TRUE(r.err.contains(piece)) << "missing \"" << piece.toStdString() << "\" in\n" << r.err.toStdString();
        if (c.writes)
            EXPECT_EQ(files(out).size(), 1) << r.err.toStdString();
        else
            EXPECT_EQ(files(out), QStringList()) << r.err.toStdString();
    }

    QString m_dir;
};

} // namespace

TEST_F(BadInputSweep, BrokenLowMeshes)
{
    std::mt19937 rng(77);
    QByteArray garbage(4096, '\0');
    for (char& c : garbage)
        c = char(rng());
    const QByteArray box = ZmfTest::readFile(boxLow());
    QByteArray hundredGon = "o ngon\n";
    QByteArray face = "f";
    for (int i = 0; i < 100; ++i) {
        hundredGon += QByteArray("v ") + QByteArray::number(std::cos(i * 0.0628)) + " "
            + QByteArray::number(std::sin(i * 0.0628)) + " 0\nvt 0.5 0.5\n";
        face += " " + QByteArray::number(i + 1) + "/" + QByteArray::number(i + 1);
    }
    hundredGon += face + "\n";

    const QStringList nws{QStringLiteral("normal-world-space"), QStringLiteral("--output-size"), QStringLiteral("5,5")};
    const QString noTriangles = QStringLiteral("has no triangles to bake.");
    const QString notLoaded = QStringLiteral("couldn't be loaded .");
    const std::vector<Case> cases = {
        {"empty file", nws, QByteArray(""), 0, {"File is empty", notLoaded}, false},
        {"truncated in a face", nws, box.left(box.lastIndexOf("\nf ") + 6), 0, {}, true},
        {"cut in the vertices", nws, box.left(box.indexOf("\nvt ") / 2), 0, {noTriangles}, false},
        {"random bytes", nws, garbage, 0, {noTriangles}, false},
        {"zero bytes", nws, QByteArray(2000, '\0'), 0, {noTriangles}, false},
        {"vertices only", nws, "v 0 0 0\nv 1 0 0\nv 0 1 0\n", 0, {noTriangles}, false},
        {"no UVs", nws, "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n", 0,
         {"has no UVs.", "Baking failed (World Space Normals)\nUV set 0 doesn't exist"}, false},
        {"NaN coordinates", nws, Triangle + "v nan nan 0\nf 1/1 2/2 4/3\n", 0, {}, true},
        {"huge coordinates", nws, "v 0 0 0\nv 3e38 0 0\nv 0 -3e38 0\nvt 0 0\nvt 1 0\nvt 0 1\nf 1/1 2/2 3/3\n", 0, {},
         true},
        {"infinite UVs", nws, "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt inf 0\nvt 0 nan\nf 1/1 2/2 3/3\n", 0, {}, true},
        {"huge UVs", nws, "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt 1e30 0\nvt 0 -1e30\nf 1/1 2/2 3/3\n", 0, {}, true},
        {"index past the end", nws, Triangle + "f 1/1 2/2 9/3\n", 0, {"invalid indices", notLoaded}, false},
        {"negative index past the start", nws, Triangle + "f -1/-1 -2/-2 -9/-3\n", 0, {notLoaded}, false},
        {"index of 4 billion", nws, Triangle + "f 1/1 2/2 4294967297/3\n", 0, {}, true},
        {"100-gon", nws, hundredGon, 0, {"N-Gone face not supported", noTriangles}, false},
        {"one line of a megabyte", nws, QByteArray("v ") + QByteArray(1 << 20, '1'), 0, {}, false},
        {"curvature on garbage", {"curvature", "--output-size", "5,5"}, garbage, 0, {noTriangles}, false},
        {"uv-map on garbage", {"uv-map", "--output-size", "5,5", "--output-format", "svg"}, garbage, 0, {noTriangles},
         false},
    };
    for (size_t i = 0; i < cases.size(); ++i) {
        const QString input = ZmfTest::writeFile(m_dir, QStringLiteral("mesh%1.obj").arg(i), cases[i].mesh);
        check(cases[i], input);
    }
}

TEST_F(BadInputSweep, ThingsThatAreNoMeshFiles)
{
    const QStringList nws{QStringLiteral("normal-world-space"), QStringLiteral("--output-size"), QStringLiteral("5,5")};
    ASSERT_TRUE(QDir(m_dir).mkdir(QStringLiteral("folder.obj")));
    const QString fifo = m_dir + QStringLiteral("/pipe.obj");
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);

    check({"a folder", nws, {}, 0, {"file to open is a directory", "couldn't be loaded ."}, false},
          m_dir + QStringLiteral("/folder.obj"));
    // Nobody writes to the FIFO: reading it would wait for ever.
    check({"a FIFO", nws, {}, 0, {"Error: Scene \"" + fifo + "\" couldn't be loaded ."}, false}, fifo);
    check({"a missing file", nws, {}, 0, {"couldn't be loaded ."}, false}, m_dir + QStringLiteral("/none.obj"));
    check({"an unknown suffix", nws, {}, 0, {"couldn't be loaded ."}, false},
          ZmfTest::writeFile(m_dir, QStringLiteral("mesh.xyz"), Triangle + "f 1/1 2/2 3/3\n"));
}

TEST_F(BadInputSweep, BrokenHighMeshes)
{
    std::mt19937 rng(78);
    QByteArray garbage(4096, '\0');
    for (char& c : garbage)
        c = char(rng());
    const QString high = ZmfTest::writeFile(m_dir, QStringLiteral("garbage_high.obj"), garbage);
    const QString out = ZmfTest::makeTempDir();
    auto r = bake({"height-from-mesh", boxLow(), "--highdef-mesh", high, "--output-size", "5,5"}, out);
    EXPECT_FALSE(r.crashed);
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]Error: Scene \"" + high + "\" has no triangles to bake.\n");
    EXPECT_EQ(files(out), QStringList());

    // A high mesh that doesn't load at all ends the run, as it always has;
    // the log names it first.
    const QString empty = ZmfTest::writeFile(m_dir, QStringLiteral("empty_high.obj"), QByteArray());
    r = bake({"height-from-mesh", boxLow(), "--highdef-mesh", empty, "--output-size", "5,5"}, out);
    EXPECT_TRUE(r.err.contains("[ERROR][ZMFBaker]Error: Scene \"" + empty + "\" couldn't be loaded .\n"))
        << r.err.toStdString();
    EXPECT_TRUE(r.err.contains("Unable to load high poly scene from Url")) << r.err.toStdString();
    EXPECT_EQ(files(out), QStringList());
}

TEST_F(BadInputSweep, NumbersOutOfEveryRange)
{
    const QString parserWords = QStringLiteral("expected a value of type double, but received non-convertible");
    const auto detail = [](std::initializer_list<const char*> more) {
        QStringList args{QStringLiteral("normal-from-mesh"), QStringLiteral("--highdef-mesh"), boxLow(),
                         QStringLiteral("--output-size"), QStringLiteral("5,5")};
        for (const char* m : more)
            args << QString::fromLatin1(m);
        return args;
    };
    const auto ao = [](std::initializer_list<const char*> more) {
        QStringList args{QStringLiteral("ambient-occlusion-from-mesh"), QStringLiteral("--highdef-mesh"), boxLow(),
                         QStringLiteral("--output-size"), QStringLiteral("5,5")};
        for (const char* m : more)
            args << QString::fromLatin1(m);
        return args;
    };
    const std::vector<Case> cases = {
        {"max-frontal nan", detail({"--max-frontal", "nan"}), {}, 1,
         {"[ERROR][CLIParser]Option max-frontal " + parserWords + " \"nan\"."}, false},
        {"max-rear inf", detail({"--max-rear", "inf"}), {}, 1, {parserWords}, false},
        {"max-rear -infinity", detail({"--max-rear", "-infinity"}), {}, 1, {parserWords}, false},
        {"max-frontal beyond float", detail({"--max-frontal", "1e39"}), {}, 1,
         {"[ERROR][ZMFBaker]Option max-frontal " + parserWords + " \"1e+39\"."}, false},
        {"max-frontal and max-rear at float's end", detail({"--max-frontal", "3e38", "--max-rear", "3e38"}), {}, 0, {},
         true},
        {"negative reach", detail({"--max-frontal", "-3e38", "--max-rear", "-3e38"}), {}, 0, {}, true},
        {"max-dist nan", ao({"--max-dist", "nan"}), {}, 1, {parserWords}, false},
        {"min-dist far below zero", ao({"--min-dist", "-3e38", "--nb-second-rays", "2"}), {}, 0, {}, true},
        {"max-dist at float's end", ao({"--max-dist", "3e38", "--nb-second-rays", "2"}), {}, 0, {}, true},
        {"spread-angle inf", ao({"--spread-angle", "inf"}), {}, 1, {parserWords}, false},
        {"dilation-width at int's end", {"position", "--output-size", "5,5", "--dilation-width", "2147483647"}, {}, 0,
         {}, true},
        {"dilation-width past int", {"position", "--output-size", "5,5", "--dilation-width", "2147483648"}, {}, 1,
         {"Option dilation-width expected a value of type int"}, false},
        {"negative dilation-width", {"position", "--output-size", "5,5", "--dilation-width", "-7"}, {}, 0, {}, true},
        {"uv-set at int's end", {"position", "--output-size", "5,5", "--uv-set", "2147483647"}, {}, 0,
         {"UV set 2147483647 doesn't exist"}, false},
        {"antialiasing far past its entries", detail({"--antialiasing", "99"}), {}, 0, {}, true},
        {"uv-tile at int's end", {"position", "--uv-tile", "2147483647,0"}, {}, 1, {"Wrong uv tile coordinates"},
         false},
        {"udim past 16 bits", {"position", "--udim", "99999"}, {}, 1, {"Wrong uv tile coordinates"}, false},
        {"output-size no machine holds", {"position", "--output-size", "30,30"}, {}, 0,
         {"[ERROR][ZMFBaker]Error: Not enough memory to bake a 1073741824x1073741824 map"}, false},
        {"world direction nan", {"world-space-direction", "--output-size", "5,5", "--direction-x", "nan"}, {}, 1,
         {parserWords}, false},
        {"normalization-scale at int's end",
         {"position", "--output-size", "5,5", "--normalization-scale", "2147483647"}, {}, 0, {}, true},
    };
    for (const Case& c : cases)
        check(c, boxLow());
}

TEST_F(BadInputSweep, OutputPathsThatCannotBeWritten)
{
    const QString file = ZmfTest::writeFile(m_dir, QStringLiteral("afile"), "keep");
    const QStringList pos{QStringLiteral("position"), boxLow(), QStringLiteral("--output-size"), QStringLiteral("5,5")};

    // A file where the folder should be.
    auto r = runZmfbaker(pos + QStringList{"--output-path", file});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]Writing file \"" + file + "/box_low_position.png\" failed.\n");
    EXPECT_EQ(ZmfTest::readFile(file), "keep");

    // A missing folder is not made.
    r = runZmfbaker(pos + QStringList{"--output-path", m_dir + "/missing"});
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]Writing file \"" + m_dir + "/missing/box_low_position.png\" failed.\n");
    EXPECT_FALSE(QFileInfo::exists(m_dir + "/missing"));

    // A folder under the output name stays a folder.
    const QString out = ZmfTest::makeTempDir();
    ASSERT_TRUE(QDir(out).mkdir(QStringLiteral("box_low_position.png")));
    r = runZmfbaker(pos + QStringList{"--output-path", out});
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]Writing file \"" + out + "/box_low_position.png\" failed.\n");
    EXPECT_TRUE(QFileInfo(out + "/box_low_position.png").isDir());
    EXPECT_EQ(QDir(out).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList{"box_low_position.png"});

    // A folder that refuses new files: a read-only file system, and for
    // anyone but root a folder without write permission.
    r = runZmfbaker(pos + QStringList{"--output-path", "/proc"});
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]Writing file \"/proc/box_low_position.png\" failed.\n");
    if (::geteuid() != 0) {
        const QString locked = ZmfTest::makeTempDir();
        QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
        r = runZmfbaker(pos + QStringList{"--output-path", locked});
        EXPECT_EQ(r.err, "[ERROR][ZMFBaker]Writing file \"" + locked + "/box_low_position.png\" failed.\n");
        QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }

    // A read-only earlier output is replaced whole, its permissions kept.
    const QString again = ZmfTest::makeTempDir();
    const QString earlier = ZmfTest::writeFile(again, QStringLiteral("box_low_position.png"), "old");
    QFile::setPermissions(earlier, QFileDevice::ReadOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther);
    r = runZmfbaker(pos + QStringList{"--output-path", again});
    EXPECT_EQ(r.err, "");
    EXPECT_TRUE(ZmfTest::readFile(earlier).startsWith("\x89PNG"));
    EXPECT_FALSE(QFileInfo(earlier).isWritable() && ::geteuid() != 0);
    EXPECT_EQ(files(again), QStringList{"box_low_position.png"});
}

TEST_F(BadInputSweep, TwoProcessesWritingOneName)
{
    const QString out = ZmfTest::makeTempDir();
    const QStringList args{"normal-world-space", boxLow(), "--output-size", "9,9", "--output-format", "tif",
                           "--output-path", out};
    const auto reference = runZmfbaker(args);
    ASSERT_EQ(reference.exitCode, 0);
    const QString output = out + QStringLiteral("/box_low_normal-world-space.tif");
    const QByteArray good = ZmfTest::readFile(output);
    QFile::remove(output);

    for (int round = 0; round < 3; ++round) {
        QProcess a;
        QProcess b;
        for (QProcess* p : {&a, &b}) {
            p->setProgram(ZmfTest::binaryPath());
            p->setArguments(args);
            p->start();
        }
        ASSERT_TRUE(a.waitForFinished(120000));
        ASSERT_TRUE(b.waitForFinished(120000));
        EXPECT_EQ(a.exitCode(), 0);
        EXPECT_EQ(b.exitCode(), 0);
        EXPECT_EQ(ZmfTest::readFile(output), good);
        EXPECT_EQ(files(out), QStringList{"box_low_normal-world-space.tif"});
    }
}
