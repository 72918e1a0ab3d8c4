// The OBJ reader on small files: every statement, its messages with line
// numbers, and what the file still yields around malformed lines.

#include "common/TestPaths.h"
#include "scene/obj/ObjFileParser.h"
#include "scene/obj/ObjReindexer.h"

#include <QBuffer>
#include <QFile>

#include <Eigen/Geometry>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <map>
#include <cstdlib>
#include <cstring>
#include <memory>

using namespace Ond::SceneLoad;

namespace {

QString writeFile(const QByteArray& content)
{
    static int counter = 0;
    const QString path = ZmfTest::makeTempDir() + QStringLiteral("/f%1.obj").arg(++counter);
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
    return path;
}

struct Parsed
{
    std::unique_ptr<QFile> file;
    std::unique_ptr<ObjFileParser> parser;

    const std::vector<ObjMesh>& meshes() const { return parser->meshes(); }
    std::vector<ObjError> errors() const { return parser->errors(); }
    QStringList errorTexts() const
    {
        QStringList texts;
        for (const ObjError& error : parser->errors())
            texts << error.text;
        return texts;
    }
};

Parsed parse(const QByteArray& content, bool computeNormals = false)
{
    Parsed parsed;
    parsed.file = std::make_unique<QFile>(writeFile(content));
    parsed.parser = std::make_unique<ObjFileParser>(parsed.file.get(), computeNormals, nullptr);
    return parsed;
}

std::vector<uint32_t> indicesOf(const ObjMesh& mesh)
{
    std::vector<uint32_t> all;
    for (const ObjSubMesh& subMesh : mesh.subMeshes)
        all.insert(all.end(), subMesh.indices.begin(), subMesh.indices.end());
    return all;
}

} // namespace

