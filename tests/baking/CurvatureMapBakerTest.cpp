// The low-poly curvature baker: the mesh preparation on its own, then both
// algorithms through the real binary on generated shapes whose curvature is
// known, and on the low box of the reference pair.

#include "BoxPairTestUtil.h"
#include "LowPolyBakeTestUtil.h"

#include "baking/lowpoly/CurvatureMapBaker.h"

#include "baking/lowpoly/CurvaturePreparation.h"
#include "common/ProcessRunner.h"
#include "common/TestPaths.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTextStream>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iostream>
#include <vector>

using namespace Ond::Baking;
using Ond::Surfaces::SurfaceSPtr;

namespace {

constexpr float pi = 3.14159265f;

// A mesh as OBJ writes it: one UV and one normal per vertex.
struct Shape
{
    std::vector<Eigen::Vector3f> positions;
    std::vector<Eigen::Vector3f> normals;
    std::vector<Eigen::Vector2f> uvs;
    std::vector<uint32_t> triangles;

    uint32_t add(const Eigen::Vector3f& p, const Eigen::Vector3f& n, const Eigen::Vector2f& uv)
    {
        positions.push_back(p);
        normals.push_back(n.normalized());
        uvs.push_back(uv);
        return uint32_t(positions.size() - 1);
    }

    void quad(uint32_t a, uint32_t b, uint32_t c, uint32_t d)
    {
        triangles.insert(triangles.end(), {a, b, c, a, c, d});
    }

    QString write() const
    {
        const QString file = ZmfTest::makeTempDir() + QStringLiteral("/shape.obj");
        QFile out(file);
        EXPECT_TRUE(out.open(QIODevice::WriteOnly));
        QTextStream s(&out);
        s.setRealNumberPrecision(9);
        for (const auto& p : positions)
            s << "v " << p.x() << ' ' << p.y() << ' ' << p.z() << '\n';
        for (const auto& t : uvs)
            s << "vt " << t.x() << ' ' << t.y() << '\n';
        for (const auto& n : normals)
            s << "vn " << n.x() << ' ' << n.y() << ' ' << n.z() << '\n';
        for (size_t i = 0; i < triangles.size(); i += 3) {
            s << 'f';
            for (int k = 0; k < 3; ++k) {
                const uint32_t v = triangles[i + k] + 1;
                s << ' ' << v << '/' << v << '/' << v;
            }
            s << '\n';
        }
        return file;
    }

