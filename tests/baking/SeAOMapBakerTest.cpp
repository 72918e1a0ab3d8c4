// Occlusion by surface elements in the GL context: an open plane sees the
// whole sky, the inside of a box sees none of it, unselected parts shade
// only when asked to, and a walk cut into many short passes ends where one
// long pass does.

#include "LowPolyBakeTestUtil.h"

#include "baking/lowpoly/SeAOMapBaker.h"
#include "baking/lowpoly/SeAORenderer.h"

#include "common/LogCapture.h"

#include <algorithm>

using namespace LowPolyTest;
using namespace Ond::Baking;
using Ond::Surfaces::PixelFormat;
using Ond::Surfaces::Surface;
using Ond::Surfaces::SurfaceDesc;
using Ond::Surfaces::SurfaceSPtr;

namespace {

// A cube of side 2 round the origin, each face its own cell of a 3 x 2 UV
// atlas, normals out.
SceneSPtr makeCube()
{
    const Eigen::Vector3f frames[6][3] = {{{1, 0, 0}, {0, 0, -1}, {0, 1, 0}}, {{-1, 0, 0}, {0, 0, 1}, {0, 1, 0}},
                                          {{0, 1, 0}, {1, 0, 0}, {0, 0, -1}}, {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}},
                                          {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}},  {{0, 0, -1}, {-1, 0, 0}, {0, 1, 0}}};
    std::vector<Vertex> v;
    std::vector<uint32_t> indices;
    for (int f = 0; f < 6; ++f) {
        const Eigen::Vector3f &n = frames[f][0], &t = frames[f][1], &b = frames[f][2];
        const Eigen::Vector2f cell(float(f % 3) / 3.0f, float(f / 3) / 2.0f);
        const uint32_t base = uint32_t(v.size());
        for (int k = 0; k < 4; ++k) {
            const float s = (k == 1 || k == 2) ? 1.0f : -1.0f, r = k >= 2 ? 1.0f : -1.0f;
            const Eigen::Vector2f uv = cell + Eigen::Vector2f((0.05f + 0.45f * (s + 1)) / 3.0f,
                                                              (0.05f + 0.45f * (r + 1)) / 2.0f);
            v.push_back({n + s * t + r * b, uv, n, t, b});
        }
        indices.insert(indices.end(), {base, base + 1, base + 2, base, base + 2, base + 3});
    }
    return makeScene(v, indices);
}

// The cube's elements as the occlusion passes take them: normals turned in,
// in the unit frame.
SeAO::Geometry unitCubeGeometry()
{
    SeAO::CollectMeshDataVisitor collect(2u, 0, true);
    collect.walk(*makeCube());
    collect.geometry.normalizeToUnitFrame();
    return std::move(collect.geometry);
}

struct Coverage
{
    int covered = 0;
    double mean = 0.0;
    float lowest = 1e9f, highest = -1e9f;
};

// Texels with a value: the bake runs without post-process, so the rest is 0.
Coverage coverage(const Surface& map)
{
    Coverage c;
    for (uint32_t y = 0; y < map.height(); ++y)
        for (uint32_t x = 0; x < map.width(); ++x) {
            const Eigen::Vector4f t = map.readPixel(x, y);
            if (map.format() == PixelFormat::RGBA32F ? t.w() == 0.0f : t.x() == 0.0f)
                continue;
            ++c.covered;
            c.mean += t.x();
            c.lowest = std::min(c.lowest, t.x());
            c.highest = std::max(c.highest, t.x());
        }
    if (c.covered)
        c.mean /= c.covered;
    return c;
}

using SeAOBake = BakerFixture<SeAOMapBaker, 6>;

} // namespace

TEST_F(SeAOBake, AnOpenPlaneIsUnoccludedAndTheResultHasOneChannel)
{
    const SurfaceSPtr map = bake(makeQuad(Eigen::Vector3f(0, 0, 1), Eigen::Vector3f(1, 0, 0), Eigen::Vector3f(0, 1, 0)));
    ASSERT_TRUE(map);
    EXPECT_EQ(map->format(), PixelFormat::L32F);
    EXPECT_EQ(map->width(), 64u);
    const Coverage c = coverage(*map);
    EXPECT_EQ(c.covered, 64 * 64);
    EXPECT_GT(c.lowest, 0.999f);
    EXPECT_LE(c.highest, 1.0f);
    EXPECT_EQ(context.progressLabels.back(), QStringLiteral("Map computation"));
}

