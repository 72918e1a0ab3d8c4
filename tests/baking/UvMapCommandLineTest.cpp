// uv-map through the real binary: the SVG read back by an independent
// reader (rsvg-convert) and the map of the raster route, each against the
// texels the UV triangles cover.

#include "LowPolyBakeTestUtil.h"

#include "common/ProcessRunner.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QSet>

#include <deque>

using namespace LowPolyTest;
using ZmfTest::runZmfbaker;

namespace {

constexpr int Side = 128;

struct UvTriangle
{
    Eigen::Vector2f a, b, c;
};

using Mask = std::vector<uint8_t>;

QString boxLow() { return ZmfTest::testDataDir() + QStringLiteral("/box_low.obj"); }

std::vector<UvTriangle> boxLowTriangles()
{
    std::vector<UvTriangle> triangles;
    const SceneSPtr scene = loadBoxLow();
    EXPECT_TRUE(scene);
    if (!scene)
        return triangles;
    const Mesh::DataSPtr data = firstMeshData(*scene);
    const Vec2Buffer& uvs = *data->getUvSet(0);
    for (const SubMesh& sub : data->getSubMeshes())
        for (size_t i = 0; i + 2 < sub.indices->size(); i += 3)
            triangles.push_back({uvs[(*sub.indices)[i]], uvs[(*sub.indices)[i + 1]], uvs[(*sub.indices)[i + 2]]});
    return triangles;
}

bool inside(const UvTriangle& t, const Eigen::Vector2f& p)
{
    const auto edge = [](const Eigen::Vector2f& a, const Eigen::Vector2f& b, const Eigen::Vector2f& q) {
        return (b.x() - a.x()) * (q.y() - a.y()) - (b.y() - a.y()) * (q.x() - a.x());
    };
    const float e0 = edge(t.a, t.b, p), e1 = edge(t.b, t.c, p), e2 = edge(t.c, t.a, p);
    return (e0 >= 0 && e1 >= 0 && e2 >= 0) || (e0 <= 0 && e1 <= 0 && e2 <= 0);
}

// The UV mask: texels whose centre lies in a triangle; row 0 is v = 1.
Mask coverage(const std::vector<UvTriangle>& triangles, int side)
{
    Mask mask(size_t(side * side), 0);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            const Eigen::Vector2f uv = texelUv(x, y, side, side);
            for (const UvTriangle& t : triangles)
                if (inside(t, uv)) {
                    mask[size_t(y * side + x)] = 1;
                    break;
                }
        }
    return mask;
}

Mask opaque(const QImage& image)
{
    Mask mask(size_t(image.width() * image.height()), 0);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            mask[size_t(y * image.width() + x)] = qAlpha(image.pixel(x, y)) >= 128;
    return mask;
}

// Texels where `actual` and `reference` differ although no neighbour of
// the texel (eight around) lies on the other side of the reference's border.
int mismatchesAwayFromBorders(const Mask& actual, const Mask& reference, int side)
{
    int count = 0;
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            const uint8_t r = reference[size_t(y * side + x)];
            if (actual[size_t(y * side + x)] == r)
                continue;
            bool border = false;
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx) {
                    const int nx = x + dx, ny = y + dy;
                    if (nx >= 0 && ny >= 0 && nx < side && ny < side && reference[size_t(ny * side + nx)] != r)
                        border = true;
                }
            count += border ? 0 : 1;
        }
    return count;
}

// Four-connected regions of a mask.
int regions(Mask mask, int side)
{
    int count = 0;
    for (int start = 0; start < side * side; ++start) {
        if (!mask[size_t(start)])
            continue;
        ++count;
        std::deque<int> open{start};
        mask[size_t(start)] = 0;
        while (!open.empty()) {
            const int at = open.front();
            open.pop_front();
            const int x = at % side, y = at / side;
            for (const auto& [dx, dy] : {std::pair{1, 0}, {-1, 0}, {0, 1}, {0, -1}}) {
                const int nx = x + dx, ny = y + dy;
                if (nx >= 0 && ny >= 0 && nx < side && ny < side && mask[size_t(ny * side + nx)]) {
                    mask[size_t(ny * side + nx)] = 0;
                    open.push_back(ny * side + nx);
                }
            }
        }
    }
    return count;
}

