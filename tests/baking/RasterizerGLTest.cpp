// The OpenGL seed rasterizer on box_low.obj and small synthetic scenes:
// seeds on the low mesh with interpolated normals, coverage against the
// reference mask, the cage pass, mesh ids, skew, the tile order of the
// null rasterizer, cancellation and the missing-attribute report.

#include "LowPolyBakeTestUtil.h"

#include "baking/detail/ErrorCode.h"
#include "baking/detail/MeshNameId.h"
#include "baking/detail/RasterizerGL.h"
#include "baking/detail/RasterizerNull.h"
#include "baking/detail/RaytracerBase.h"
#include "common/LogCapture.h"
#include "image/DefaultCodecs.h"
#include "image/FileTextureLoader.h"

#include <cmath>
#include <cstring>
#include <iostream>

using namespace LowPolyTest;
using namespace Ond::Baking;
using Ond::Surfaces::PixelFormat;
using Ond::Surfaces::SurfaceDesc;
using Ond::Surfaces::SurfaceSPtr;

namespace {

// Copies every tile into whole-map arrays, row 0 at the top, and records
// the order of the tiles.
class MapTracer : public RaytracerBase
{
public:
    unsigned mapWidth = 0;
    std::vector<float> origins;
    std::vector<float> directions;
    std::vector<uint32_t> ids;
    std::vector<std::pair<unsigned, unsigned>> order;
    bool sawIds = false;

    void traceTile(const DetailBakeJob&, const BakeTiling& t, BakeResult&, const RayTile& tile) override
    {
        order.emplace_back(tile.tileX, tile.tileY);
        mapWidth = t.rasterTilesX * t.tileWidth;
        const size_t samples = size_t(mapWidth) * t.rasterTilesY * t.tileHeight;
        origins.resize(samples * 4);
        directions.resize(samples * 4);
        ids.resize(samples);
        if (!tile.origins)
            return;
        sawIds = tile.ids != nullptr;
        for (unsigned y = 0; y < t.tileHeight; ++y) {
            const size_t from = size_t(y) * t.tileWidth;
            const size_t to = (size_t(tile.tileY) * t.tileHeight + y) * mapWidth + size_t(tile.tileX) * t.tileWidth;
            std::memcpy(&origins[to * 4], tile.origins + from * 4, t.tileWidth * 16);
            std::memcpy(&directions[to * 4], tile.directions + from * 4, t.tileWidth * 16);
            if (tile.ids)
                std::memcpy(&ids[to], tile.ids + from, t.tileWidth * 4);
        }
    }