TEST_F(SeAOBake, TheInsideOfABoxIsOccludedAndTheOutsideIsNot)
{
    const SceneSPtr cube = makeCube();
    const Coverage outside = coverage(*bake(cube));
    EXPECT_GT(outside.covered, 6 * 300);
    EXPECT_GT(outside.lowest, 0.99f);

    setProperty(baker.properties(), "SeAO.InvertNormals", true);
    const Coverage inside = coverage(*bake(cube));
    EXPECT_EQ(inside.covered, outside.covered);
    // The closed box hides the whole hemisphere; what stays is the
    // blended visibility of the walls themselves.
    EXPECT_LT(inside.highest, 0.6f);
    EXPECT_GT(inside.lowest, 0.0f);
    EXPECT_LT(inside.mean, 0.5);
}

TEST_F(SeAOBake, UnselectedPartsShadeTheMapOnlyWithUseNeighbors)
{
    // A floor (selected) and a wall standing on it (unselected), one mesh.
    std::vector<Vertex> v;
    const Eigen::Vector3f up(0, 0, 1), x(1, 0, 0), y(0, 1, 0);
    for (int k = 0; k < 4; ++k) {
        const float s = float(k & 1), r = float(k >> 1);
        v.push_back({Eigen::Vector3f(s, r, 0), Eigen::Vector2f(s, r), up, x, y});
    }
    for (int k = 0; k < 4; ++k) {
        const float s = float(k & 1), r = float(k >> 1);
        v.push_back({Eigen::Vector3f(0.5f, s, r), Eigen::Vector2f(s, r), -x, y, up});
    }
    const SceneSPtr scene = makeScene(v, {0, 1, 3, 0, 3, 2});
    const Mesh::DataSPtr data = firstMeshData(*scene);
    // makeScene made the floor's part; the wall gets one of its own.
    std::vector<SubMesh> parts;
    parts.emplace_back(makeBuffer(std::vector<uint32_t>{0, 1, 3, 0, 3, 2}), PrimitiveType::Triangles, 3, nullptr,
                       DefaultRenderFlags | SelectedRenderFlag);
    parts.emplace_back(makeBuffer(std::vector<uint32_t>{4, 5, 7, 4, 7, 6, 4, 7, 5, 4, 6, 7}), PrimitiveType::Triangles,
                       3, nullptr, DefaultRenderFlags);
    std::vector<Vec2BufferUPtr> uvSets;
    uvSets.push_back(makeBuffer(std::vector<Eigen::Vector2f>(data->getUvSet(0)->begin(), data->getUvSet(0)->end())));
    auto both = std::make_shared<Mesh::Data>(
        makeBuffer(std::vector<Eigen::Vector3f>(data->getPositions()->begin(), data->getPositions()->end())),
        makeBuffer(std::vector<Eigen::Vector3f>(data->getNormals()->begin(), data->getNormals()->end())),
        makeBuffer(std::vector<Eigen::Vector3f>(data->getTangents()->begin(), data->getTangents()->end())),
        makeBuffer(std::vector<Eigen::Vector3f>(data->getBinormals()->begin(), data->getBinormals()->end())), nullptr,
        std::move(uvSets), std::move(parts));
    auto withWall = std::make_shared<Scene>();
    withWall->addEntity(std::make_shared<Entity>(
        QStringLiteral("part"), nullptr,
        std::make_unique<MeshDisplayComponent>(std::make_shared<Mesh>(both, QStringLiteral("part")))));

    const SurfaceSPtr alone = bake(withWall);
    const Coverage a = coverage(*alone);
    EXPECT_GT(a.lowest, 0.999f);
    setProperty(baker.properties(), "SeAO.UseNeighbors", true);
    const SurfaceSPtr shaded = bake(withWall);
    const Coverage s = coverage(*shaded);
    // Only the floor is drawn, and the wall darkens it towards its foot.
    EXPECT_EQ(s.covered, a.covered);
    EXPECT_LT(s.lowest, 0.8f);
    const float nearWall = texel(*shaded, 30, 32).x(), farFromWall = texel(*shaded, 2, 32).x();
    EXPECT_LT(nearWall, farFromWall - 0.1f);
}

