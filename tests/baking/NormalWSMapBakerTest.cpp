// The world-space normal baker on box_low.obj against normals interpolated
// on the processor, and on small quads for the tangent, binormal and the
// tangent-space normal map.

#include "LowPolyBakeTestUtil.h"

#include "baking/lowpoly/NormalWSMapBaker.h"
#include "image/DefaultCodecs.h"
#include "image/FileTextureLoader.h"
#include "scene/processing/TangentSpaceGenerator.h"

#include <algorithm>
#include <cmath>
#include <iostream>

using namespace LowPolyTest;
using Ond::Baking::NormalWSMapBaker;
using Ond::Surfaces::PixelFormat;
using Ond::Surfaces::SurfaceDesc;
using Ond::Surfaces::SurfaceSPtr;

namespace {

Eigen::Vector3f decode(const Eigen::Vector4f& c)
{
    return Eigen::Vector3f(c.x(), c.y(), c.z()) * 2.0f - Eigen::Vector3f::Ones();
}

struct NormalBake : BakerFixture<NormalWSMapBaker, 8>
{
};

} // namespace

TEST_F(NormalBake, BoxLowTexelsHoldTheInterpolatedWorldNormal)
{
    const SceneSPtr scene = loadBoxLow();
    ASSERT_TRUE(scene);
    const Mesh::DataSPtr data = firstMeshData(*scene);
    ASSERT_TRUE(data && data->getNormals());
    const SurfaceSPtr map = bake(scene);
    ASSERT_TRUE(map);
    ASSERT_EQ(map->width(), 256u);
    ASSERT_EQ(map->height(), 256u);
    ASSERT_EQ(map->format(), PixelFormat::RGBA32F);

    const int size = 256;
    std::vector<UvHit> hits(size_t(size * size));
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
            hits[size_t(y * size + x)] = locate(*data, texelUv(x, y, size, size));
    const auto inside = [&](int x, int y) {
        return x >= 0 && y >= 0 && x < size && y < size && hits[size_t(y * size + x)].triangle >= 0;
    };

    int checked = 0, covered = 0, coverageMismatch = 0;
    double worstDegrees = 0.0;
    const Vec3Buffer& normals = *data->getNormals();
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const Eigen::Vector4f c = texel(*map, x, y);
            const bool isCovered = c.w() > 0.5f;
            covered += isCovered;
            // Away from island borders coverage must agree exactly.
            const bool interior = inside(x, y) && inside(x - 1, y) && inside(x + 1, y) && inside(x, y - 1)
                && inside(x, y + 1);
            const bool exterior = !inside(x, y) && !inside(x - 1, y) && !inside(x + 1, y) && !inside(x, y - 1)
                && !inside(x, y + 1);
            if ((interior && !isCovered) || (exterior && isCovered))
                ++coverageMismatch;
            if (!interior)
                continue;
            const UvHit& hit = hits[size_t(y * size + x)];
            Eigen::Vector3f expected = Eigen::Vector3f::Zero();
            for (int k = 0; k < 3; ++k)
                expected += hit.weights[k] * normals[hit.corners[k]].normalized();
            expected.normalize();
            const Eigen::Vector3f got = decode(c);
            const double cosine = std::clamp(double(got.normalized().dot(expected)), -1.0, 1.0);
            worstDegrees = std::max(worstDegrees, std::acos(cosine) * 180.0 / M_PI);
            EXPECT_NEAR(got.norm(), 1.0f, 1e-3f) << x << "," << y;
            ++checked;
        }
    }
    std::cout << "[ figures  ] box_low 256: " << checked << " interior texels, worst " << worstDegrees
              << " degrees, " << covered << " covered" << std::endl;
    EXPECT_GT(checked, 30000);
    EXPECT_LE(worstDegrees, 1.0);
    EXPECT_EQ(coverageMismatch, 0);
    EXPECT_EQ(context.progressLabels, std::vector<QString>{QStringLiteral("Normal world space map computation")});
    EXPECT_EQ(context.tiles.size(), 1u);
}

TEST_F(NormalBake, TangentAndBinormalTypesWriteThatAxisOfTheFrame)
{
    const Eigen::Vector3f n(0, 0, 1), t(0, 1, 0), b(-1, 0, 0);
    const SceneSPtr quad = makeQuad(n, t, b);
    setProperty(baker.properties(), "Common.OutputSize", QVariant::fromValue(QSize(5, 5)));
    const Eigen::Vector3f expected[3] = {n, t, b};
    for (int type = 0; type < 3; ++type) {
        setProperty(baker.properties(), "NWS.BakeType", type);
        const SurfaceSPtr map = bake(quad);
        ASSERT_TRUE(map);
        for (int y = 0; y < 32; y += 5)
            for (int x = 0; x < 32; x += 5)
                EXPECT_LT((decode(texel(*map, x, y)) - expected[type]).norm(), 1e-4f) << type << " " << x << "," << y;
    }
}