// Reads an SVG with rsvg-convert at its own page size.
QImage rasterise(const QString& svg)
{
    const QString png = svg + QStringLiteral(".rsvg.png");
    const auto r = ZmfTest::runProgram(QStringLiteral("rsvg-convert"), {svg, QStringLiteral("-o"), png});
    EXPECT_EQ(r.exitCode, 0) << "rsvg-convert: " << r.err.toStdString();
    return QImage(png).convertToFormat(QImage::Format_ARGB32);
}

QString readText(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return QString::fromUtf8(file.readAll());
}

// Five islands: a quad; a quad whose triangles share positions but no
// vertex; a ring of eight cells round a hole; a triangle meeting the first
// quad at one corner only; a quad wound the other way. Shifted by `du`.
struct IslandsMesh
{
    std::vector<UvTriangle> triangles;
    QString objText;
};

IslandsMesh islandsMesh(float du)
{
    IslandsMesh mesh;
    QStringList v, vt, f;
    const auto add = [&](Eigen::Vector2f a, Eigen::Vector2f b, Eigen::Vector2f c) {
        mesh.triangles.push_back({a, b, c});
        for (const Eigen::Vector2f& p : {a, b, c}) {
            v << QStringLiteral("v %1 %2 0").arg(p.x()).arg(p.y());
            vt << QStringLiteral("vt %1 %2").arg(p.x() + du).arg(p.y());
        }
        const int n = int(v.size());
        f << QStringLiteral("f %1/%1 %2/%2 %3/%3").arg(n - 2).arg(n - 1).arg(n);
    };
    const auto cell = [&](float x, float y, float s, bool clockwise) {
        const Eigen::Vector2f p0(x, y), p1(x + s, y), p2(x + s, y + s), p3(x, y + s);
        if (clockwise) {
            add(p0, p2, p1);
            add(p0, p3, p2);
        } else {
            add(p0, p1, p2);
            add(p0, p2, p3);
        }
    };
    cell(0.05f, 0.05f, 0.2f, false);
    cell(0.4f, 0.05f, 0.2f, false);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x)
            if (x != 1 || y != 1)
                cell(0.1f + 0.2f * float(x), 0.35f + 0.2f * float(y), 0.2f, false);
    add({0.25f, 0.25f}, {0.32f, 0.25f}, {0.32f, 0.32f});
    cell(0.75f, 0.05f, 0.2f, true);
    mesh.objText = (v + vt + f).join('\n') + '\n';
    return mesh;
}

QString writeMesh(const QString& dir, const QString& name, const QString& text)
{
    const QString path = dir + '/' + name;
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text.toUtf8());
    return path;
}

QStringList pathFills(const QString& svg)
{
    QStringList fills;
    QRegularExpression fill(QStringLiteral("<path [^>]*fill=\"(#[0-9a-f]{6})\""));
    for (auto it = fill.globalMatch(svg); it.hasNext();)
        fills << it.next().captured(1);
    return fills;
}

} // namespace