    CurvatureMesh curvatureMesh() const
    {
        CurvatureMesh mesh;
        for (size_t i = 0; i < positions.size(); ++i)
            mesh.vertices.push_back({positions[i], normals[i], uvs[i]});
        mesh.triangles = triangles;
        return mesh;
    }
};

// Latitude-longitude sphere; UV seam at longitude 0, poles as fans.
Shape sphere(float radius, int segments = 96, int rings = 48)
{
    Shape s;
    for (int j = 0; j <= rings; ++j)
        for (int i = 0; i <= segments; ++i) {
            // Both ends of the seam and each pole at the very same place.
            const float theta = pi * float(j) / float(rings), phi = 2.0f * pi * float(i % segments) / float(segments);
            const float st = j == 0 || j == rings ? 0.0f : std::sin(theta);
            const float ct = j == 0 ? 1.0f : (j == rings ? -1.0f : std::cos(theta));
            const Eigen::Vector3f n(st * std::cos(phi), ct, -st * std::sin(phi));
            s.add(n * radius, n, {float(i) / float(segments), 1.0f - float(j) / float(rings)});
        }
    const auto at = [&](int i, int j) { return uint32_t(j * (segments + 1) + i); };
    for (int j = 0; j < rings; ++j)
        for (int i = 0; i < segments; ++i) {
            if (j > 0)
                s.triangles.insert(s.triangles.end(), {at(i, j), at(i, j + 1), at(i + 1, j)});
            if (j < rings - 1)
                s.triangles.insert(s.triangles.end(), {at(i + 1, j), at(i, j + 1), at(i + 1, j + 1)});
        }
    return s;
}

// A profile in the x-y plane, swept along z as far as the profile is long,
// u along the profile, v along z: texels are square on the surface, as the
// per-pixel fit wants them. A point with `hard` starts a new run of normals there.
struct ProfilePoint
{
    Eigen::Vector2f p;
    Eigen::Vector2f n;
    bool hard = false;
};

Shape sweep(const std::vector<ProfilePoint>& profile, int slices = 16)
{
    std::vector<float> arc(profile.size(), 0.0f);
    for (size_t i = 1; i < profile.size(); ++i)
        arc[i] = arc[i - 1] + (profile[i].p - profile[i - 1].p).norm();
    Shape s;
    std::vector<std::vector<uint32_t>> columns;
    for (size_t i = 0; i < profile.size(); ++i) {
        std::vector<uint32_t> column;
        for (int k = 0; k <= slices; ++k) {
            const float z = arc.back() * float(k) / float(slices);
            column.push_back(s.add({profile[i].p.x(), profile[i].p.y(), z}, {profile[i].n.x(), profile[i].n.y(), 0.0f},
                                   {arc[i] / arc.back(), float(k) / float(slices)}));
        }
        columns.push_back(column);
    }
    for (size_t i = 0; i + 1 < profile.size(); ++i) {
        if (profile[i + 1].hard && profile[i + 1].p == profile[i].p)
            continue; // the two copies of a hard corner
        for (int k = 0; k < slices; ++k)
            s.quad(columns[i][k], columns[i][k + 1], columns[i + 1][k + 1], columns[i + 1][k]);
    }
    return s;
}

void line(std::vector<ProfilePoint>& out, Eigen::Vector2f a, Eigen::Vector2f b, Eigen::Vector2f n, int steps)
{
    for (int i = !out.empty() && (out.back().p - a).norm() < 1e-5f ? 1 : 0; i <= steps; ++i)
        out.push_back({a + (b - a) * float(i) / float(steps), n});
}

// Quarter arc around `centre` from angle a0 to a1; normals outward when
// `convex`, towards the centre otherwise.
void arc(std::vector<ProfilePoint>& out, Eigen::Vector2f centre, float radius, float a0, float a1, bool convex)
{
    for (int i = 1; i <= 12; ++i) {
        const float a = a0 + (a1 - a0) * float(i) / 12.0f;
        const Eigen::Vector2f d(std::cos(a), std::sin(a));
        out.push_back({centre + d * radius, convex ? d : Eigen::Vector2f(-d)});
    }
}

// A step: plateau at y = 1 for x < 0, a convex fillet of radius 0.5, a wall
// at x = 0.5, a concave fillet of radius 0.5, the lower plateau at y = -1 up
// to x = 3. All edges smooth.
Shape filletedStep()
{
    std::vector<ProfilePoint> p;
    line(p, {-3.0f, 1.0f}, {0.0f, 1.0f}, {0.0f, 1.0f}, 12);
    arc(p, {0.0f, 0.5f}, 0.5f, pi / 2, 0.0f, true);
    line(p, {0.5f, 0.5f}, {0.5f, -0.5f}, {1.0f, 0.0f}, 4);
    arc(p, {1.0f, -0.5f}, 0.5f, pi, 1.5f * pi, false);
    line(p, {1.0f, -1.0f}, {3.0f, -1.0f}, {0.0f, 1.0f}, 8);
    return sweep(p);
}

// The same step with a sharp convex corner at (0.5, 1): a hard edge, its
// two sides sharing their UVs; the concave fillet stays smooth.
Shape hardCornerStep(float* cornerU)
{
    std::vector<ProfilePoint> p;
    line(p, {-3.0f, 1.0f}, {0.5f, 1.0f}, {0.0f, 1.0f}, 14);
    p.push_back({{0.5f, 1.0f}, {1.0f, 0.0f}, true});
    line(p, {0.5f, 1.0f}, {0.5f, -0.5f}, {1.0f, 0.0f}, 6);
    arc(p, {1.0f, -0.5f}, 0.5f, pi, 1.5f * pi, false);
    line(p, {1.0f, -1.0f}, {3.0f, -1.0f}, {0.0f, 1.0f}, 8);
    const Shape s = sweep(p);
    *cornerU = s.uvs[14 * 17].x();
    return s;
}

Shape plane()
{
    Shape s;
    const Eigen::Vector3f up(0.0f, 1.0f, 0.0f);
    const int n = 8;
    for (int j = 0; j <= n; ++j)
        for (int i = 0; i <= n; ++i)
            s.add({float(i) - 4.0f, 0.0f, 4.0f - float(j)}, up, {float(i) / n, float(j) / n});
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i)
            s.quad(uint32_t(j * (n + 1) + i), uint32_t(j * (n + 1) + i + 1), uint32_t((j + 1) * (n + 1) + i + 1),
                   uint32_t((j + 1) * (n + 1) + i));
    return s;
}