    Eigen::Vector4f origin(unsigned x, unsigned y) const { return Eigen::Vector4f(&origins[(y * mapWidth + x) * 4]); }
    Eigen::Vector4f direction(unsigned x, unsigned y) const
    {
        return Eigen::Vector4f(&directions[(y * mapWidth + x) * 4]);
    }
    uint32_t id(unsigned x, unsigned y) const { return ids[y * mapWidth + x]; }
};

DetailBakeJob jobFor(const SceneSPtr& low, unsigned size, unsigned subSamples, uint32_t flags = 0)
{
    DetailBakeJob job;
    job.lowScene = low;
    job.highScene = low;
    job.width = size;
    job.height = size;
    job.subSamples = subSamples;
    job.flags = flags;
    return job;
}

// Runs one bake of the rasterizer into `tracer`; false if init threw.
bool rasterizeInto(RasterizerBase& rasterizer, const DetailBakeJob& job, MapTracer& tracer)
{
    const BakeTiling tiling = computeTiling(job);
    BakeResult result;
    try {
        rasterizer.init(job, tiling, result);
    } catch (ErrorCode) {
        return false;
    }
    rasterizer.rasterize(job, tiling, result, tracer);
    rasterizer.finish(job, tiling, result);
    return true;
}

// The low mesh moved out along its normals: a cage at the same UVs.
SceneSPtr cageOf(const Scene& low, float distance)
{
    const Mesh::DataSPtr data = firstMeshData(low);
    std::vector<Eigen::Vector3f> p, n;
    for (size_t i = 0; i < data->getVertexCount(); ++i) {
        p.push_back((*data->getPositions())[i] + distance * (*data->getNormals())[i]);
        n.push_back((*data->getNormals())[i]);
    }
    std::vector<Eigen::Vector2f> uv(data->getUvSet(0)->begin(), data->getUvSet(0)->end());
    std::vector<uint32_t> indices;
    for (const SubMesh& sub : data->getSubMeshes())
        indices.insert(indices.end(), sub.indices->begin(), sub.indices->end());
    std::vector<Vec2BufferUPtr> uvSets;
    uvSets.push_back(makeBuffer(std::move(uv)));
    std::vector<SubMesh> subs;
    subs.emplace_back(makeBuffer(std::move(indices)), PrimitiveType::Triangles, 3, nullptr);
    auto cage = std::make_shared<Mesh::Data>(makeBuffer(std::move(p)), makeBuffer(std::move(n)), nullptr, nullptr,
                                             nullptr, std::move(uvSets), std::move(subs));
    auto scene = std::make_shared<Scene>();
    scene->addEntity(std::make_shared<Entity>(QStringLiteral("box_cage"), nullptr,
                                              std::make_unique<MeshDisplayComponent>(
                                                  std::make_shared<Mesh>(cage, QStringLiteral("box_cage")))));
    return scene;
}

// Interpolation of a vertex attribute at a located UV point.
Eigen::Vector3f interpolate(const Vec3Buffer& values, const UvHit& hit)
{
    return hit.weights[0] * values[hit.corners[0]] + hit.weights[1] * values[hit.corners[1]]
           + hit.weights[2] * values[hit.corners[2]];
}

class RasterizerGLBox : public ::testing::Test
{
protected:
    void SetUp() override
    {
        low = loadBoxLow();
        ASSERT_TRUE(low);
        data = firstMeshData(*low);
    }
    SceneSPtr low;
    Mesh::DataSPtr data;
};

} // namespace

TEST(RasterizerGLWindow, TileWindowMapsTheTileToClipSpaceWithRowsFromTheTop)
{
    DetailBakeJob job;
    job.width = 1024;
    job.height = 1024;
    job.subSamples = 2;
    job.uvTile = {1, 0};
    const BakeTiling tiling = computeTiling(job);
    ASSERT_EQ(tiling.rasterTilesY, 4u);
    // Tile (1, 0): u from 1.25 to 1.5 of UV tile (1, 0), the top quarter of v.
    const auto w = RasterizerGL::tileWindow(job, tiling, 1, 0);
    EXPECT_FLOAT_EQ(w[2], 8.0f);
    EXPECT_FLOAT_EQ(w[3], 8.0f);
    EXPECT_FLOAT_EQ(1.25f * w[2] - w[0], -1.0f);
    EXPECT_FLOAT_EQ(1.5f * w[2] - w[0], 1.0f);
    EXPECT_FLOAT_EQ(0.75f * w[3] - w[1], -1.0f);
    EXPECT_FLOAT_EQ(1.0f * w[3] - w[1], 1.0f);
    // The bottom row of tiles holds v 0 to 0.25.
    const auto bottom = RasterizerGL::tileWindow(job, tiling, 0, 3);
    EXPECT_FLOAT_EQ(0.0f * bottom[3] - bottom[1], -1.0f);
}

TEST(RasterizerGLWindow, VariantPriorityIsSkewThenCageThenSmooth)
{
    EXPECT_EQ(RasterizerGL::mainVariant(0), RasterizerGL::Variant::Plain);
    EXPECT_EQ(RasterizerGL::mainVariant(0x001), RasterizerGL::Variant::Smooth);
    EXPECT_EQ(RasterizerGL::mainVariant(0x401), RasterizerGL::Variant::Cage);
    EXPECT_EQ(RasterizerGL::mainVariant(0x501), RasterizerGL::Variant::Skew);
    EXPECT_EQ(RasterizerGL::mainVariant(0x100), RasterizerGL::Variant::Skew);
    EXPECT_STREQ(RasterizerGL::variantMacro(RasterizerGL::Variant::PositionOnly), "POS_ONLY");
}

