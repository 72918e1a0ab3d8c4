// The Assimp formats through the real binary: `info` on the box pair in
// every format, and broken files (truncated, garbage, unsupported, without
// a mesh) that must end in the loading framework's line and nothing else.

#include "common/ProcessRunner.h"
#include "common/TestPaths.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <map>

namespace {

QString testFile(const QString& name)
{
    return ZmfTest::testDataDir() + '/' + name;
}

// The lines of `info` that describe the mesh rather than its file.
QStringList meshFacts(const QString& out)
{
    QStringList facts;
    const QRegularExpression wanted(
        QStringLiteral("^\\s*(Number of vertices|Number of triangles|Number of points|UV tiles|Udim tiles|"
                       "Contained within unit square)"));
    for (const QString& line : out.split('\n'))
        if (wanted.match(line).hasMatch())
            facts << line.trimmed();
    return facts;
}

} // namespace

TEST(FBXSceneImporterCommandLine, InfoGivesTheSameCountsAndTilesForEveryFormat)
{
    for (const char* stem : {"box_low", "box_high"}) {
        const QString obj = testFile(QString("%1.obj").arg(stem));
        const ZmfTest::ProcessResult reference = ZmfTest::runZmfbaker({"info", obj, "--list-uv-tiles"});
        ASSERT_EQ(reference.exitCode, 0);
        const QStringList expected = meshFacts(reference.out);
        ASSERT_GE(expected.size(), 2) << reference.out.toStdString();
        for (const char* suffix : {"fbx", "glb", "dae", "ply"}) {
            const QString path = testFile(QString("%1.%2").arg(stem, suffix));
            const ZmfTest::ProcessResult result = ZmfTest::runZmfbaker({"info", path, "--list-uv-tiles"});
            EXPECT_EQ(result.exitCode, 0);
            EXPECT_TRUE(result.err.isEmpty()) << result.err.toStdString();
            EXPECT_TRUE(result.out.contains(QString("Entity \"%1\":").arg(stem))) << result.out.toStdString();
            QStringList facts = meshFacts(result.out);
            // PLY stores one normal per vertex: the high mesh's split normals
            // were merged by the tool that wrote it, and so were its vertices.
            if (QLatin1String(suffix) == QLatin1String("ply") && QLatin1String(stem) == QLatin1String("box_high")) {
                EXPECT_EQ(facts.value(0), "Number of vertices: 32274");
                facts[0] = expected.value(0);
            }
            EXPECT_EQ(facts, expected) << stem << "." << suffix;
        }
    }
}

// A cut inside the data fails; a cut in the last bytes may only remove a
// binary FBX's footer, which holds no geometry, and then the whole mesh
// loads.
TEST(FBXSceneImporterCommandLine, TruncatedCopiesFailWithTheLoadingLineAlone)
{
    const QString dir = ZmfTest::makeTempDir();
    for (const char* name : {"box_low.fbx", "box_low.glb", "box_low.dae", "box_low.ply", "box_high.glb"}) {
        const QByteArray content = ZmfTest::readFile(testFile(name));
        ASSERT_GT(content.size(), 1000);
        const QString suffix = QFileInfo(name).suffix();
        const qsizetype size = content.size();
        QStringList copies, mustFail;
        for (qsizetype cut : {qsizetype(0), qsizetype(1), qsizetype(16), qsizetype(100), size / 10, size / 4,
                              size / 2, size * 3 / 4, size * 9 / 10, size - 100, size - 1}) {
            copies << ZmfTest::writeFile(dir, QString("%1_cut%2.%3").arg(QFileInfo(name).baseName()).arg(cut).arg(suffix),
                                content.left(cut));
            if (cut < size - 200 || suffix != QLatin1String("fbx"))
                mustFail << copies.back();
        }
        const ZmfTest::ProcessResult result = ZmfTest::runZmfbaker(QStringList{"info"} + copies);
        EXPECT_FALSE(result.crashed) << name;
        EXPECT_EQ(result.exitCode, 0) << name;
        const QStringList errors = result.err.split('\n', Qt::SkipEmptyParts);
        for (const QString& copy : copies) {
            const QString line = QString("[ERROR][ZMFBaker]File \"%1\" cannot be loaded .").arg(copy);
            if (mustFail.contains(copy)) {
                EXPECT_TRUE(errors.contains(line)) << copy.toStdString();
            } else if (!errors.contains(line)) {
                const QString loaded = result.out.section(QString("File \"%1\":").arg(copy), 1, 1);
                EXPECT_TRUE(loaded.contains("Number of triangles: 188")) << copy.toStdString();
            }
        }
        for (const QString& error : errors)
            EXPECT_TRUE(error.startsWith("[ERROR][ZMFBaker]File \"")) << error.toStdString();
    }
}