// A wavy height field of n x n quads over the unit square, UVs its plan,
// normals analytic.
Shape wavyGrid(int n)
{
    Shape s;
    for (int j = 0; j <= n; ++j)
        for (int i = 0; i <= n; ++i) {
            const float u = float(i) / float(n), v = float(j) / float(n);
            const float h = 0.05f * std::sin(12 * u) * std::cos(9 * v);
            const Eigen::Vector3f normal(-0.6f * std::cos(12 * u) * std::cos(9 * v), 1.0f,
                                         0.45f * std::sin(12 * u) * std::sin(9 * v));
            s.add({u, h, -v}, normal.cwiseProduct(Eigen::Vector3f(1, 1, -1)), {u, v});
        }
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            const uint32_t a = uint32_t(j * (n + 1) + i);
            s.quad(a, a + 1, a + uint32_t(n) + 2, a + uint32_t(n) + 1);
        }
    return s;
}

// Bakes `mesh` at 2^side (256) squared into a float TIFF, without dilation
// or diffusion, and loads it as RGBA float.
SurfaceSPtr bake(const QString& mesh, const QStringList& options, QString* log = nullptr, int side = 8)
{
    const QString dir = ZmfTest::makeTempDir();
    QStringList args{QStringLiteral("curvature"), mesh, QStringLiteral("--output-size"),
                     QStringLiteral("%1,%1").arg(side),
                     QStringLiteral("--output-format"), QStringLiteral("tif"), QStringLiteral("--dilation-width"),
                     QStringLiteral("0"), QStringLiteral("--apply-diffusion"), QStringLiteral("false"),
                     QStringLiteral("--output-path"), dir};
    args << options;
    const ZmfTest::ProcessResult result = ZmfTest::runZmfbaker(args);
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    if (log)
        *log = result.out + result.err;
    const QStringList files = QDir(dir).entryList(QDir::Files);
    EXPECT_EQ(files.size(), 1) << files.join(' ').toStdString();
    return files.size() == 1 ? BoxPair::loadRgbaFloat(dir + '/' + files.front()) : SurfaceSPtr();
}

const QStringList perVertex{QStringLiteral("--algorithm"), QStringLiteral("1")};
const QStringList perPixel{QStringLiteral("--algorithm"), QStringLiteral("0")};
const QStringList noSeams{QStringLiteral("--enable-seams"), QStringLiteral("false")};

// Red of the covered texels (alpha 1) whose UV satisfies `where`.
std::vector<float> values(const SurfaceSPtr& map, const std::function<bool(float u, float v)>& where)
{
    std::vector<float> out;
    const int n = int(map->width());
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) {
            const float u = (float(x) + 0.5f) / float(n), v = 1.0f - (float(y) + 0.5f) / float(n);
            const float* t = map->pixel<float>(x, y);
            if (t[3] > 0.5f && where(u, v))
                out.push_back(t[0]);
        }
    return out;
}

float mean(const std::vector<float>& v)
{
    double sum = 0.0;
    for (float x : v)
        sum += x;
    return v.empty() ? 0.0f : float(sum / double(v.size()));
}

float worstGap(const std::vector<float>& v, float expected)
{
    float worst = 0.0f;
    for (float x : v)
        worst = std::max(worst, std::abs(x - expected));
    return worst;
}

} // namespace

TEST(CurvaturePreparation, PackedIndexAndTextureWidth)
{
    // Row in the whole part, column + 0.25 over the width in the fraction.
    EXPECT_FLOAT_EQ(packedIndex(0, 6), 0.25f / 64.0f);
    EXPECT_FLOAT_EQ(packedIndex(65, 6), 1.0f + 1.25f / 64.0f);
    EXPECT_FLOAT_EQ(packedIndex(63, 6) + 1.0f / 64.0f, packedIndex(64, 6));
    EXPECT_EQ(packedLog2Width(1, 0), 6);
    EXPECT_EQ(packedLog2Width(100000, 10), 9);     // 2^18 > 200000
    EXPECT_EQ(packedLog2Width(1000, 1u << 20), 10); // entries rule
    EXPECT_EQ(packedLog2Width(uint64_t(1) << 40, 0), 12);
}