TEST_F(RasterizerGLBox, SeedsLieOnTheLowMeshWithInterpolatedNormalsAndMatchTheMask)
{
    Ond::Surfaces::registerDefaultCodecs();
    const SurfaceSPtr mask =
        Ond::Surfaces::FileTextureLoader::load(ZmfTest::testDataDir() + QStringLiteral("/box_1024_mask.png"));
    ASSERT_TRUE(mask);
    ASSERT_EQ(mask->width(), 1024u);

    for (const uint32_t flags : {0u, 0x001u}) {
        MapTracer tracer;
        inGL([&] {
            RasterizerGL rasterizer;
            ASSERT_TRUE(rasterizeInto(rasterizer, jobFor(low, 1024, 1, flags), tracer));
        });
        ASSERT_EQ(tracer.order.size(), 4u);
        int disagree = 0, inside = 0, checked = 0, off = 0;
        for (unsigned y = 0; y < 1024; ++y)
            for (unsigned x = 0; x < 1024; ++x) {
                const Eigen::Vector4f o = tracer.origin(x, y);
                const Eigen::Vector4f d = tracer.direction(x, y);
                const bool covered = o.w() == 1.0f;
                ASSERT_TRUE(covered || (o.isZero() && d.isZero())) << x << "," << y;
                const bool inMask = texel(*mask, int(x), int(y)).x() > 0.5f;
                inside += inMask;
                disagree += covered != inMask;
                if (!covered)
                    continue;
                const UvHit hit = locate(*data, texelUv(int(x), int(y), 1024, 1024));
                if (hit.triangle < 0)
                    continue; // a border texel whose centre lies in no triangle
                ++checked;
                const Eigen::Vector3f p = interpolate(*data->getPositions(), hit);
                const Eigen::Vector3f n = interpolate(*data->getNormals(), hit).normalized();
                const bool good = (o.head<3>() - p).norm() < 1e-3f && (d.head<3>() - n).norm() < 1e-3f
                                  && d.w() == 1.0f;
                off += !good;
            }
        std::cout << "[ figures  ] flags " << flags << ": " << inside << " texels in the mask, " << disagree
                  << " disagree, " << checked << " seeds checked, " << off << " off" << std::endl;
        EXPECT_GT(inside, 500000);
        EXPECT_LT(disagree, 64);
        EXPECT_GT(checked, inside - 200);
        EXPECT_EQ(off, 0);
        EXPECT_FALSE(tracer.sawIds);
    }
}

TEST_F(RasterizerGLBox, TilesComeInTheNullRasterizersOrderAndLandWhereTheirWindowSays)
{
    // 1024 texels at 2 x 2 samples: 4 x 4 raster tiles in 2 x 2 blocks.
    const DetailBakeJob job = jobFor(low, 1024, 2);
    MapTracer reference, drawn;
    RasterizerNull null;
    ASSERT_TRUE(rasterizeInto(null, job, reference));
    inGL([&] {
        RasterizerGL rasterizer;
        ASSERT_TRUE(rasterizeInto(rasterizer, job, drawn));
    });
    ASSERT_EQ(reference.order.size(), 16u);
    EXPECT_EQ(drawn.order, reference.order);
    // Block by block: the third tile is the first of the second row of block 0.
    EXPECT_EQ(reference.order[2], std::make_pair(0u, 1u));

    int checked = 0, off = 0;
    for (unsigned y = 3; y < 2048; y += 17)
        for (unsigned x = 5; x < 2048; x += 13) {
            const Eigen::Vector4f o = drawn.origin(x, y);
            const UvHit hit = locate(*data, texelUv(int(x), int(y), 2048, 2048));
            if (o.w() != 1.0f || hit.triangle < 0)
                continue;
            ++checked;
            off += (o.head<3>() - interpolate(*data->getPositions(), hit)).norm() >= 1e-3f;
        }
    EXPECT_GT(checked, 10000);
    EXPECT_EQ(off, 0);
}