TEST(ObjFileParser, ReadsPositionsTexcoordsNormalsAndSharesEqualCorners)
{
    const auto parsed = parse("# two triangles sharing an edge\n"
                              "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
                              "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
                              "vn 0 0 1\n"
                              "f 1/1/1 2/2/1 3/3/1\n"
                              "f 1/1/1 3/3/1 4/4/1\n");
    ASSERT_TRUE(parsed.errors().empty());
    ASSERT_EQ(parsed.meshes().size(), 1u);
    const ObjMesh& mesh = parsed.meshes()[0];
    EXPECT_TRUE(mesh.name.isEmpty());
    ASSERT_EQ(mesh.positions.size(), 4u);
    ASSERT_EQ(mesh.texcoords.size(), 4u);
    ASSERT_EQ(mesh.normals.size(), 4u);
    EXPECT_TRUE(mesh.colors.empty());
    EXPECT_EQ(indicesOf(mesh), (std::vector<uint32_t>{0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(mesh.positions[2], Eigen::Vector3f(1, 1, 0));
    EXPECT_EQ(mesh.texcoords[3], Eigen::Vector2f(0, 1));
    EXPECT_EQ(mesh.normals[1], Eigen::Vector3f(0, 0, 1));
}

TEST(ObjFileParser, MalformedStatementsAreReportedWithLineAndText)
{
    const auto parsed = parse("v 0 0 0\n"          // 1
                              "v 1 2\n"            // 2: still index 2
                              "v 1\t0 0\n"         // 3: tab between numbers
                              "v 0 1 0\n"          // 4
                              "vt 0.5\n"           // 5
                              "vn 1 0\n"           // 6
                              "f 1 2 3 4 4\n"      // 7
                              "f 1/1 2 3\n"        // 8
                              "f 1 2\n"            // 9
                              "f 1 4 2\n");        // 10
    EXPECT_EQ(parsed.errorTexts(),
              (QStringList{"Invalid vertex\nline 2 => v 1 2",
                           "Invalid vertex\nline 3 => v 1\t0 0",
                           "Invalid texture coordinate\nline 5 => vt 0.5",
                           "Invalid normal\nline 6 => vn 1 0",
                           "N-Gone face not supported\nline 7 => f 1 2 3 4 4",
                           "Invalid face\nline 8 => f 1/1 2 3",
                           "N-Gone face not supported\nline 9 => f 1 2"}));
    for (const ObjError& error : parsed.errors())
        EXPECT_EQ(error.kind, ObjError::Parsing);

    // The invalid face keeps its place as a degenerate triangle on slot 0.
    ASSERT_EQ(parsed.meshes().size(), 1u);
    const ObjMesh& mesh = parsed.meshes()[0];
    const std::vector<uint32_t> indices = indicesOf(mesh);
    ASSERT_EQ(indices.size(), 6u);
    EXPECT_EQ(mesh.positions[indices[0]], Eigen::Vector3f::Zero());
    EXPECT_EQ(indices[0], indices[1]);
    EXPECT_EQ(mesh.positions[indices[4]], Eigen::Vector3f(0, 1, 0)); // "v 1 2" still counted as 2
    EXPECT_EQ(mesh.positions[indices[5]], Eigen::Vector3f::Zero());  // the invalid vertex itself
}

TEST(ObjFileParser, FaceForms)
{
    // Relative indices, all four corner kinds, a quad, trailing blanks, CRLF.
    const auto parsed = parse("v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
                              "vt 0 0\nvt 1 0\nvt 1 1\n"
                              "vn 0 0 1\n"
                              "f -3 -2 -1 \r\n"
                              "f 1//1 2//1 3//1\n"
                              "f 1/1 2/2 3/3\r\n"
                              "f 1/-3/-1 2/-2/1 3/-1/1\n"
                              "f\t1 2 3\n"       // a tab after the keyword: unknown statement
                              "f  1 2 3 4\n");
    ASSERT_TRUE(parsed.errors().empty()) << parsed.errorTexts().join("|").toStdString();
    ASSERT_EQ(parsed.meshes().size(), 1u);
    const ObjMesh& mesh = parsed.meshes()[0];
    const std::vector<uint32_t> indices = indicesOf(mesh);
    ASSERT_EQ(indices.size(), 3u * 6);
    auto position = [&](size_t corner) { return mesh.positions[indices[corner]]; };
    EXPECT_EQ(position(0), Eigen::Vector3f(1, 0, 0));
    EXPECT_EQ(position(2), Eigen::Vector3f(0, 1, 0));
    EXPECT_EQ(mesh.texcoords[indices[9]], Eigen::Vector2f(0, 0)); // 1/-3: first texcoord
    // The quad becomes (c0, c1, c2) and (c2, c3, c0).
    EXPECT_EQ(position(12), Eigen::Vector3f(0, 0, 0));
    EXPECT_EQ(position(14), Eigen::Vector3f(1, 1, 0));
    EXPECT_EQ(position(15), Eigen::Vector3f(1, 1, 0));
    EXPECT_EQ(position(16), Eigen::Vector3f(0, 1, 0));
    EXPECT_EQ(position(17), Eigen::Vector3f(0, 0, 0));
}

TEST(ObjFileParser, SmoothingGroupsSplitVertices)
{
    const auto parsed = parse("v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvn 0 0 1\n"
                              "s 1\nf 1//1 2//1 3//1\n"
                              "s off\nf 1//1 3//1 4//1\n"
                              "s 0\nf 1//1 2//1 4//1\n");
    ASSERT_TRUE(parsed.errors().empty());
    const std::vector<uint32_t> indices = indicesOf(parsed.meshes()[0]);
    EXPECT_EQ(indices, (std::vector<uint32_t>{0, 1, 2, 3, 4, 5, 3, 6, 5}));
    EXPECT_EQ(parsed.meshes()[0].positions.size(), 7u);
}

TEST(ObjFileParser, VertexColoursNeedCrlfLines)
{
    const auto lf = parse("v 0 0 0\n#MRGB ff102030\nf 1 1 1\n");
    EXPECT_EQ(lf.errorTexts(), QStringList{"Invalid colors\nline 2 => #MRGB ff102030"});
    ASSERT_EQ(lf.meshes().size(), 1u);
    EXPECT_TRUE(lf.meshes()[0].colors.empty());

    const auto crlf = parse("v 0 0 0\r\nv 1 0 0\r\n#MRGB ff102030801a2b3c\r\nf 1 2 2\r\n");
    ASSERT_TRUE(crlf.errors().empty()) << crlf.errorTexts().join("|").toStdString();
    const ObjMesh& mesh = crlf.meshes()[0];
    ASSERT_EQ(mesh.colors.size(), 2u);
    EXPECT_TRUE(mesh.colors[0].isApprox(Eigen::Vector4f(0x10, 0x20, 0x30, 0xff) / 255.0f));
    EXPECT_TRUE(mesh.colors[1].isApprox(Eigen::Vector4f(0x1a, 0x2b, 0x3c, 0x80) / 255.0f));

    const auto mismatch = parse("v 0 0 0\r\nv 1 0 0\r\n#MRGB ff102030\r\nf 1 2 2\r\n");
    ASSERT_EQ(mismatch.errors().size(), 1u);
    EXPECT_EQ(mismatch.errors()[0].kind, ObjError::InvalidData);
    EXPECT_EQ(mismatch.errors()[0].text, "number of colors and vertices do not match.\n");
    EXPECT_TRUE(mismatch.meshes().empty());
}

TEST(ObjFileParser, IndexOutOfRangeLeavesNoMesh)
{
    const auto parsed = parse("v 0 0 0\nv 1 0 0\nvn 0 0 1\nf 1//1 2//1 5//1\n");
    ASSERT_EQ(parsed.errors().size(), 1u);
    EXPECT_EQ(parsed.errors()[0].kind, ObjError::InvalidData);
    EXPECT_EQ(parsed.errors()[0].text, "invalid indices (index / first_invalid_index)\n"
                                       "  position: 5 / 3\n"
                                       "  normal: 1 / 2\n"
                                       "  tex coord: 0 / 1");
    EXPECT_TRUE(parsed.meshes().empty());
}

TEST(ObjFileParser, ObjectsGroupsAndMaterials)
{
    const auto parsed = parse("v 0 0 0\nv 1 0 0\nv 0 1 0\n"
                              "o first\ng a\nusemtl red\nf 1 2 3\n"
                              "usemtl blue\nf 1 2 3\n"
                              "o second\nusemtl red\nf 1 2 3\n"
                              "o first\ng b\nusemtl  red  \nf 3 2 1\n");
    ASSERT_TRUE(parsed.errors().empty());
    ASSERT_EQ(parsed.meshes().size(), 2u);
    const ObjMesh& first = parsed.meshes()[0];
    const ObjMesh& second = parsed.meshes()[1];
    EXPECT_EQ(first.name, "first");
    EXPECT_EQ(second.name, "second");
    ASSERT_EQ(first.subMeshes.size(), 3u);
    EXPECT_EQ(first.subMeshes[0].group, "a");
    EXPECT_EQ(first.subMeshes[0].material, "red");
    EXPECT_EQ(first.subMeshes[1].material, "blue");
    EXPECT_EQ(first.subMeshes[2].group, "b");
    EXPECT_EQ(first.subMeshes[2].material, "red");
    // Vertices are shared between the submeshes of a mesh, not between meshes.
    EXPECT_EQ(first.positions.size(), 3u);
    EXPECT_EQ(first.subMeshes[2].indices, (std::vector<uint32_t>{2, 1, 0}));
    ASSERT_EQ(second.subMeshes.size(), 1u);
    EXPECT_EQ(second.subMeshes[0].group, "a"); // the group stays in force
    EXPECT_EQ(second.positions.size(), 3u);

    const auto groupsOnly = parse("v 0 0 0\nv 1 0 0\nv 0 1 0\ng one\nf 1 2 3\ng two\nf 1 2 3\n");
    ASSERT_EQ(groupsOnly.meshes().size(), 2u);
    EXPECT_EQ(groupsOnly.meshes()[1].name, "two");
    EXPECT_EQ(groupsOnly.meshes()[1].subMeshes[0].group, "two");
}

TEST(ObjFileParser, ComputesAreaIndependentNormalsOnlyWhenAsked)
{
    // A large and a small triangle meet at vertex 1 at a right angle.
    const QByteArray text = "v 0 0 0\nv 10 0 0\nv 0 10 0\nv 0 0 -1\nf 1 2 3\nf 1 4 2\n";
    const auto computed = parse(text, true);
    const ObjMesh& mesh = computed.meshes()[0];
    ASSERT_EQ(mesh.normals.size(), 4u);
    EXPECT_TRUE(mesh.normals[0].isApprox(Eigen::Vector3f(0, -1, 1).normalized()));
    EXPECT_TRUE(mesh.normals[2].isApprox(Eigen::Vector3f(0, 0, 1)));

    EXPECT_TRUE(parse(text, false).meshes()[0].normals.empty());
    // The file's own normals win.
    const auto own = parse("v 0 0 0\nv 1 0 0\nv 0 1 0\nvn 1 0 0\nf 1//1 2//1 3//1\n", true);
    EXPECT_EQ(own.meshes()[0].normals[0], Eigen::Vector3f(1, 0, 0));
}

TEST(ObjFileParser, EmptyCommentOnlyTruncatedAndMissingFiles)
{
    const auto empty = parse("");
    ASSERT_EQ(empty.errors().size(), 1u);
    EXPECT_EQ(empty.errors()[0].kind, ObjError::Open);
    EXPECT_EQ(empty.errors()[0].text, "File is empty");
    EXPECT_TRUE(empty.meshes().empty());

    QFile missing(ZmfTest::makeTempDir() + "/missing.obj");
    ObjFileParser parser(&missing, false, nullptr);
    ASSERT_EQ(parser.errors().size(), 1u);
    EXPECT_EQ(parser.errors()[0].kind, ObjError::Open);
    EXPECT_FALSE(parser.errors()[0].text.isEmpty());

    const auto comments = parse("# nothing\n# at all\nmtllib x.mtl\n");
    EXPECT_TRUE(comments.errors().empty());
    ASSERT_EQ(comments.meshes().size(), 1u);
    EXPECT_TRUE(comments.meshes()[0].positions.empty());

    // Cut inside the last statement, without a final line feed.
    const auto truncated = parse("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nv 0 0");
    EXPECT_EQ(truncated.errorTexts(), QStringList{"Invalid vertex\nline 5 => v 0 0"});
    ASSERT_EQ(truncated.meshes().size(), 1u);
    EXPECT_EQ(indicesOf(truncated.meshes()[0]).size(), 3u);

    const auto lastFace = parse("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3");
    EXPECT_TRUE(lastFace.errors().empty());
    EXPECT_EQ(indicesOf(lastFace.meshes()[0]).size(), 3u);
}

TEST(ObjFileParser, SculptToolMarks)
{
    EXPECT_TRUE(parse("v 0 0 0\n").parser->notExportedBySculptTool());
    EXPECT_FALSE(parse("#\n# File exported by ZBrush version 2022\nv 0 0 0\n").parser->notExportedBySculptTool());
    EXPECT_FALSE(parse("# www.zbrush.com\nv 0 0 0\n").parser->notExportedBySculptTool());
}

TEST(ObjFileParser, ManyBlocksMergeInFileOrder)
{
    // About 4 MiB: several blocks parsed on worker threads; faces use
    // relative indices that reach back across block borders.
    QByteArray text;
    const int quads = 60000;
    text.reserve(quads * 80);
    for (int i = 0; i < quads; ++i) {
        text += QByteArray("v ") + QByteArray::number(i) + " 0 0\n";
        text += QByteArray("v ") + QByteArray::number(i) + " 1 0\n";
        text += QByteArray("vt ") + QByteArray::number(i) + " 0.5\n";
        if (i > 0)
            text += "f -4/-2 -3/-2 -1/-1 -2/-1\n";
        if (i == quads / 2)
            text += "o half\n";
    }
    text += "vt 0.5\n";
    const int lines = text.count('\n');
    ASSERT_GT(text.size(), 3 * (1 << 20));
    const auto parsed = parse(text);

    // Messages count lines from the start of their 1 MiB block.
    ASSERT_EQ(parsed.errors().size(), 1u);
    const QString message = parsed.errors()[0].text;
    ASSERT_TRUE(message.startsWith("Invalid texture coordinate\nline "));
    const int line = message.section(' ', 3, 3).toInt();
    EXPECT_GT(line, 0);
    EXPECT_LT(line, lines);

    // Faces before the first "o" go to the first object's mesh.
    ASSERT_EQ(parsed.meshes().size(), 1u);
    const ObjMesh& mesh = parsed.meshes()[0];
    EXPECT_EQ(mesh.name, "half");
    ASSERT_EQ(mesh.subMeshes.size(), 2u);
    const std::vector<uint32_t> indices = indicesOf(mesh);
    ASSERT_EQ(indices.size(), size_t(quads - 1) * 6);
    EXPECT_EQ(mesh.positions.size(), size_t(quads) * 2);
    for (size_t q = 0; q < size_t(quads - 1); ++q) {
        ASSERT_EQ(mesh.positions[indices[q * 6]], Eigen::Vector3f(float(q), 0, 0)) << q;
        ASSERT_EQ(mesh.positions[indices[q * 6 + 2]], Eigen::Vector3f(float(q + 1), 1, 0)) << q;
        ASSERT_EQ(mesh.texcoords[indices[q * 6 + 2]], Eigen::Vector2f(float(q + 1), 0.5f)) << q;
    }
}

TEST(ObjFileParser, FilesAndOtherDevicesCutTheSameBlocks)
{
    // A file's blocks are counted at offsets on several threads, another
    // device's in one pass; both must cut the same blocks. Lines of many
    // lengths fall on the borders, comments longer than the tail a block
    // may take cut a line in two, errors carry their line numbers, and the
    // last line has no end.
    QByteArray text;
    bool cutLine = false;
    for (uint32_t n = 0; text.size() < 3 * (1 << 20) + 5000; ++n) {
        if (!cutLine && text.size() > (1 << 20) - 300) {
            text += "# " + QByteArray(2500, 'x') + "\n"; // crosses the first border by more than the tail
            cutLine = true;
        }
        text += "v " + QByteArray::number(n % 97) + " " + QByteArray::number(n % 13) + " 0\n";
        if (n % 3 == 2)
            text += "f -3 -2 -1\n";
        if (n % 1000 == 500)
            text += "# " + QByteArray(int(n % 3000), 'x') + "\n";
        if (n % 5000 == 4999)
            text += "vt nonsense\n";
    }
    text += "v 1 2 3";

    const auto fromFile = parse(text);
    QBuffer buffer(&text);
    ObjFileParser fromBuffer(&buffer, false, nullptr);

    ASSERT_FALSE(fromFile.errors().empty());
    QStringList bufferErrors;
    for (const ObjError& error : fromBuffer.errors())
        bufferErrors << error.text;
    // Blocks report in the order they finish.
    QStringList fileErrors = fromFile.errorTexts();
    fileErrors.sort();
    bufferErrors.sort();
    ASSERT_EQ(fileErrors.size(), bufferErrors.size());
    for (qsizetype e = 0; e < fileErrors.size(); ++e)
        ASSERT_EQ(fileErrors[e].toStdString(), bufferErrors[e].toStdString()) << e;
    ASSERT_EQ(fromFile.meshes().size(), fromBuffer.meshes().size());
    for (size_t m = 0; m < fromBuffer.meshes().size(); ++m) {
        EXPECT_EQ(fromFile.meshes()[m].positions, fromBuffer.meshes()[m].positions);
        EXPECT_EQ(indicesOf(fromFile.meshes()[m]), indicesOf(fromBuffer.meshes()[m]));
    }
}

TEST(ObjFileParser, NumbersMatchStrtofBitForBit)
{
    // Short decimals take a fast path; every other form goes through the
    // general reader. Both must round exactly as the C library does.
    QList<QByteArray> numbers = {"0", "-0.0", "1.", ".5", "+2.25", "1e3", "-1.5E-3", "3.4028235e38",
                                 "1e-45", "0.1", "0.2", "0.3", "9999999", "16777217", "0.00001234",
                                 "123.4567", "-987654.3", "2.718281828459045", "inf", "-nan"};
    uint32_t seed = 12345;
    auto next = [&seed] { seed = seed * 1664525u + 1013904223u; return seed >> 8; };
    for (int i = 0; i < 3000; ++i) {
        const int decimals = int(next() % 9);
        const double value = (double(next()) - 8388608.0) / std::pow(10.0, double(next() % 8));
        numbers << QByteArray::number(value, 'f', decimals);
    }
    QByteArray text;
    for (const QByteArray& number : numbers)
        text += "v " + number + " 0 0\n";
    // One degenerate face per vertex brings each into the output in order.
    for (int i = 0; i < numbers.size(); ++i)
        text += "f " + QByteArray::number(i + 1) + " " + QByteArray::number(i + 1) + " " + QByteArray::number(i + 1) + "\n";
    const auto parsed = parse(text);
    ASSERT_TRUE(parsed.errors().empty()) << parsed.errorTexts().join("|").toStdString();
    const ObjMesh& mesh = parsed.meshes()[0];
    ASSERT_EQ(mesh.positions.size(), size_t(numbers.size()));
    for (int i = 0; i < numbers.size(); ++i) {
        const float expected = std::strtof(numbers[i].constData(), nullptr);
        const float actual = mesh.positions[size_t(i)].x();
        if (std::isnan(expected)) {
            EXPECT_TRUE(std::isnan(actual)) << numbers[i].constData();
            continue;
        }
        uint32_t expectedBits, actualBits;
        std::memcpy(&expectedBits, &expected, 4);
        std::memcpy(&actualBits, &actual, 4);
        EXPECT_EQ(actualBits, expectedBits) << numbers[i].constData();
    }
}

TEST(ObjFileParser, PositionKeyedReindexingMatchesTheChains)
{
    // Positions only, corners in scattered order, a material switch between
    // two submeshes and vertex colours: the sculpt path must give the very
    // vertices and indices of the general one.
    ObjParseResult result;
    for (int i = 0; i <= 7; ++i) {
        result.positions.emplace_back(float(i), float(i * i), 1.0f);
        result.normals.emplace_back(0.0f, float(i), 1.0f);
        result.colors.emplace_back(float(i), 0.0f, 0.0f, 1.0f);
    }
    result.hasNormals = true;
    result.materials << QStringLiteral("a") << QStringLiteral("b");
    ObjParseJob job;
    const int corners[][3] = {{5, 2, 7}, {2, 5, 1}, {7, 3, 2}, {1, 6, 4}, {4, 6, 5}};
    for (const auto& c : corners) {
        ObjTriangle triangle;
        for (int k = 0; k < 3; ++k)
            triangle.corners[k] = ObjFaceVertex{c[k], 0, c[k]};
        job.faces.push_back(triangle);
    }
    job.groupRecords.resize(2);
    job.groupRecords[0].firstFace = 0;
    job.groupRecords[0].materialId = 0;
    job.groupRecords[1].firstFace = 3;
    job.groupRecords[1].materialId = 1;

    ObjReindexer chained(result, job.faces.size(), false);
    chained.addBlock(job);
    ObjReindexer keyed(result, job.faces.size(), true);
    keyed.addBlock(job);
    ObjParseResult copy = result;
    const std::vector<ObjMesh> a = chained.finish(copy);
    EXPECT_TRUE(copy.positions.empty());
    EXPECT_TRUE(copy.normals.empty());
    const std::vector<ObjMesh> b = keyed.finish(result);
    ASSERT_EQ(a.size(), 1u);
    ASSERT_EQ(b.size(), 1u);
    EXPECT_EQ(a[0].positions, b[0].positions);
    EXPECT_EQ(a[0].normals, b[0].normals);
    EXPECT_EQ(a[0].colors, b[0].colors);
    EXPECT_EQ(a[0].positions.size(), 7u);
    ASSERT_EQ(a[0].subMeshes.size(), 2u);
    ASSERT_EQ(b[0].subMeshes.size(), 2u);
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(a[0].subMeshes[i].indices, b[0].subMeshes[i].indices);
        EXPECT_EQ(a[0].subMeshes[i].material, b[0].subMeshes[i].material);
    }
    EXPECT_EQ(b[0].subMeshes[1].indices, (std::vector<uint32_t>{3, 5, 6, 6, 5, 0}));
}

TEST(ObjFileParser, ComputedNormalsAreTheSumsInFileOrderWhateverTheThreads)
{
    // A wavy grid of 68 k positions, stored in scattered order so that faces
    // reach across the position ranges the threads own.
    const int side = 261;
    const int count = side * side;
    auto slot = [&](int i) { return (i * 7919) % count; }; // 7919 is prime to count
    std::vector<Eigen::Vector3f> grid(size_t(count), Eigen::Vector3f::Zero());
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            grid[size_t(slot(y * side + x))] =
                Eigen::Vector3f(float(x), float(y), std::sin(0.3f * float(x)) * std::cos(0.2f * float(y)));
    QByteArray text;
    for (const Eigen::Vector3f& p : grid)
        text += "v " + QByteArray::number(p.x(), 'g', 9) + ' ' + QByteArray::number(p.y(), 'g', 9) + ' '
                + QByteArray::number(p.z(), 'g', 9) + '\n';
    std::vector<std::array<int, 3>> faces;
    for (int y = 0; y + 1 < side; ++y)
        for (int x = 0; x + 1 < side; ++x) {
            const int a = slot(y * side + x), b = slot(y * side + x + 1), c = slot((y + 1) * side + x),
                      d = slot((y + 1) * side + x + 1);
            faces.push_back({a, b, d});
            faces.push_back({a, d, c});
        }
    for (const auto& f : faces)
        text += "f " + QByteArray::number(f[0] + 1) + ' ' + QByteArray::number(f[1] + 1) + ' '
                + QByteArray::number(f[2] + 1) + '\n';

    // Reference: one pass in file order, over the values as the file stores them.
    const auto parsed = parse(text, true);
    ASSERT_EQ(parsed.meshes().size(), 1u);
    const ObjMesh& mesh = parsed.meshes()[0];
    ASSERT_EQ(mesh.positions.size(), size_t(count));
    std::vector<Eigen::Vector3f> stored(static_cast<size_t>(count));
    std::vector<Eigen::Vector3f> expected(size_t(count), Eigen::Vector3f::Zero());
    for (int i = 0; i < count; ++i)
        stored[size_t(i)] = Eigen::Vector3f(std::strtof(QByteArray::number(grid[size_t(i)].x(), 'g', 9), nullptr),
                                            std::strtof(QByteArray::number(grid[size_t(i)].y(), 'g', 9), nullptr),
                                            std::strtof(QByteArray::number(grid[size_t(i)].z(), 'g', 9), nullptr));
    for (const auto& f : faces) {
        Eigen::Vector3f n = (stored[size_t(f[1])] - stored[size_t(f[0])]).cross(stored[size_t(f[2])] - stored[size_t(f[0])]);
        const float length = n.norm();
        if (length > 1e-7f)
            n /= length;
        for (int k : f)
            expected[size_t(k)] += n;
    }
    for (Eigen::Vector3f& n : expected) {
        const float length = n.norm();
        if (length > 1e-7f)
            n /= length;
    }
    // Output vertices come in order of first use; find each by its position.
    std::map<std::array<float, 3>, size_t> byPosition;
    for (int i = 0; i < count; ++i)
        byPosition[{stored[size_t(i)].x(), stored[size_t(i)].y(), stored[size_t(i)].z()}] = size_t(i);
    size_t mismatches = 0;
    for (size_t v = 0; v < mesh.positions.size(); ++v) {
        const Eigen::Vector3f& p = mesh.positions[v];
        const auto found = byPosition.find({p.x(), p.y(), p.z()});
        ASSERT_NE(found, byPosition.end());
        mismatches += mesh.normals[v] != expected[found->second];
    }
    EXPECT_EQ(mismatches, 0u);
}