TEST(CurvaturePreparation, GroupsNeighboursAndTheirPacking)
{
    // A lone triangle: three groups of two neighbours each.
    Shape t;
    t.add({0, 0, 0}, {0, 0, 1}, {0, 0});
    t.add({1, 0, 0}, {0, 0, 1}, {1, 0});
    t.add({0, 1, 0}, {0, 0, 1}, {0, 1});
    t.triangles = {0, 1, 2};
    const CurvatureGpuData lone = prepareCurvatureMesh(t.curvatureMesh(), true, true, 2.0f);
    ASSERT_EQ(lone.groupCount, 3u);
    EXPECT_EQ(lone.entryCount, 6u);
    EXPECT_EQ(lone.connections.size(), 6u);
    EXPECT_TRUE(lone.seamLines.empty());
    ASSERT_EQ(lone.posNrm.size(), 24u);
    EXPECT_FLOAT_EQ(lone.posNrm[8], 2.0f); // position scaled
    EXPECT_FLOAT_EQ(lone.posNrm[8 + 7], 2.0f);
    EXPECT_FLOAT_EQ(lone.posNrm[8 + 3], packedIndex(2, lone.log2Width));
    EXPECT_FLOAT_EQ(lone.vertexKeys[2], packedIndex(2, lone.log2Width));

    // The sphere's UV seam splits vertices but not normals: one group per
    // place, no line.
    const CurvatureGpuData round = prepareCurvatureMesh(sphere(1.0f, 16, 8).curvatureMesh(), true, true, 1.0f);
    EXPECT_EQ(round.groupCount, 16u * 7u + 2u);
    EXPECT_TRUE(round.seamLines.empty());
    EXPECT_EQ(round.connections.size(), round.entryCount);
}

TEST(CurvaturePreparation, HardEdgesDrawSignedLines)
{
    float cornerU = 0.0f;
    const Shape step = hardCornerStep(&cornerU);
    const CurvatureGpuData seams = prepareCurvatureMesh(step.curvatureMesh(), false, true, 1.0f);
    // One line per slice of the hard corner, its UVs shared by both sides.
    ASSERT_EQ(seams.seamLines.size(), 16u * 6u);
    for (size_t i = 0; i < seams.seamLines.size(); i += 3) {
        EXPECT_FLOAT_EQ(seams.seamLines[i], cornerU);
        // A right angle: l = -1, positive on a convex fold.
        EXPECT_FLOAT_EQ(seams.seamLines[i + 2], 1.0f);
    }
    EXPECT_TRUE(seams.connections.empty()); // no links without per-vertex

    // Turned inside out (winding and normals), the fold is concave.
    CurvatureMesh inverted = step.curvatureMesh();
    for (auto& v : inverted.vertices)
        v.normal = -v.normal;
    for (size_t i = 0; i < inverted.triangles.size(); i += 3)
        std::swap(inverted.triangles[i + 1], inverted.triangles[i + 2]);
    const CurvatureGpuData concave = prepareCurvatureMesh(inverted, false, true, 1.0f);
    ASSERT_EQ(concave.seamLines.size(), seams.seamLines.size());
    EXPECT_FLOAT_EQ(concave.seamLines[2], -1.0f);

    // A UV seam along the hard edge marks both of its borders.
    CurvatureMesh split = step.curvatureMesh();
    for (size_t v = 15 * 17; v < 16 * 17; ++v)
        split.vertices[v].uv.x() += 0.01f;
    EXPECT_EQ(prepareCurvatureMesh(split, false, true, 1.0f).seamLines.size(), 2u * 16u * 6u);
}