TEST_F(RasterizerGLBox, CagePassGivesDirectionsFromTheSurfaceToTheCage)
{
    const float distance = 0.05f;
    DetailBakeJob job = jobFor(low, 512, 1, 0x400);
    job.cageScene = cageOf(*low, distance);
    MapTracer tracer;
    inGL([&] {
        RasterizerGL rasterizer;
        ASSERT_TRUE(rasterizeInto(rasterizer, job, tracer));
    });
    int checked = 0, off = 0;
    for (unsigned y = 0; y < 512; ++y)
        for (unsigned x = 0; x < 512; ++x) {
            const Eigen::Vector4f o = tracer.origin(x, y);
            const UvHit hit = locate(*data, texelUv(int(x), int(y), 512, 512));
            if (o.w() != 1.0f || hit.triangle < 0)
                continue;
            ++checked;
            const Eigen::Vector3f p = interpolate(*data->getPositions(), hit);
            const Eigen::Vector3f cage = p + distance * interpolate(*data->getNormals(), hit);
            const Eigen::Vector4f d = tracer.direction(x, y);
            // Not normalised: origin + direction is the cage point.
            off += (o.head<3>() - p).norm() >= 1e-3f || (o.head<3>() + d.head<3>() - cage).norm() >= 1e-3f
                   || d.w() != 1.0f;
        }
    EXPECT_GT(checked, 100000);
    EXPECT_EQ(off, 0);
}

TEST_F(RasterizerGLBox, MeshIdsTravelThroughTheEightBitTargetOnlyWhenAsked)
{
    MapTracer tracer;
    inGL([&] {
        RasterizerGL rasterizer;
        ASSERT_TRUE(rasterizeInto(rasterizer, jobFor(low, 256, 1, 0x002), tracer));
    });
    ASSERT_TRUE(tracer.sawIds);
    const uint32_t id = meshNameId(QStringLiteral("box_low"));
    ASSERT_EQ(id, meshNameId(QStringLiteral("box")));
    int covered = 0, wrong = 0;
    for (unsigned y = 0; y < 256; ++y)
        for (unsigned x = 0; x < 256; ++x) {
            const bool on = tracer.origin(x, y).w() == 1.0f;
            covered += on;
            wrong += tracer.id(x, y) != (on ? id : 0u);
        }
    EXPECT_GT(covered, 30000);
    EXPECT_EQ(wrong, 0);
}

TEST(RasterizerGLScenes, EachPartDrawsItsOwnIdAndTheLastDrawnWins)
{
    // Two quads: "left_low" over the whole UV square, then "right_high"
    // over its right half, drawn later and so on top.
    const auto quad = [](const QString& name, float u0, float u1, float z) {
        std::vector<Vertex> v;
        for (int i = 0; i < 4; ++i) {
            const float u = (i & 1) ? u1 : u0, w = float(i >> 1);
            v.push_back({Eigen::Vector3f(u, w, z), Eigen::Vector2f(u, w), Eigen::Vector3f(0, 0, 1),
                         Eigen::Vector3f(1, 0, 0), Eigen::Vector3f(0, 1, 0)});
        }
        SceneSPtr one = makeScene(v, {0, 1, 3, 0, 3, 2});
        Entity::SPtr entity;
        one->forAllEntities([&entity](const Entity::SPtr& e) {
            entity = e;
            return false;
        });
        return std::make_shared<Entity>(name, nullptr,
                                        std::make_unique<MeshDisplayComponent>(entity->getMeshDisplay()->getMesh()));
    };
    auto scene = std::make_shared<Scene>();
    scene->addEntity(quad(QStringLiteral("left_low"), 0.0f, 1.0f, 0.0f));
    scene->addEntity(quad(QStringLiteral("right_high"), 0.5f, 1.0f, 3.0f));
    MapTracer tracer;
    inGL([&] {
        RasterizerGL rasterizer;
        ASSERT_TRUE(rasterizeInto(rasterizer, jobFor(scene, 64, 1, 0x002), tracer));
    });
    for (unsigned y = 0; y < 64; y += 9) {
        EXPECT_EQ(tracer.id(10, y), meshNameId(QStringLiteral("left")));
        EXPECT_FLOAT_EQ(tracer.origin(10, y).z(), 0.0f);
        EXPECT_EQ(tracer.id(50, y), meshNameId(QStringLiteral("right")));
        EXPECT_FLOAT_EQ(tracer.origin(50, y).z(), 3.0f);
    }
}