TEST_F(NormalBake, NormalMapBendsTheFrameAndItsAlphaLeavesTexelsEmpty)
{
    const Eigen::Vector3f n(0, 1, 0), t(1, 0, 0), b(0, 0, -1);
    const SceneSPtr quad = makeQuad(n, t, b);
    setProperty(baker.properties(), "Common.OutputSize", QVariant::fromValue(QSize(6, 6)));
    // Tangent-space (0.6, 0.48, 0.64) on the left half; alpha 0 on the right.
    auto normalMap = SurfaceSPtr::create(SurfaceDesc(64, 64, PixelFormat::RGBA32F));
    const Eigen::Vector3f ts = Eigen::Vector3f(0.6f, 0.48f, 0.64f).normalized();
    for (uint32_t y = 0; y < 64; ++y)
        for (uint32_t x = 0; x < 64; ++x)
            normalMap->writePixel(x, y, Eigen::Vector4f(ts.x() * 0.5f + 0.5f, ts.y() * 0.5f + 0.5f,
                                                        ts.z() * 0.5f + 0.5f, x < 32 ? 1.0f : 0.0f));
    context.surfaces[QStringLiteral("/maps/n.png")] = normalMap;
    setProperty(baker.properties(), "Additional.NormalMap", QStringLiteral("/maps/n.png"));

    for (int invert : {0, 1}) {
        setProperty(baker.properties(), "Additional.InvertGreen", invert);
        const SurfaceSPtr map = bake(quad);
        ASSERT_TRUE(map);
        const float g = invert ? -ts.y() : ts.y();
        const Eigen::Vector3f expected = (t * ts.x() + b * g + n * ts.z()).normalized();
        EXPECT_LT((decode(texel(*map, 10, 20)) - expected).norm(), 1e-3f) << invert;
        EXPECT_EQ(texel(*map, 50, 20), Eigen::Vector4f::Zero()) << invert;
    }

    // With the tangent type the map is loaded but has no effect.
    setProperty(baker.properties(), "NWS.BakeType", 1);
    context.loadedPaths.clear();
    const SurfaceSPtr tangent = bake(quad);
    EXPECT_EQ(context.loadedPaths.size(), 1u);
    EXPECT_LT((decode(texel(*tangent, 50, 20)) - t).norm(), 1e-4f);
}

TEST_F(NormalBake, MissingMapIsIgnoredAndUnselectedPartsAreNotDrawn)
{
    const Eigen::Vector3f n(0, 0, 1), t(1, 0, 0), b(0, 1, 0);
    setProperty(baker.properties(), "Common.OutputSize", QVariant::fromValue(QSize(5, 5)));
    setProperty(baker.properties(), "Additional.NormalMap", QStringLiteral("/maps/absent.png"));
    const SurfaceSPtr drawn = bake(makeQuad(n, t, b));
    EXPECT_LT((decode(texel(*drawn, 7, 7)) - n).norm(), 1e-4f);

    const SurfaceSPtr empty = bake(makeQuad(n, t, b, Eigen::Vector2f::Zero(), false));
    for (int y = 0; y < 32; y += 3)
        for (int x = 0; x < 32; x += 3)
            EXPECT_EQ(texel(*empty, x, y), Eigen::Vector4f::Zero());
}

TEST_F(NormalBake, CancelledBakeStopsAtATileBoundaryWithoutPostProcess)
{
    const Eigen::Vector3f n(0, 0, 1), t(1, 0, 0), b(0, 1, 0);
    setProperty(baker.properties(), "Common.OutputSize", QVariant::fromValue(QSize(11, 11)));
    setProperty(baker.properties(), "Common.DilationWidth", 4);
    context.cancelAfterChecks = 1;
    const SurfaceSPtr map = bake(makeQuad(n, t, b));
    ASSERT_TRUE(map);
    EXPECT_EQ(map->width(), 2048u);
    // One tile of four was drawn: the bottom-left one, the top-left quarter
    // of the rows stays empty.
    EXPECT_EQ(context.tiles.size(), 1u);
    EXPECT_GT(texel(*map, 100, 2000).w(), 0.5f);
    EXPECT_EQ(texel(*map, 100, 100), Eigen::Vector4f::Zero());
    EXPECT_EQ(texel(*map, 1500, 2000), Eigen::Vector4f::Zero());
}