TEST(CurvatureMapBaker, SphereBakesOneValueAndPlaneMiddleGrey)
{
    // Positions are scaled to 200 over the largest extent: a sphere's
    // curvature reads 1/100 whatever its radius, times "details" (3 here).
    const QString ball = sphere(3.0f).write();
    const QStringList details{QStringLiteral("--details"), QStringLiteral("3")};
    const auto body = [](float, float v) { return v > 0.2f && v < 0.8f; };
    const auto away = [](float u, float v) { return v > 0.2f && v < 0.8f && u > 0.03f && u < 0.97f; };
    const std::vector<float> vertex = values(bake(ball, perVertex + details), body);
    const std::vector<float> pixel = values(bake(ball, perPixel + details), away);
    ASSERT_GT(vertex.size(), 20000u);
    ASSERT_GT(pixel.size(), 20000u);
    std::cout << "sphere, expected 0.53: per vertex mean " << mean(vertex) << " worst gap "
              << worstGap(vertex, 0.53f) << "; per pixel mean " << mean(pixel) << " worst gap "
              << worstGap(pixel, 0.53f) << std::endl;
    EXPECT_LT(worstGap(vertex, 0.53f), 5e-4f);
    EXPECT_LT(worstGap(pixel, 0.53f), 5e-4f);

    // 2048 x 2048: four output tiles, the normal map's tiles overlapping
    // by a texel; no tile border shows.
    const std::vector<float> large = values(bake(ball, perPixel + details, nullptr, 11), away);
    ASSERT_GT(large.size(), 1500000u);
    std::cout << "sphere at 2048, per pixel: worst gap " << worstGap(large, 0.53f) << std::endl;
    EXPECT_LT(worstGap(large, 0.53f), 5e-4f);

    const QString flat = plane().write();
    for (const QStringList& algorithm : {perVertex, perPixel}) {
        const std::vector<float> all = values(bake(flat, algorithm), [](float, float) { return true; });
        ASSERT_GT(all.size(), 60000u);
        EXPECT_LT(worstGap(all, 0.5f), 1e-5f);
    }
}

TEST(CurvatureMapBaker, ConvexAndConcaveFilletsSitOnEitherSideOfMiddleGrey)
{
    const Shape step = filletedStep();
    const QString file = step.write();
    // u of the middles of the two fillets.
    const float convexU = step.uvs[18 * 17].x(), concaveU = step.uvs[(12 + 12 + 4 + 6) * 17].x();
    for (const QStringList& algorithm : {perVertex, perPixel}) {
        const SurfaceSPtr map = bake(file, algorithm + noSeams);
        ASSERT_TRUE(map);
        const auto near = [](float at) {
            return [at](float u, float v) { return std::abs(u - at) < 0.008f && v > 0.05f && v < 0.95f; };
        };
        const float convex = mean(values(map, near(convexU))), concave = mean(values(map, near(concaveU)));
        const float plateau = mean(values(map, near(0.15f)));
        std::cout << algorithm.join(' ').toStdString() << ": convex " << convex << ", concave " << concave
                  << ", plateau " << plateau << std::endl;
        EXPECT_GT(convex, 0.52f);
        EXPECT_LT(concave, 0.48f);
        EXPECT_NEAR(plateau, 0.5f, 1e-4f);
        // Same radius: the same distance from the middle grey.
        EXPECT_NEAR(convex - 0.5f, 0.5f - concave, 0.1f * (convex - 0.5f));
    }
}

TEST(CurvatureMapBaker, SeamsOnlyAlongHardEdges)
{
    float cornerU = 0.0f;
    const QString file = hardCornerStep(&cornerU).write();
    for (const QStringList& algorithm : {perVertex, perPixel}) {
        const SurfaceSPtr with = bake(file, algorithm);
        const SurfaceSPtr without = bake(file, algorithm + noSeams);
        ASSERT_TRUE(with && without);
        const int n = int(with->width());
        int changed = 0, farChanged = 0;
        float line = 0.0f;
        for (int y = 0; y < n; ++y)
            for (int x = 0; x < n; ++x) {
                const float a = with->pixel<float>(x, y)[0], b = without->pixel<float>(x, y)[0];
                if (a == b)
                    continue;
                ++changed;
                if (std::abs((float(x) + 0.5f) / float(n) - cornerU) > 1.5f / float(n))
                    ++farChanged;
                line = std::max(line, a);
            }
        EXPECT_GT(changed, n / 2);
        EXPECT_EQ(farChanged, 0);
        // A right-angled convex fold: 0.5 + 1/4 at seams intensity 1.
        EXPECT_NEAR(line, 0.75f, 1e-3f);
    }

    // Intensity 0.5 squares the quarter turn.
    const SurfaceSPtr weaker = bake(file, perVertex + QStringList{"--seams-power", "0.5"});
    ASSERT_TRUE(weaker);
    float line = 0.0f;
    for (float v : values(weaker, [&](float u, float) { return std::abs(u - cornerU) < 1.5f / 256.0f; }))
        line = std::max(line, v);
    EXPECT_NEAR(line, 0.5625f, 1e-3f);
}