TEST(UvMapCommandLine, BoxLowSvgIsOnePathPerIslandAndCoversTheUvMask)
{
    const QString dir = ZmfTest::makeTempDir();
    const auto r = runZmfbaker({"uv-map", boxLow(), "--output-size", "7,7", "--output-format", "svg", "--output-path", dir});
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_EQ(r.err, QString());
    // Only the finished document is left: no temporary beside it.
    EXPECT_EQ(QDir(dir).entryList(QDir::Files), QStringList{"box_low_uv-map.svg"});

    const QString svg = readText(dir + "/box_low_uv-map.svg");
    const std::vector<UvTriangle> triangles = boxLowTriangles();
    // Islands are the UV mask's separate regions, seen finely enough that
    // the gaps between islands are several texels wide.
    const int islands = regions(coverage(triangles, 512), 512);
    EXPECT_EQ(islands, 6);
    const QStringList fills = pathFills(svg);
    EXPECT_EQ(fills.size(), islands);
    EXPECT_EQ(QSet<QString>(fills.begin(), fills.end()).size(), islands) << fills.join(' ').toStdString();

    const QImage image = rasterise(dir + "/box_low_uv-map.svg");
    ASSERT_EQ(image.size(), QSize(Side, Side));
    const Mask reference = coverage(triangles, Side);
    EXPECT_EQ(mismatchesAwayFromBorders(opaque(image), reference, Side), 0);

    // The same against the texels that the GL bakers cover, without dilation.
    const auto gl = runZmfbaker({"normal-world-space", boxLow(), "--output-size", "7,7", "--dilation-width", "0",
                                 "--apply-diffusion", "false", "--output-path", dir});
    ASSERT_EQ(gl.exitCode, 0) << gl.err.toStdString();
    const Mask glMask = opaque(QImage(dir + "/box_low_normal-world-space.png").convertToFormat(QImage::Format_ARGB32));
    EXPECT_GT(std::count(glMask.begin(), glMask.end(), 1), Side * Side / 4);
    EXPECT_EQ(mismatchesAwayFromBorders(opaque(image), glMask, Side), 0);
}

TEST(UvMapCommandLine, IslandsOfAGeneratedMeshHolesAndMirroredOnesIncluded)
{
    const QString dir = ZmfTest::makeTempDir();
    const IslandsMesh mesh = islandsMesh(0.0f);
    const QString obj = writeMesh(dir, "islands.obj", mesh.objText);
    const auto r = runZmfbaker({"uv-map", obj, "--output-size", "7,7", "--output-format", "svg", "--output-path", dir});
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    const QString svgPath = dir + "/islands_uv-map.svg";
    EXPECT_EQ(pathFills(readText(svgPath)).size(), 5);

    const QImage image = rasterise(svgPath);
    ASSERT_EQ(image.size(), QSize(Side, Side));
    const Mask actual = opaque(image);
    EXPECT_EQ(mismatchesAwayFromBorders(actual, coverage(mesh.triangles, Side), Side), 0);
    // The ring's hole, centred at (0.4, 0.65), stays empty.
    EXPECT_FALSE(actual[size_t(int((1.0f - 0.65f) * Side) * Side + int(0.4f * Side))]);
    // The triangle that meets the first quad at a corner has its own colour.
    const int quadTexel = int((1.0f - 0.15f) * Side) * Side + int(0.15f * Side);
    const int cornerTexel = int((1.0f - 0.27f) * Side) * Side + int(0.30f * Side);
    EXPECT_NE(image.pixel(quadTexel % Side, quadTexel / Side), image.pixel(cornerTexel % Side, cornerTexel / Side));
}

TEST(UvMapCommandLine, TheUvTileChoosesWhichSquareIsDrawn)
{
    const QString dir = ZmfTest::makeTempDir();
    const QString obj = writeMesh(dir, "shifted.obj", islandsMesh(1.0f).objText);
    auto r = runZmfbaker({"uv-map", obj, "--output-size", "7,7", "--output-format", "svg", "--uv-tile", "1,0",
                          "--output-name", "{inputName}_{udim}", "--output-path", dir});
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    const QImage tile = rasterise(dir + "/shifted_1002.svg");
    EXPECT_EQ(mismatchesAwayFromBorders(opaque(tile), coverage(islandsMesh(0.0f).triangles, Side), Side), 0);

    // Tile 0: the same shapes, written, but off the page.
    r = runZmfbaker({"uv-map", obj, "--output-size", "7,7", "--output-format", "svg", "--output-path", dir});
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_EQ(pathFills(readText(dir + "/shifted_uv-map.svg")).size(), 5);
    const Mask empty = opaque(rasterise(dir + "/shifted_uv-map.svg"));
    EXPECT_EQ(std::count(empty.begin(), empty.end(), 1), 0);
}