TEST_F(SeAOBake, TheTexelsLookAlongTheNormalMapInWorldOrTangentSpace)
{
    const SceneSPtr plane = makeQuad(Eigen::Vector3f(0, 0, 1), Eigen::Vector3f(1, 0, 0), Eigen::Vector3f(0, 1, 0));
    const auto constantMap = [](const Eigen::Vector3f& normal) {
        auto map = SurfaceSPtr::create(SurfaceDesc(64, 64, PixelFormat::RGBA32F));
        const Eigen::Vector3f encoded = normal.normalized() * 0.5f + Eigen::Vector3f::Constant(0.5f);
        for (uint32_t y = 0; y < 64; ++y)
            for (uint32_t x = 0; x < 64; ++x)
                map->writePixel(x, y, Eigen::Vector4f(encoded.x(), encoded.y(), encoded.z(), 1.0f));
        return map;
    };
    // Leaning 45 degrees towards +x in world space: the plane on that side
    // rises above the texels' horizon. The plane has two triangles, so each
    // texel takes their exact share of its hemisphere; the values are that
    // share worked out apart (Lambert's formula on the triangles cut at the
    // horizon, and a cosine-weighted ray count agreeing to 0.001).
    context.surfaces[QStringLiteral("tilted.png")] = constantMap(Eigen::Vector3f(1, 0, 1));
    setProperty(baker.properties(), "Additional.NormalMap", QStringLiteral("tilted.png"));
    setProperty(baker.properties(), "Additional.NormalWorldSpace", true);
    const SurfaceSPtr tilted = bake(plane);
    EXPECT_NEAR(texel(*tilted, 3, 32).x(), 0.8541f, 0.002f);
    EXPECT_NEAR(texel(*tilted, 32, 32).x(), 0.8560f, 0.002f);
    EXPECT_NEAR(texel(*tilted, 60, 32).x(), 0.8600f, 0.002f);

    // The same map read in tangent space: up is flat again.
    context.surfaces[QStringLiteral("flat.png")] = constantMap(Eigen::Vector3f(0, 0, 1));
    setProperty(baker.properties(), "Additional.NormalMap", QStringLiteral("flat.png"));
    setProperty(baker.properties(), "Additional.NormalWorldSpace", false);
    EXPECT_GT(coverage(*bake(plane)).lowest, 0.999f);
}

TEST_F(SeAOBake, OneTriangleSeesNothingAndTheLogTellsThePasses)
{
    ZmfTest::LogCapture log;
    const SurfaceSPtr map = bake(makeScene({{{0, 0, 0}, {0, 0}, {0, 0, 1}, {1, 0, 0}, {0, 1, 0}},
                                            {{1, 0, 0}, {1, 0}, {0, 0, 1}, {1, 0, 0}, {0, 1, 0}},
                                            {{0, 1, 0}, {0, 1}, {0, 0, 1}, {1, 0, 0}, {0, 1, 0}}},
                                           {0, 1, 2}));
    const Coverage c = coverage(*map);
    EXPECT_GT(c.covered, 64 * 64 / 2 - 64);
    EXPECT_EQ(c.lowest, 1.0f);

    QStringList seao;
    for (const auto& entry : log.entries())
        if (entry.channel == QStringLiteral("SEAO Gl Render"))
            seao << entry.message;
    // Quality 1: five element passes, then one texel pass for the one tile.
    ASSERT_EQ(seao.size(), 5 * 2 + 3) << seao.join('|').toStdString();
    EXPECT_EQ(seao[0], QStringLiteral("Occlusion pass 1"));
    EXPECT_TRUE(seao[1].startsWith(QStringLiteral("\tCompute time: ")));
    EXPECT_EQ(seao[8], QStringLiteral("Occlusion pass 5"));
    // A software renderer starts at the floor, a GPU with room to spare.
    bool software = false;
    inGL([&] { software = SeAORenderer::isSoftwareRenderer(); });
    EXPECT_EQ(seao[10], software ? QStringLiteral("Pass (looplimit: 10)") : QStringLiteral("Pass (looplimit: 600000)"));
    EXPECT_EQ(seao[11], QStringLiteral("\tActive fragments: 0"));
    EXPECT_TRUE(seao[12].startsWith(QStringLiteral("\tCompute time: ")));
}