TEST(CurvatureMapBaker, UvTileBakesTheSquareItNames)
{
    Shape step = filletedStep();
    const QString home = step.write();
    for (auto& uv : step.uvs)
        uv.x() += 1.0f;
    const QString shifted = step.write();
    for (const QStringList& algorithm : {perVertex, perPixel}) {
        const SurfaceSPtr a = bake(home, algorithm);
        const SurfaceSPtr b = bake(shifted, algorithm + QStringList{"--uv-tile", "1,0"});
        const SurfaceSPtr outside = bake(shifted, algorithm);
        ASSERT_TRUE(a && b && outside);
        const std::vector<float> va = values(a, [](float, float) { return true; });
        const std::vector<float> vb = values(b, [](float, float) { return true; });
        ASSERT_GT(va.size(), 60000u);
        ASSERT_EQ(va.size(), vb.size());
        // UVs one further lose bits: a texel on an island border may turn
        // out another way, nothing more.
        size_t differing = 0;
        float worst = 0.0f;
        for (size_t i = 0; i < va.size(); ++i) {
            differing += std::abs(va[i] - vb[i]) > 1e-4f;
            worst = std::max(worst, std::abs(va[i] - vb[i]));
        }
        std::cout << algorithm.join(' ').toStdString() << ": " << differing << " texels differ, by "
                  << worst << " at most" << std::endl;
        EXPECT_LT(differing, va.size() / 500);
        EXPECT_LT(worst, 0.01f);
        EXPECT_TRUE(values(outside, [](float, float) { return true; }).empty());
    }
}

TEST(CurvatureMapBaker, PerVertexAndPerPixelAgreeInSignOnTheLowBox)
{
    const QString box = BoxPair::testFile(QStringLiteral("box_low.obj"));
    const SurfaceSPtr vertex = bake(box, perVertex + noSeams);
    const SurfaceSPtr pixel = bake(box, perPixel + noSeams);
    ASSERT_TRUE(vertex && pixel);
    const int n = int(vertex->width());
    const std::vector<char> islands = BoxPair::referenceIslands();
    ASSERT_EQ(islands.size(), 1024u * 1024u);
    std::vector<char> covered(size_t(n) * n);
    const int f = 1024 / n;
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) {
            bool all = true;
            for (int k = 0; k < f * f; ++k)
                all = all && islands[size_t(f * y + k / f) * 1024 + size_t(f * x + k % f)];
            covered[size_t(y) * n + x] = all;
        }
    const std::vector<char> inner = BoxPair::erode(covered, n, n, 2);
    int both = 0, agree = 0, inside = 0;
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) {
            if (!inner[size_t(y) * n + x])
                continue;
            ++inside;
            const float a = vertex->pixel<float>(x, y)[0] - 0.5f, b = pixel->pixel<float>(x, y)[0] - 0.5f;
            if (std::abs(a) < 0.005f || std::abs(b) < 0.005f)
                continue;
            ++both;
            agree += (a > 0) == (b > 0);
        }
    std::cout << "low box: " << inside << " texels inside, " << both << " curved in both, " << agree
              << " of the same sign" << std::endl;
    ASSERT_GT(inside, 20000);
    ASSERT_GT(both, 500);
    EXPECT_GE(double(agree), 0.98 * double(both));
}

