#include "baking/lowpoly/PostProcess.h"

#include "opengl/OglContextData.h"
#include "opengl/QGLManager.h"

#include <GL/glew.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <vector>

using Ond::Baking::DilationPath;
using Ond::Baking::dilationUsesCompute;
using Ond::Baking::postProcess;
using Ond::Surfaces::PixelFormat;
using Ond::Surfaces::Surface;
using Ond::Surfaces::SurfaceDesc;
using Ond::Surfaces::SurfaceSPtr;
using Texel = Eigen::Vector4f;

namespace {

// A plain RGBA map for building inputs and computing expectations.
struct Map
{
    int width = 0;
    int height = 0;
    std::vector<Texel> texels;

    Map(int w, int h) : width(w), height(h), texels(size_t(w) * size_t(h), Texel::Zero()) {}
    Texel& at(int x, int y) { return texels[size_t(y) * size_t(width) + size_t(x)]; }
    const Texel& at(int x, int y) const { return texels[size_t(y) * size_t(width) + size_t(x)]; }
};

SurfaceSPtr toSurface(const Map& map, PixelFormat format = PixelFormat::RGBA32F, int64_t stride = 0)
{
    auto surface = SurfaceSPtr::create(SurfaceDesc(uint32_t(map.width), uint32_t(map.height), format, stride));
    for (int y = 0; y < map.height; ++y)
        for (int x = 0; x < map.width; ++x)
            surface->writePixel(uint32_t(x), uint32_t(y), map.at(x, y));
    return surface;
}

Map toMap(const Surface& surface)
{
    Map map(int(surface.width()), int(surface.height()));
    for (int y = 0; y < map.height; ++y)
        for (int x = 0; x < map.width; ++x)
            map.at(x, y) = surface.readPixel(uint32_t(x), uint32_t(y));
    return map;
}

// The growth rule: an empty texel takes the mean of the neighbours covered
// before the step, and full coverage.
Map referenceDilation(Map map, int steps)
{
    for (int s = 0; s < steps; ++s) {
        Map next = map;
        for (int y = 0; y < map.height; ++y) {
            for (int x = 0; x < map.width; ++x) {
                if (map.at(x, y).w() != 0.0f)
                    continue;
                Texel sum = Texel::Zero();
                int count = 0;
                for (int dy = -1; dy <= 1; ++dy) {
                    for (int dx = -1; dx <= 1; ++dx) {
                        const int nx = x + dx, ny = y + dy;
                        if ((dx || dy) && nx >= 0 && ny >= 0 && nx < map.width && ny < map.height
                            && map.at(nx, ny).w() != 0.0f) {
                            sum += map.at(nx, ny);
                            ++count;
                        }
                    }
                }
                if (count)
                    next.at(x, y) = Texel(sum.x() / count, sum.y() / count, sum.z() / count, 1.0f);
            }
        }
        map = std::move(next);
    }
    return map;
}

// An irregular island of random colours with full coverage inside
// [x0, x1) × [y0, y1).
Map islandMap(int w, int h, int x0, int y0, int x1, int y1, unsigned seed = 7)
{
    Map map(w, h);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> colour(0.0f, 1.0f);
    for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x)
            if ((x - x0) * 3 + (y - y0) * 2 < (x1 - x0) * 3 + 2) // a sloped edge, not a square
                map.at(x, y) = Texel(colour(random), colour(random), colour(random), 1.0f);
    return map;
}

void inContext(const std::function<void()>& body)
{
    auto* manager = Ond::OpenGLUtils::QGLManager::instance();
    ASSERT_NE(manager, nullptr);
    ASSERT_FALSE(manager->hasFailed()) << manager->errorText().toStdString();
    manager->runInContext(true, [&](Ond::OglUtils::OglContextData&) {
        glGetError();
        body();
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
        return 0;
    });
}

Map run(const Map& input, uint32_t dilation, bool diffusion, DilationPath path)
{
    Map result(0, 0);
    inContext([&] {
        SurfaceSPtr surface = toSurface(input);
        postProcess(surface, dilation, diffusion, path);
        result = toMap(*surface);
    });
    return result;
}