TEST(RasterizerGLScenes, SkewMixesTheSmoothedAndTheHardNormal)
{
    // A unit quad of two triangles that do not share vertices: the diagonal
    // corners carry the other triangle's normal too, so smoothing tilts them.
    std::vector<Vertex> v;
    const Eigen::Vector2f corners[6] = {{0, 0}, {1, 0}, {1, 1}, {0, 0}, {1, 1}, {0, 1}};
    for (int i = 0; i < 6; ++i) {
        const Eigen::Vector3f n = i < 3 ? Eigen::Vector3f(0, 0, 1) : Eigen::Vector3f(0, 1, 0);
        v.push_back({Eigen::Vector3f(corners[i].x(), corners[i].y(), 0), corners[i], n, Eigen::Vector3f(1, 0, 0),
                     Eigen::Vector3f(0, 1, 0)});
    }
    const SceneSPtr scene = makeScene(v, {0, 1, 2, 3, 4, 5});
    const auto skewMap = [](float value) {
        auto s = SurfaceSPtr::create(SurfaceDesc(32, 32, PixelFormat::RGBA32F));
        fill(*s, Eigen::Vector4f(value, value, value, 1.0f));
        return s;
    };
    const auto run = [&](uint32_t flags, SurfaceSPtr skew) {
        DetailBakeJob job = jobFor(scene, 64, 1, flags);
        job.skewSurface = skew;
        MapTracer tracer;
        inGL([&] {
            RasterizerGL rasterizer;
            EXPECT_TRUE(rasterizeInto(rasterizer, job, tracer));
        });
        return tracer.directions;
    };
    const std::vector<float> plain = run(0, nullptr);
    const std::vector<float> smooth = run(0x001, nullptr);
    ASSERT_EQ(plain.size(), smooth.size());
    EXPECT_NE(plain, smooth);
    const auto near = [](const std::vector<float>& a, const std::vector<float>& b) {
        float worst = 0.0f;
        for (size_t i = 0; i < a.size(); ++i)
            worst = std::max(worst, std::abs(a[i] - b[i]));
        return worst;
    };
    EXPECT_LT(near(run(0x101, skewMap(0.0f)), smooth), 1e-4f);
    EXPECT_LT(near(run(0x101, skewMap(1.0f)), plain), 1e-4f);
    EXPECT_LT(near(run(0x301, skewMap(1.0f)), smooth), 1e-4f);
}

TEST_F(RasterizerGLBox, ACancelledBakeStopsWithoutDrainingTheRing)
{
    RecordingContext context;
    context.cancelAfterChecks = 6;
    DetailBakeJob job = jobFor(low, 512, 4);
    job.context = &context;
    MapTracer tracer;
    inGL([&] {
        RasterizerGL rasterizer;
        ASSERT_TRUE(rasterizeInto(rasterizer, job, tracer));
    });
    // Six tiles drawn; only the two whose slots came round again were traced.
    ASSERT_EQ(tracer.order.size(), 2u);
    EXPECT_EQ(tracer.order[0], std::make_pair(0u, 0u));
    EXPECT_EQ(tracer.order[1], std::make_pair(1u, 0u));
}