TEST(CurvatureMapBaker, NormalMapRouteTangentOrWorldSpaceAndGreenConvention)
{
    // A flat plane whose tangent-space map tilts the normal along v, more
    // the further from the middle: a ridge in OpenGL convention, a valley
    // when green points down.
    const QString dir = ZmfTest::makeTempDir();
    QImage ridge(256, 256, QImage::Format_RGBA64);
    for (int y = 0; y < 256; ++y) {
        const float v = 1.0f - (float(y) + 0.5f) / 256.0f;
        const float g = 1.6f * (v - 0.5f);
        const float z = std::sqrt(1.0f - g * g);
        const QColor c = QColor::fromRgbF(0.5f, 0.5f * g + 0.5f, 0.5f * z + 0.5f, 1.0f);
        for (int x = 0; x < 256; ++x)
            ridge.setPixelColor(x, y, c);
    }
    const QString ridgeFile = dir + QStringLiteral("/ridge.png");
    ASSERT_TRUE(ridge.save(ridgeFile));
    const QString flat = plane().write();
    const auto middle = [](float u, float v) { return u > 0.1f && u < 0.9f && v > 0.1f && v < 0.9f; };
    const QStringList map{QStringLiteral("--normal"), ridgeFile, QStringLiteral("--details"), QStringLiteral("3")};
    const float openGL = mean(values(bake(flat, perPixel + map + QStringList{"--normal-format", "0"}), middle));
    const float directX = mean(values(bake(flat, perPixel + map + QStringList{"--normal-format", "1"}), middle));
    std::cout << "ridge map on a plane: OpenGL " << openGL << ", DirectX " << directX << std::endl;
    EXPECT_GT(openGL, 0.51f);
    EXPECT_LT(directX, 0.49f);
    EXPECT_NEAR(openGL - 0.5f, 0.5f - directX, 0.002f);
    // A map half the output's size is read between its texels, filtered.
    const float larger =
        mean(values(bake(flat, perPixel + map + QStringList{"--normal-format", "0"}, nullptr, 9), middle));
    std::cout << "the same map under a 512 x 512 output: " << larger << std::endl;
    EXPECT_NEAR(larger, openGL, 0.002f);

    // A map that does not load is no map: the plane stays flat.
    const std::vector<float> missing =
        values(bake(flat, perPixel + QStringList{"--normal", dir + QStringLiteral("/none.png")}),
               [](float, float) { return true; });
    ASSERT_GT(missing.size(), 60000u);
    EXPECT_LT(worstGap(missing, 0.5f), 1e-5f);

    // The sphere's own world-space normals, given as a map in world space,
    // bake what the mesh alone bakes.
    const QString ball = sphere(3.0f).write();
    const QString normalsDir = ZmfTest::makeTempDir();
    const ZmfTest::ProcessResult normals = ZmfTest::runZmfbaker(
        {QStringLiteral("normal-world-space"), ball, QStringLiteral("--output-size"), QStringLiteral("8,8"),
         QStringLiteral("--output-format"), QStringLiteral("tif"), QStringLiteral("--output-path"), normalsDir,
         QStringLiteral("--output-name"), QStringLiteral("ws")});
    ASSERT_EQ(normals.exitCode, 0) << normals.err.toStdString();
    const auto away = [](float u, float v) { return v > 0.2f && v < 0.8f && u > 0.03f && u < 0.97f; };
    const std::vector<float> world =
        values(bake(ball, perPixel + QStringList{"--details", "3", "--normal", normalsDir + "/ws.tif",
                                                 "--normal-world-space", "true"}),
               away);
    ASSERT_GT(world.size(), 20000u);
    std::cout << "sphere from its world-space map: worst gap " << worstGap(world, 0.53f) << std::endl;
    EXPECT_LT(worstGap(world, 0.53f), 2e-3f);
}

using CurvatureBakerTest = LowPolyTest::BakerFixture<CurvatureMapBaker, 6>;

TEST_F(CurvatureBakerTest, ProgressLabelsNothingSelectedAndCancel)
{
    // Per pixel: the world-space normals first, then the curvature.
    ASSERT_TRUE(bake(LowPolyTest::makeQuad({0, 0, 1}, {1, 0, 0}, {0, 1, 0})));
    EXPECT_EQ(context.progressLabels,
              (std::vector<QString>{"Normal world space map computation", "Curvature map computation"}));

    // Nothing selected: the map stays cleared.
    LowPolyTest::setProperty(baker.properties(), "Curvature.PerVertex", 1);
    const SurfaceSPtr none = bake(LowPolyTest::makeQuad({0, 0, 1}, {1, 0, 0}, {0, 1, 0}, {0, 0}, false));
    ASSERT_TRUE(none);
    ASSERT_EQ(none->width(), 64u);
    for (uint32_t y = 0; y < 64; ++y)
        for (uint32_t x = 0; x < 64; ++x)
            ASSERT_EQ(none->readPixel(x, y), Eigen::Vector4f::Zero());

    // Cancelled before the first tile: an empty map and no failure.
    context.cancelAfterChecks = 0;
    context.checks = 0;
    const SurfaceSPtr cancelled = bake(LowPolyTest::makeQuad({0, 0, 1}, {1, 0, 0}, {0, 1, 0}));
    ASSERT_TRUE(cancelled);
    EXPECT_EQ(cancelled->readPixel(32, 32), Eigen::Vector4f::Zero());
}