TEST(UvMapCommandLine, PaddingGrowsEveryIslandByThatManyTexels)
{
    const QString dir = ZmfTest::makeTempDir();
    const IslandsMesh mesh = islandsMesh(0.0f);
    const QString obj = writeMesh(dir, "islands.obj", mesh.objText);
    const auto r = runZmfbaker({"uv-map", obj, "--output-size", "7,7", "--output-format", "svg", "--padding", "3",
                                "--output-path", dir});
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    const Mask padded = opaque(rasterise(dir + "/islands_uv-map.svg"));
    const Mask reference = coverage(mesh.triangles, Side);
    // Distance in texels from each texel to the nearest covered one, by
    // search: within 2 must be covered; beyond 5 (the miter of a right
    // angle reaches 3·√2) must not.
    int missing = 0, overreach = 0;
    for (int y = 0; y < Side; ++y)
        for (int x = 0; x < Side; ++x) {
            double nearest = 1e9;
            for (int dy = -6; dy <= 6; ++dy)
                for (int dx = -6; dx <= 6; ++dx) {
                    const int nx = x + dx, ny = y + dy;
                    if (nx >= 0 && ny >= 0 && nx < Side && ny < Side && reference[size_t(ny * Side + nx)])
                        nearest = std::min(nearest, std::hypot(double(dx), double(dy)));
                }
            const bool covered = padded[size_t(y * Side + x)];
            missing += nearest <= 2.0 && !covered;
            overreach += nearest > 5.0 && covered;
        }
    EXPECT_EQ(missing, 0);
    EXPECT_EQ(overreach, 0);
}

TEST(UvMapCommandLine, ARasterSuffixWritesTheShapesAsAMapWithOneGreyPerIsland)
{
    const QString dir = ZmfTest::makeTempDir();
    const auto r = runZmfbaker({"uv-map", boxLow(), "--output-size", "7,7", "--mode", "2", "--output-path", dir});
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_EQ(QDir(dir).entryList(QDir::Files), QStringList{"box_low_uv-map.png"});
    const QImage image = QImage(dir + "/box_low_uv-map.png").convertToFormat(QImage::Format_ARGB32);
    ASSERT_EQ(image.size(), QSize(Side, Side));
    const Mask reference = coverage(boxLowTriangles(), Side);
    EXPECT_EQ(mismatchesAwayFromBorders(opaque(image), reference, Side), 0);
    // Inside the islands, away from the antialiased borders, six greys.
    QSet<QRgb> greys;
    for (int y = 1; y + 1 < Side; ++y)
        for (int x = 1; x + 1 < Side; ++x) {
            bool interior = true;
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx)
                    interior = interior && reference[size_t((y + dy) * Side + x + dx)];
            const QRgb p = image.pixel(x, y);
            if (interior) {
                EXPECT_EQ(qAlpha(p), 255);
                EXPECT_TRUE(qRed(p) == qGreen(p) && qGreen(p) == qBlue(p));
                greys.insert(p);
            }
        }
    EXPECT_EQ(greys.size(), 6);
}

TEST(UvMapCommandLine, BadSettingsAreToldInTheProgramsWords)
{
    const QString dir = ZmfTest::makeTempDir();
    auto r = runZmfbaker({"uv-map", boxLow(), "--mode", "abc", "--output-path", dir});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err, "[ERROR][CLIParser]Option mode expected a value of type int, but received non-convertible \"abc\".\n");

    r = runZmfbaker({"uv-map", boxLow(), "--uv-set", "1", "--output-format", "svg", "--output-path", dir});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.err, "[ERROR][Bakers]Baking failed (Convert UV to SVG)\nUV set 1 doesn't exist\n");

    r = runZmfbaker({"uv-map", boxLow(), "--output-format", "SVG", "--output-path", dir});
    EXPECT_EQ(r.err, "[ERROR][ZMFBaker]unknown output format \"SVG\"\n");

    r = runZmfbaker({"uv-map", boxLow(), "--output-format", "svg", "--output-path", dir + "/missing"});
    EXPECT_EQ(r.err, QStringLiteral("[ERROR][ZMFBaker]Writing file \"%1/missing/box_low_uv-map.svg\" failed.\n").arg(dir));
    EXPECT_EQ(QDir(dir).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot), QStringList());
}