void expectTexelNear(const Texel& actual, const Texel& expected, int x, int y, float tolerance = 1e-5f)
{
    EXPECT_LE((actual - expected).cwiseAbs().maxCoeff(), tolerance)
        << "at (" << x << ", " << y << "): got " << actual.transpose() << ", want " << expected.transpose();
}

class DilationPaths : public ::testing::TestWithParam<DilationPath>
{
};

} // namespace

TEST(PostProcess, NothingToDoKeepsTheSurfaceObject)
{
    inContext([] {
        SurfaceSPtr surface = toSurface(islandMap(16, 16, 4, 4, 8, 8));
        const Surface* before = surface.data();
        postProcess(surface, 0, false);
        EXPECT_EQ(surface.data(), before);

        // Every texel of a map without alpha is covered.
        SurfaceSPtr opaque = SurfaceSPtr::create(SurfaceDesc(8, 8, PixelFormat::RGB32F));
        Ond::Surfaces::fill(*opaque, Texel(0.25f, 0.5f, 0.75f, 1.0f));
        const Surface* opaqueBefore = opaque.data();
        postProcess(opaque, 4, true);
        EXPECT_EQ(opaque.data(), opaqueBefore);
        EXPECT_FLOAT_EQ(opaque->readPixel(3, 3).y(), 0.5f);
    });
}

TEST(PostProcess, ComputePathIsAvailableOnThisContextForFloatAndShortMaps)
{
    inContext([] {
        EXPECT_TRUE(dilationUsesCompute(PixelFormat::RGBA32F));
        EXPECT_TRUE(dilationUsesCompute(PixelFormat::RGBA16));
        EXPECT_FALSE(dilationUsesCompute(PixelFormat::RGBA8));
        EXPECT_FALSE(dilationUsesCompute(PixelFormat::RGBA16F));
    });
}

TEST_P(DilationPaths, RingOfTheWidthTakesTheMeanOfTheStepBeforeAndNothingBeyond)
{
    // 48 × 32: whole 16-texel blocks, ring clear of the borders.
    const Map input = islandMap(48, 32, 18, 10, 30, 22);
    for (int width : {1, 3, 6}) {
        SCOPED_TRACE(width);
        const Map expected = referenceDilation(input, width);
        const Map actual = run(input, uint32_t(width), false, GetParam());
        for (int y = 0; y < input.height; ++y)
            for (int x = 0; x < input.width; ++x)
                expectTexelNear(actual.at(x, y), expected.at(x, y), x, y);
    }
}