TEST_F(SeAOBake, ACancelledBakeStopsBeforeTheTilesAndSkipsThePostProcess)
{
    context.cancelAfterChecks = 0;
    const SurfaceSPtr map = bake(makeCube());
    ASSERT_TRUE(map);
    EXPECT_EQ(map->width(), 64u);
}

TEST(SeAORenderer, ElementPassesOscillateInAClosedBoxAndTheBlendDampsThem)
{
    const SeAO::Geometry geometry = unitCubeGeometry();
    const SeAO::SurfaceElementTree tree = SeAO::SurfaceElementTree::build(geometry);
    inGL([&] {
        for (uint32_t passes : {1u, 2u, 3u}) {
            SeAOParameters p = SeAOParameters::forQuality(1);
            p.occlusionPasses = passes;
            SeAORenderer renderer(geometry, tree, p);
            ASSERT_TRUE(renderer.isValid());
            EXPECT_EQ(renderer.elementOcclusion()[0], 1.0f);
            renderer.solveElementOcclusion();
            const std::vector<float> occlusion = renderer.elementOcclusion();
            // Each pass swings between nearly hidden and nearly visible;
            // the blend keeps 0.7 of the lower and 0.3 of the higher: about
            // 0.3 whatever the count of passes.
            const float leaf = occlusion[0];
            EXPECT_NEAR(leaf, 0.32f, 0.04f) << passes;
            for (size_t i = 0; i < geometry.triangleCount(); ++i)
                EXPECT_NEAR(occlusion[i], leaf, 0.05f) << i;
        }
    });
}

TEST(SeAORenderer, WalksCutIntoShortPassesEndWhereOneLongPassEnds)
{
    const SeAO::Geometry geometry = unitCubeGeometry();
    const SeAO::SurfaceElementTree tree = SeAO::SurfaceElementTree::build(geometry);
    inGL([&] {
        SeAORenderer renderer(geometry, tree, SeAOParameters::forQuality(2));
        renderer.solveElementOcclusion();

        Surface whole(SurfaceDesc(64, 64, PixelFormat::RGBA32F));
        const SeAOTileStats once = renderer.renderTile({0, 0, 1, 1}, nullptr, whole);
        EXPECT_EQ(once.passes, 1);
        EXPECT_EQ(once.active, std::vector<uint64_t>{0});

        renderer.initialLoopLimit = 0.0f;
        Surface pieces(SurfaceDesc(64, 64, PixelFormat::RGBA32F));
        const SeAOTileStats many = renderer.renderTile({0, 0, 1, 1}, nullptr, pieces);
        // The first pass runs at the floor of 10 steps.
        EXPECT_EQ(many.loopLimits.front(), 10.0f);
        EXPECT_GE(many.passes, 2);
        EXPECT_EQ(many.active.back(), 0u);
        const Coverage c = coverage(whole);
        EXPECT_GT(many.active.front(), 0u);
        EXPECT_LE(many.active.front(), uint64_t(c.covered));
        for (size_t i = 1; i < many.active.size(); ++i)
            EXPECT_LE(many.active[i], many.active[i - 1]);

        float worst = 0.0f;
        for (uint32_t y = 0; y < 64; ++y)
            for (uint32_t x = 0; x < 64; ++x) {
                const Eigen::Vector4f a = whole.readPixel(x, y), b = pieces.readPixel(x, y);
                EXPECT_EQ(a.w(), b.w());
                worst = std::max(worst, std::abs(a.x() - b.x()));
            }
        EXPECT_LT(worst, 1e-4f);
        EXPECT_EQ(coverage(pieces).covered, c.covered);
    });
}