TEST_F(NormalBake, BoxLowMapLinesUpWithTheReferenceObjectSpaceMap)
{
    // The reference holds the high mesh's normals, which follow the low's
    // except where details were added: most covered texels agree closely,
    // and a map flipped or shifted in UV space would not.
    Ond::Surfaces::registerDefaultCodecs();
    const QString dir = ZmfTest::testDataDir();
    const SurfaceSPtr reference = Ond::Surfaces::FileTextureLoader::load(dir + QStringLiteral("/box_1024_normal_object.png"));
    const SurfaceSPtr mask = Ond::Surfaces::FileTextureLoader::load(dir + QStringLiteral("/box_1024_mask.png"));
    ASSERT_TRUE(reference && mask);
    const SceneSPtr scene = loadBoxLow();
    ASSERT_TRUE(scene);
    setProperty(baker.properties(), "Common.OutputSize", QVariant::fromValue(QSize(10, 10)));
    const SurfaceSPtr map = bake(scene);
    ASSERT_TRUE(map);
    ASSERT_EQ(map->width(), reference->width());

    int masked = 0, close = 0, coveredOutside = 0;
    for (int y = 0; y < 1024; ++y)
        for (int x = 0; x < 1024; ++x) {
            const bool inMask = texel(*mask, x, y).x() > 0.5f;
            const Eigen::Vector4f c = texel(*map, x, y);
            if (!inMask) {
                coveredOutside += c.w() > 0.5f;
                continue;
            }
            ++masked;
            const Eigen::Vector3f a = decode(c).normalized();
            const Eigen::Vector3f b = decode(texel(*reference, x, y)).normalized();
            close += a.dot(b) > std::cos(10.0 * M_PI / 180.0);
        }
    const double share = double(close) / double(masked);
    std::cout << "[ figures  ] box_low 1024 vs reference: " << share * 100.0 << " % of " << masked
              << " texels within 10 degrees, " << coveredOutside << " covered outside the mask" << std::endl;
    EXPECT_GT(share, 0.9);
    EXPECT_LT(coveredOutside, masked / 100);
}

TEST_F(NormalBake, TiledBakeOfALargeMapReadsTheSourceSeamlessly)
{
    // 2048 output over a 1024 map: four output tiles, each reading a 512
    // tile of the map with one texel of overlap. Ramps in both directions
    // must come out as ramps, without a step at the tile borders.
    const Eigen::Vector3f n(0, 0, 1), t(1, 0, 0), b(0, 1, 0);
    auto normalMap = SurfaceSPtr::create(SurfaceDesc(1024, 1024, PixelFormat::RGBA32F));
    for (uint32_t y = 0; y < 1024; ++y)
        for (uint32_t x = 0; x < 1024; ++x) {
            const float u = (float(x) + 0.5f) / 1024.0f, v = 1.0f - (float(y) + 0.5f) / 1024.0f;
            normalMap->writePixel(x, y, Eigen::Vector4f(0.25f + 0.5f * u, 0.3f + 0.4f * v, 1.0f, 1.0f));
        }
    context.surfaces[QStringLiteral("/maps/ramp.png")] = normalMap;
    setProperty(baker.properties(), "Additional.NormalMap", QStringLiteral("/maps/ramp.png"));
    setProperty(baker.properties(), "Additional.InvertGreen", 0);
    setProperty(baker.properties(), "Common.OutputSize", QVariant::fromValue(QSize(11, 11)));
    const SurfaceSPtr map = bake(makeQuad(n, t, b));
    ASSERT_TRUE(map);
    EXPECT_EQ(context.tiles.size(), 4u);

    float worst = 0.0f;
    for (int y : {4, 700, 1022, 1023, 1024, 1025, 1500, 2043})
        for (int x = 4; x < 2044; ++x) {
            const Eigen::Vector2f uv = texelUv(x, y, 2048, 2048);
            const Eigen::Vector3f ts(2.0f * (0.25f + 0.5f * uv.x()) - 1.0f, 2.0f * (0.3f + 0.4f * uv.y()) - 1.0f,
                                     1.0f);
            worst = std::max(worst, (decode(texel(*map, x, y)) - ts.normalized()).norm());
        }
    EXPECT_LT(worst, 2e-3f);
}

TEST_F(NormalBake, PerFragmentBinormalRebuildsTheBinormalWhenTheContextAsks)
{
    // A skewed binormal; the plugin's code rebuilds it as N x T, signed.
    using Ond::SceneGraph::MeshProcessing::TangentSpaceGenerator;
    const auto previous = TangentSpaceGenerator::getDefault();
    auto generator = std::make_shared<TangentSpaceGenerator>(
        TangentSpaceGenerator::pluginDirectoryFrom(ZmfTest::buildDir()) + QStringLiteral("/mikktspace.so"));
    ASSERT_TRUE(generator->isValid());
    TangentSpaceGenerator::setDefault(generator);

    const Eigen::Vector3f n(0, 0, 1), t(1, 0, 0), b(0.6f, 0.8f, 0);
    const SceneSPtr quad = makeQuad(n, t, b);
    setProperty(baker.properties(), "Common.OutputSize", QVariant::fromValue(QSize(5, 5)));
    setProperty(baker.properties(), "NWS.BakeType", 2);
    const SurfaceSPtr vertexFrame = bake(quad);
    context.perFragment = true;
    const SurfaceSPtr fragmentFrame = bake(quad);
    TangentSpaceGenerator::setDefault(previous);

    EXPECT_LT((decode(texel(*vertexFrame, 9, 9)) - b).norm(), 1e-4f);
    EXPECT_LT((decode(texel(*fragmentFrame, 9, 9)) - Eigen::Vector3f(0, 1, 0)).norm(), 1e-4f);
}