TEST_P(DilationPaths, OddSizedMapsGrowLikeTheReference)
{
    const Map input = islandMap(37, 23, 12, 8, 21, 15, 11);
    const int width = 4;
    const Map expected = referenceDilation(input, width);
    const Map actual = run(input, width, false, GetParam());
    for (int y = 0; y < input.height; ++y) {
        for (int x = 0; x < input.width; ++x) {
            const Texel& got = actual.at(x, y);
            const Texel& want = expected.at(x, y);
            expectTexelNear(Texel(got.x(), got.y(), got.z(), 0.0f), Texel(want.x(), want.y(), want.z(), 0.0f), x, y);
            EXPECT_EQ(got.w() != 0.0f, want.w() != 0.0f) << x << ", " << y;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(PostProcess, DilationPaths, ::testing::Values(DilationPath::Fragment, DilationPath::Compute),
                         [](const auto& info) { return info.param == DilationPath::Fragment ? "Fragment" : "Compute"; });

TEST(PostProcess, ComputeDilationOutsideWhole16BlocksKeepsStepCodedAlpha)
{
    // 37 × 23: the closing pass covers only the 32 × 16 corner, rows 0 to 15.
    Map input(37, 23);
    for (int y = 0; y < 23; ++y)
        input.at(30, y) = Texel(0.5f, 0.25f, 1.0f, 1.0f);
    const Map actual = run(input, 5, false, DilationPath::Compute);
    for (int x = 25; x < 36; ++x) {
        const int step = std::abs(x - 30) - 1; // the step that filled column x
        const float coded = step < 0 ? 1.0f : float(256 - (step + 1)) / 256.0f;
        EXPECT_FLOAT_EQ(actual.at(x, 20).w(), coded) << x;
        EXPECT_FLOAT_EQ(actual.at(x, 3).w(), x >= 32 ? coded : 1.0f) << x;
    }
    EXPECT_EQ(actual.at(36, 5), Texel::Zero());
    EXPECT_FLOAT_EQ(actual.at(35, 5).x(), 0.5f);
}

TEST(PostProcess, ComputeGrowthStopsBy256Steps)
{
    // One covered column; the alpha code runs out after 255 filled texels.
    Map input(288, 16);
    for (int y = 0; y < 16; ++y)
        input.at(0, y) = Texel(0.75f, 0.5f, 0.25f, 1.0f);
    const Map actual = run(input, 300, false, DilationPath::Compute);
    for (int x : {1, 100, 255})
        expectTexelNear(actual.at(x, 8), Texel(0.75f, 0.5f, 0.25f, 1.0f), x, 8, 1e-4f);
    for (int x : {256, 257, 287})
        EXPECT_EQ(actual.at(x, 8), Texel::Zero()) << x;
}

TEST(PostProcess, FragmentDilationTreatsAlphaBelowOneHalfAsEmpty)
{
    Map input(32, 32);
    input.at(10, 10) = Texel(1.0f, 0.0f, 0.0f, 1.0f);
    input.at(11, 10) = Texel(0.0f, 1.0f, 0.0f, 0.3f);
    const Map fragment = run(input, 1, false, DilationPath::Fragment);
    expectTexelNear(fragment.at(11, 10), Texel(1.0f, 0.0f, 0.0f, 1.0f), 11, 10);
    // On the compute path the faint texel is covered but never a source.
    const Map compute = run(input, 1, false, DilationPath::Compute);
    expectTexelNear(compute.at(11, 10), Texel(0.0f, 1.0f, 0.0f, 1.0f), 11, 10);
    expectTexelNear(compute.at(12, 10), Texel::Zero(), 12, 10);
}

TEST(PostProcess, PaddedAndBottomUpSurfacesKeepTheirLayout)
{
    const Map input = islandMap(20, 12, 6, 3, 12, 9, 3);
    const Map expected = referenceDilation(input, 2);
    for (int64_t stride : {int64_t(20 * 16 + 48), int64_t(-20 * 16), int64_t(20 * 16 + 4)}) {
        SCOPED_TRACE(stride);
        inContext([&] {
            SurfaceSPtr surface = toSurface(input, PixelFormat::RGBA32F, stride);
            postProcess(surface, 2, false, DilationPath::Fragment);
            EXPECT_EQ(surface->rowStride(), stride);
            const Map actual = toMap(*surface);
            for (int y = 0; y < input.height; ++y)
                for (int x = 0; x < input.width; ++x)
                    expectTexelNear(actual.at(x, y), expected.at(x, y), x, y);
        });
    }
}

TEST(PostProcess, EightBitMapsDilateOnTheFragmentPath)
{
    Map input(16, 16);
    input.at(8, 8) = Texel(1.0f, 0.2f, 0.6f, 1.0f);
    Map actual(0, 0);
    inContext([&] {
        SurfaceSPtr surface = toSurface(input, PixelFormat::RGBA8);
        postProcess(surface, 2, false);
        EXPECT_EQ(surface->format(), PixelFormat::RGBA8);
        actual = toMap(*surface);
    });
    expectTexelNear(actual.at(10, 6), input.at(8, 8), 10, 6, 1.0f / 255.0f);
    EXPECT_EQ(actual.at(11, 8), Texel::Zero());
}

TEST(PostProcess, DiffusionFillsEveryTexelAndKeepsCoveredOnes)
{
    // Odd, non-power-of-two, a single row, and one map above the pyramid
    // limit of 1024.
    const struct { int w, h; } sizes[] = {{64, 64}, {37, 29}, {1024, 1}, {2048, 6}, {3, 1025}};
    for (const auto& size : sizes) {
        SCOPED_TRACE(std::to_string(size.w) + " x " + std::to_string(size.h));
        const Map input = islandMap(size.w, size.h, size.w / 3, size.h / 3, size.w / 3 + std::max(size.w / 4, 1),
                                    size.h / 3 + std::max(size.h / 4, 1), unsigned(size.w));
        Texel low = Texel::Constant(1.0f), high = Texel::Zero();
        for (const Texel& t : input.texels)
            if (t.w() != 0.0f) {
                low = low.cwiseMin(t);
                high = high.cwiseMax(t);
            }
        ASSERT_EQ(high.w(), 1.0f);
        const Map actual = run(input, 0, true, DilationPath::Automatic);
        int failures = 0;
        for (int y = 0; y < size.h && failures < 5; ++y) {
            for (int x = 0; x < size.w && failures < 5; ++x) {
                const Texel& got = actual.at(x, y);
                const Texel& was = input.at(x, y);
                const bool ok = was.w() != 0.0f ? (got - was).cwiseAbs().maxCoeff() <= 1e-5f
                                                : got.w() == 1.0f && (got.head<3>().array() >= low.head<3>().array() - 1e-4f).all()
                                                      && (got.head<3>().array() <= high.head<3>().array() + 1e-4f).all();
                if (!ok) {
                    ++failures;
                    ADD_FAILURE() << "at (" << x << ", " << y << "): " << got.transpose() << " from " << was.transpose();
                }
            }
        }
    }
}

TEST(PostProcess, DiffusionSpreadsAUniformColourEverywhere)
{
    Map input(48, 32);
    for (int y = 28; y < 31; ++y)
        for (int x = 2; x < 6; ++x)
            input.at(x, y) = Texel(0.1f, 0.6f, 0.3f, 1.0f);
    const Map actual = run(input, 2, true, DilationPath::Automatic);
    for (int y = 0; y < input.height; ++y)
        for (int x = 0; x < input.width; ++x)
            expectTexelNear(actual.at(x, y), Texel(0.1f, 0.6f, 0.3f, 1.0f), x, y);
}

TEST(PostProcess, EmptyMapDilatesToZerosAndDiffusesToOpaqueBlack)
{
    const Map input(24, 20);
    for (DilationPath path : {DilationPath::Fragment, DilationPath::Compute}) {
        const Map dilated = run(input, 3, false, path);
        for (const Texel& t : dilated.texels)
            ASSERT_EQ(t, Texel::Zero());
    }
    const Map diffused = run(input, 0, true, DilationPath::Automatic);
    for (const Texel& t : diffused.texels)
        ASSERT_EQ(t, Texel(0.0f, 0.0f, 0.0f, 1.0f));
}

TEST(PostProcess, BothDilationPathsThenDiffusionAgree)
{
    const Map input = islandMap(64, 48, 20, 14, 40, 30, 5);
    const Map fragment = run(input, 4, true, DilationPath::Fragment);
    const Map compute = run(input, 4, true, DilationPath::Compute);
    for (int y = 0; y < input.height; ++y)
        for (int x = 0; x < input.width; ++x)
            expectTexelNear(compute.at(x, y), fragment.at(x, y), x, y);
}


TEST(PostProcess, SixteenBitMapsGrowTheFullWidthOnBothPaths)
{
    Map input(32, 32);
    for (int y = 12; y < 16; ++y)
        for (int x = 12; x < 15; ++x)
            input.at(x, y) = Texel(0.2f, 0.4f, 0.8f, 1.0f);
    for (DilationPath path : {DilationPath::Fragment, DilationPath::Compute}) {
        Map actual(0, 0);
        inContext([&] {
            SurfaceSPtr surface = toSurface(input, PixelFormat::RGBA16);
            postProcess(surface, 5, false, path);
            actual = toMap(*surface);
        });
        for (int x : {7, 8, 19})
            expectTexelNear(actual.at(x, 14), Texel(0.2f, 0.4f, 0.8f, 1.0f), x, 14, 1.0f / 65535.0f);
        EXPECT_EQ(actual.at(6, 14), Texel::Zero());
        EXPECT_EQ(actual.at(20, 14), Texel::Zero());
    }
}