TEST(FBXSceneImporterCommandLine, GarbageUnsupportedAndMeshlessFilesFail)
{
    const QString dir = ZmfTest::makeTempDir();
    QByteArray noise;
    for (int i = 0; i < 4096; ++i)
        noise.append(char((i * 7919 + 13) & 0xff));
    // Inputs on which Assimp's own readers would never return: a PLY whose
    // "end_header" ran into the line before, and a COLLADA index list with
    // a stray character.
    QByteArray dae = ZmfTest::readFile(testFile("box_low.dae"));
    const qsizetype list = dae.indexOf("<p>");
    ASSERT_GT(list, 0);
    dae[dae.indexOf(' ', list)] = '}';
    // A GLB whose JSON chunk claims 3 GB: refused before Assimp allocates it.
    QByteArray glb = ZmfTest::readFile(testFile("box_low.glb"));
    glb[15] = char(0xb8);
    // An FBX whose compressed UV index array claims 470 M elements.
    QByteArray fbx = ZmfTest::readFile(testFile("box_low.fbx"));
    const qsizetype uvIndex = fbx.indexOf("UVIndex") + 7;
    ASSERT_GT(uvIndex, 7);
    ASSERT_EQ(fbx[uvIndex], 'i');
    fbx[uvIndex + 4] = char(0x1c);
    const QStringList files{
        ZmfTest::writeFile(dir, "huge.glb", glb),
        ZmfTest::writeFile(dir, "claims.fbx", fbx),
        // A face without indices, which Assimp's triangulation would abort on.
        ZmfTest::writeFile(dir, "emptyface.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
                                        "property float z\nelement face 1\nproperty list uchar int vertex_indices\n"
                                        "end_header\n0 0 0\n1 0 0\n0 1 0\n0\n"),
        ZmfTest::writeFile(dir, "noise.fbx", noise),
        ZmfTest::writeFile(dir, "runon.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
                                    "property float z\nelement face 1\nproperty list uchar int vertex_indicesend_header\n"
                                    "0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n"),
        ZmfTest::writeFile(dir, "stray.dae", dae),
        // An element name that Assimp would read as a count of 88 trillion.
        ZmfTest::writeFile(dir, "digits.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
                                     "property float z\nelement 88888888888888face 1\n"
                                     "property list uchar int vertex_indices\nend_header\n"
                                     "0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n"),
        ZmfTest::writeFile(dir, "noise.glb", noise),
        // Header lines no writer writes, on which Assimp's PLY reader frees
        // what it did not allocate.
        ZmfTest::writeFile(dir, "mixed.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty fl\nproperty float x\n"
                                    "propertmat ascii 1.0\nend_header\n0\n1\n2\n"),
        ZmfTest::writeFile(dir, "version.ply", "ply\nformat ascii 2.0\nelement vertex 1\nproperty float x\nend_header\n0\n"),
        // A PLY under another name, its header cut: the glTF reader passes
        // it on, and Assimp's PLY reader would loop on it.
        ZmfTest::writeFile(dir, "ply.glb", "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nelement face 1\n"
                                  "property list uchar int vertex_indices}}}}0 1 2\n"),
        ZmfTest::writeFile(dir, "noise.3ds", noise),
        ZmfTest::writeFile(dir, "noise.dae", noise),
        ZmfTest::writeFile(dir, "text.ply", "ply\nformat ascii 1.0\nelement vertex 3\nend_header\nnot numbers\n"),
        // An FBX of the 6.1 kind, which Assimp does not read.
        ZmfTest::writeFile(dir, "old.fbx", QByteArray("Kaydara FBX Binary  \0\x1a\0", 23) + QByteArray("\xd4\x17\0\0", 4)
                                      + QByteArray(300, '\0')),
        ZmfTest::writeFile(dir, "future.gltf", R"({"asset":{"version":"3.0"},"scenes":[{"nodes":[0]}],"nodes":[{"name":"n"}]})"),
        ZmfTest::writeFile(dir, "nomesh.gltf", R"({"asset":{"version":"2.0"},"scenes":[{"nodes":[0]}],"nodes":[{"name":"n"}]})"),
        ZmfTest::writeFile(dir, "lines.dxf", "0\nSECTION\n2\nENTITIES\n0\nLINE\n8\n0\n10\n0\n20\n0\n30\n0\n11\n1\n21\n1\n31\n1\n"
                                    "0\nENDSEC\n0\nEOF\n"),
    };
    const ZmfTest::ProcessResult info = ZmfTest::runZmfbaker(QStringList{"info"} + files);
    EXPECT_EQ(info.exitCode, 0);
    QStringList expected;
    for (const QString& file : files)
        expected << QString("[ERROR][ZMFBaker]File \"%1\" cannot be loaded .").arg(file);
    EXPECT_EQ(info.err.split('\n', Qt::SkipEmptyParts), expected);

    // A bake names the file in the framework's words; what Assimp said
    // comes as information, shown with -v only.
    const QStringList bake{"normal-from-mesh", files.front(), "--highdef-mesh", testFile("box_high.obj"),
                           "--output-path", dir};
    const ZmfTest::ProcessResult quiet = ZmfTest::runZmfbaker(bake);
    EXPECT_EQ(quiet.exitCode, 0);
    EXPECT_EQ(quiet.err.split('\n', Qt::SkipEmptyParts),
              QStringList({QString("[ERROR][ZMFBaker]Error: Scene \"%1\" couldn't be loaded .").arg(files.front())}));
    const ZmfTest::ProcessResult verbose = ZmfTest::runZmfbaker(QStringList{"-v"} + bake);
    EXPECT_TRUE(verbose.err.contains(QString("[INFO][ZMFBaker]%1: ").arg(files.front()))) << verbose.err.toStdString();
    EXPECT_TRUE(verbose.err.contains(QString("[ERROR][ZMFBaker]Error: Scene \"%1\" couldn't be loaded .").arg(files.front())));
}