TEST(RasterizerGLScenes, MissingAttributesAreReportedPerAttributeAndThrowCode3)
{
    const auto bare = [](const QString& name, bool normals, bool uvs) {
        std::vector<Eigen::Vector3f> p = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
        std::vector<Vec2BufferUPtr> uvSets;
        if (uvs)
            uvSets.push_back(makeBuffer(std::vector<Eigen::Vector2f>{{0, 0}, {1, 0}, {0, 1}}));
        std::vector<SubMesh> subs;
        subs.emplace_back(makeBuffer(std::vector<uint32_t>{0, 1, 2}), PrimitiveType::Triangles, 3, nullptr);
        auto data = std::make_shared<Mesh::Data>(
            makeBuffer(std::move(p)), normals ? makeBuffer(std::vector<Eigen::Vector3f>(3, {0, 0, 1})) : nullptr,
            nullptr, nullptr, nullptr, std::move(uvSets), std::move(subs));
        return std::make_shared<Entity>(name, nullptr,
                                        std::make_unique<MeshDisplayComponent>(std::make_shared<Mesh>(data, name)));
    };
    auto low = std::make_shared<Scene>();
    low->addEntity(bare(QStringLiteral("a"), false, true));
    low->addEntity(bare(QStringLiteral("b"), false, false));
    low->addEntity(bare(QStringLiteral("c"), true, true));
    auto cage = std::make_shared<Scene>();
    cage->addEntity(bare(QStringLiteral("shell"), true, false));

    DetailBakeJob job = jobFor(low, 64, 1, 0x400);
    job.cageScene = cage;
    ZmfTest::LogCapture log;
    inGL([&] {
        RasterizerGL rasterizer;
        const BakeTiling tiling = computeTiling(job);
        BakeResult result;
        ErrorCode code = ErrorCode::NoError;
        try {
            rasterizer.init(job, tiling, result);
        } catch (ErrorCode thrown) {
            code = thrown;
        }
        EXPECT_EQ(code, ErrorCode::MissingInputData);
        rasterizer.finish(job, tiling, result);
    });
    // Warnings on the bakers' channel, which the main function names.
    EXPECT_EQ(log.messages(), QStringList({QStringLiteral("Could not find normals in low poly mesh : a, b"),
                                           QStringLiteral("Could not find UV set 0 in low poly mesh : b"),
                                           QStringLiteral("Could not find UV set 0 in cage mesh : shell")}));
    for (const auto& entry : log.entries())
        EXPECT_EQ(entry.level, 1);
    EXPECT_EQ(errorMessage(ErrorCode::MissingInputData),
              QStringLiteral("Missing input data. Check the logs for more information."));
}

TEST_F(RasterizerGLBox, DrawListsAreKeptWhileSceneUvSetAndFlagsStayTheSame)
{
    inGL([&] {
        RasterizerGL rasterizer;
        DetailBakeJob job = jobFor(low, 64, 1);
        const BakeTiling tiling = computeTiling(job);
        BakeResult result;
        rasterizer.init(job, tiling, result);
        rasterizer.finish(job, tiling, result);
        ASSERT_EQ(rasterizer.lowDrawList().records().size(), 1u);
        const unsigned first = rasterizer.lowDrawList().records()[0].vertexBuffer;

        rasterizer.init(job, tiling, result);
        rasterizer.finish(job, tiling, result);
        EXPECT_EQ(rasterizer.lowDrawList().records()[0].vertexBuffer, first);

        // New flags rebuild the list.
        job.flags = 0x001;
        rasterizer.init(job, tiling, result);
        rasterizer.finish(job, tiling, result);
        EXPECT_EQ(rasterizer.lowDrawList().key().flags, 0x001u);
        EXPECT_TRUE(rasterizer.cageDrawList().records().empty());
    });
}

TEST_F(RasterizerGLBox, OnlyTheBakedUvTileLandsInTheMap)
{
    const SceneSPtr shifted = loadBoxLow();
    ASSERT_TRUE(shifted);
    for (Eigen::Vector2f& uv : *firstMeshData(*shifted)->getUvSet(0))
        uv.x() += 1.0f;
    MapTracer original, moved, outside;
    DetailBakeJob job = jobFor(shifted, 256, 1);
    inGL([&] {
        RasterizerGL rasterizer;
        ASSERT_TRUE(rasterizeInto(rasterizer, jobFor(low, 256, 1), original));
        ASSERT_TRUE(rasterizeInto(rasterizer, job, outside));
        job.uvTile = {1, 0};
        ASSERT_TRUE(rasterizeInto(rasterizer, job, moved));
    });
    int covered = 0, differ = 0, stray = 0;
    for (unsigned y = 0; y < 256; ++y)
        for (unsigned x = 0; x < 256; ++x) {
            covered += original.origin(x, y).w() == 1.0f;
            // UVs past 1 carry fewer bits: edges may move by a texel.
            const Eigen::Vector4f a = original.origin(x, y), b = moved.origin(x, y);
            differ += a.w() != b.w() || (a.head<3>() - b.head<3>()).norm() > 1e-3f;
            stray += outside.origin(x, y).w() != 0.0f;
        }
    EXPECT_GT(covered, 30000);
    EXPECT_LT(differ, 16);
    EXPECT_EQ(stray, 0);
}