TEST_F(CurvatureBakerTest, LoneTriangleSpreadsTheLargestNormalCurvatureOfEachCorner)
{
    // Two neighbours per corner: the fit is singular and each corner keeps
    // its largest directional curvature, interpolated over the triangle.
    LowPolyTest::setProperty(baker.properties(), "Curvature.PerVertex", 1);
    LowPolyTest::setProperty(baker.properties(), "Curvature.EnableSeams", false);
    const Eigen::Vector3f corners[3] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    std::vector<LowPolyTest::Vertex> vertices;
    Eigen::Vector3f normals[3];
    for (int i = 0; i < 3; ++i) {
        normals[i] = Eigen::Vector3f(corners[i].x() - 0.3f, corners[i].y() - 0.3f, 1.0f).normalized();
        vertices.push_back({corners[i], corners[i].head<2>(), normals[i], {1, 0, 0}, {0, 1, 0}});
    }
    float expected[3];
    for (int i = 0; i < 3; ++i) {
        float km = -10000.0f;
        for (int j = 0; j < 3; ++j) {
            if (j == i)
                continue;
            const Eigen::Vector3f d = (corners[j] - corners[i]) * 200.0f; // 200 over the extent of 1
            km = std::max(km, -d.dot(normals[j] - normals[i]) / d.dot(d));
        }
        expected[i] = -km * 0.5f + 0.5f;
    }
    ASSERT_GT(std::abs(expected[0] - 0.5f), 1e-3f);
    const SurfaceSPtr map = bake(LowPolyTest::makeScene(vertices, {0, 1, 2}));
    ASSERT_TRUE(map);
    int checked = 0;
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) {
            const Eigen::Vector2f uv = LowPolyTest::texelUv(x, y, 64, 64);
            const float w1 = uv.x(), w2 = uv.y(), w0 = 1.0f - w1 - w2;
            if (w0 < 0.02f)
                continue; // the long edge's texels
            const Eigen::Vector4f t = LowPolyTest::texel(*map, x, y);
            ASSERT_EQ(t.w(), 1.0f) << x << ' ' << y;
            EXPECT_NEAR(t.x(), w0 * expected[0] + w1 * expected[1] + w2 * expected[2], 1e-4f) << x << ' ' << y;
            ++checked;
        }
    EXPECT_GT(checked, 1800);
}

TEST(CurvatureMapBaker, BothAlgorithmsDrawTheSameWavesOnAFineGrid)
{
    // 45000 triangles: the packed textures run over hundreds of rows.
    const Shape grid = wavyGrid(150);
    const CurvatureGpuData packed = prepareCurvatureMesh(grid.curvatureMesh(), true, false, 1.0f);
    EXPECT_GE(packed.log2Width, 8);
    EXPECT_GT(packed.connections.size() >> packed.log2Width, 100u);

    const QString file = grid.write();
    const QStringList details{"--details", "1"};
    const SurfaceSPtr vertex = bake(file, perVertex + details), pixel = bake(file, perPixel + details);
    ASSERT_TRUE(vertex && pixel);
    const auto inner = [](float u, float v) { return u > 0.02f && u < 0.98f && v > 0.02f && v < 0.98f; };
    const std::vector<float> a = values(vertex, inner), b = values(pixel, inner);
    ASSERT_EQ(a.size(), b.size());
    ASSERT_GT(a.size(), 50000u);
    const double ma = mean(a), mb = mean(b);
    double sab = 0, saa = 0, sbb = 0;
    for (size_t i = 0; i < a.size(); ++i) {
        sab += (a[i] - ma) * (b[i] - mb);
        saa += (a[i] - ma) * (a[i] - ma);
        sbb += (b[i] - mb) * (b[i] - mb);
    }
    const double pearson = sab / std::sqrt(saa * sbb);
    std::cout << "wavy grid: per vertex against per pixel, Pearson " << pearson << ", spread " << std::sqrt(saa / a.size())
              << " and " << std::sqrt(sbb / b.size()) << std::endl;
    EXPECT_GT(pearson, 0.95);
    EXPECT_NEAR(std::sqrt(saa / a.size()), std::sqrt(sbb / b.size()), 0.2 * std::sqrt(saa / a.size()));
}
