// Tile grids, windows and the tile-size rule for a source map; the shader
// windows and the draw filter of the low-poly passes.

#include "baking/lowpoly/GLBakeParameters.h"
#include "baking/lowpoly/SourceMap.h"
#include "baking/lowpoly/SurfaceTileGrid.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace Ond::Baking;
using Ond::Surfaces::PixelFormat;
using Ond::Surfaces::SurfaceDesc;
using Ond::Surfaces::SurfaceSPtr;

namespace {

SurfaceSPtr surface(uint32_t w, uint32_t h, PixelFormat format = PixelFormat::RGBA32F)
{
    return SurfaceSPtr::create(SurfaceDesc(w, h, format));
}

} // namespace

TEST(SurfaceTileGrid, InnerTilesCarryTwoOverlapsAndEdgeTilesOne)
{
    const auto s = surface(3072, 1024, PixelFormat::L8);
    const SurfaceTileGrid grid(s, 1024, 512, 1, 2);
    ASSERT_EQ(grid.columns(), 3);
    ASSERT_EQ(grid.rowCount(), 2);
    EXPECT_EQ(grid.tile(0, 0)->width(), 1025u);
    EXPECT_EQ(grid.tile(1, 0)->width(), 1026u);
    EXPECT_EQ(grid.tile(2, 0)->width(), 1025u);
    EXPECT_EQ(grid.tile(0, 0)->height(), 514u);
    EXPECT_EQ(grid.tile(0, 1)->height(), 514u);
    EXPECT_EQ(grid.tileX(1), 1023);
    EXPECT_EQ(grid.tileY(1), 510);

    // Views into the parent: same stride, pixels at the tile's origin.
    const auto& tile = grid.tile(2, 1);
    EXPECT_TRUE(tile->isView());
    EXPECT_EQ(tile->rowStride(), s->rowStride());
    EXPECT_EQ(tile->data(), s->pixel<uint8_t>(2047, 510));
}

TEST(SurfaceTileGrid, ClampsTheTileAndLeavesOutARestThatFillsNoTile)
{
    const auto s = surface(1000, 300);
    const SurfaceTileGrid big(s, 4096, 4096);
    ASSERT_EQ(big.columns(), 1);
    ASSERT_EQ(big.rowCount(), 1);
    EXPECT_EQ(big.tile(0, 0)->width(), 1000u);
    EXPECT_EQ(big.tile(0, 0)->height(), 300u);

    const SurfaceTileGrid rest(s, 512, 256);
    EXPECT_EQ(rest.columns(), 1);
    EXPECT_EQ(rest.rowCount(), 1);
}

TEST(SurfaceTileGrid, HasNoRowsWithoutSurfaceOrWithANegativeNumber)
{
    EXPECT_EQ(SurfaceTileGrid(SurfaceSPtr(), 64, 64).rowCount(), 0);
    EXPECT_EQ(SurfaceTileGrid(surface(64, 64), -1, 64).rowCount(), 0);
    EXPECT_EQ(SurfaceTileGrid(surface(64, 64), 64, 64, 0, -1).rowCount(), 0);
    EXPECT_EQ(SurfaceTileGrid(surface(64, 64), 64, 64, 0, -1).columns(), 0);
}

TEST(SurfaceTileGrid, WindowsGiveTheTileOriginAndHowManyTilesFitTheMap)
{
    const SurfaceTileGrid plain(surface(2048, 2048), 1024, 1024);
    const auto w = plain.window(1, 0);
    EXPECT_FLOAT_EQ(w[0], 0.5f);
    EXPECT_FLOAT_EQ(w[1], 0.0f);
    EXPECT_FLOAT_EQ(w[2], 2.0f);
    EXPECT_FLOAT_EQ(w[3], 2.0f);

    const SurfaceTileGrid overlapped(surface(1024, 1024), 512, 512, 1, 1);
    const auto o = overlapped.window(1, 1);
    EXPECT_FLOAT_EQ(o[0], 511.0f / 1024.0f);
    EXPECT_FLOAT_EQ(o[1], 511.0f / 1024.0f);
    EXPECT_FLOAT_EQ(o[2], 1024.0f / 513.0f);
    EXPECT_FLOAT_EQ(o[3], 1024.0f / 513.0f);
}

TEST(SourceTiling, LargerOutputThanSourceCutsBothIntoEqualTileCounts)
{
    // 2048 output over a 1024 source: output tiles of 1024, source tiles of
    // 512 with one texel of overlap.
    const SourceTiling t = sourceTilingForAxis(1024, 2048, 1);
    EXPECT_EQ(t.outputTile, 1024);
    EXPECT_EQ(t.sourceTile, 512);
    EXPECT_EQ(t.sourceOverlap, 1);
    EXPECT_EQ(t.outputOverlap, 2);

    const SurfaceTileGrid source(surface(1024, 1024), t.sourceTile, t.sourceTile, t.sourceOverlap, t.sourceOverlap);
    const SurfaceTileGrid output(surface(2048, 2048), t.outputTile, t.outputTile);
    EXPECT_EQ(source.columns(), output.columns());
    EXPECT_EQ(source.rowCount(), output.rowCount());
    EXPECT_EQ(source.tile(1, 0)->width(), 513u);
}

TEST(SourceTiling, LargerSourceThanOutputAndEqualSizes)
{
    const SourceTiling big = sourceTilingForAxis(4096, 1024, 1);
    EXPECT_EQ(big.sourceTile, 1024);
    EXPECT_EQ(big.outputTile, 256);
    EXPECT_EQ(big.sourceOverlap, 4);
    EXPECT_EQ(big.outputOverlap, 1);

    const SourceTiling same = sourceTilingForAxis(512, 512, 0);
    EXPECT_EQ(same.sourceTile, 512);
    EXPECT_EQ(same.outputTile, 512);
    EXPECT_EQ(same.sourceOverlap, 0);
    EXPECT_EQ(same.outputOverlap, 0);
}

TEST(SourceMap, SidesRoundToTheNearerPowerOfTwo)
{
    EXPECT_EQ(powerOfTwoSide(600), 512);
    EXPECT_EQ(powerOfTwoSide(1000), 1024);
    EXPECT_EQ(powerOfTwoSide(767), 512);
    EXPECT_EQ(powerOfTwoSide(768), 1024);
    EXPECT_EQ(powerOfTwoSide(1024), 1024);
    EXPECT_EQ(powerOfTwoSide(1), 1);
    EXPECT_EQ(powerOfTwoSide(3), 4);
}

TEST(SourceMap, ResamplesToPowerOfTwoKeepingContents)
{
    // 600 x 1000 becomes 512 x 1024; a horizontal ramp stays a ramp.
    auto s = surface(600, 1000, PixelFormat::RGBA8);
    for (uint32_t y = 0; y < 1000; ++y)
        for (uint32_t x = 0; x < 600; ++x)
            s->writePixel(x, y, Eigen::Vector4f(float(x) / 599.0f, 0.5f, 1.0f, 1.0f));
    const SurfaceSPtr r = resampleToPowerOfTwo(s);
    ASSERT_EQ(r->width(), 512u);
    ASSERT_EQ(r->height(), 1024u);
    EXPECT_EQ(r->format(), PixelFormat::RGBA32F);
    for (uint32_t x = 0; x < 512; x += 37) {
        const Eigen::Vector4f p = r->readPixel(x, 700);
        const float u = ((float(x) + 0.5f) * 600.0f / 512.0f - 0.5f) / 599.0f;
        EXPECT_NEAR(p.x(), std::clamp(u, 0.0f, 1.0f), 1.0f / 255.0f) << x;
        EXPECT_NEAR(p.y(), 0.5f, 1.0f / 255.0f);
        EXPECT_FLOAT_EQ(p.w(), 1.0f);
    }
    // Power-of-two maps pass unchanged.
    const auto square = surface(256, 128);
    EXPECT_EQ(resampleToPowerOfTwo(square).data(), square.data());
}

TEST(GLBakeParameters, ShaderWindowsMapTheTileOntoClipSpace)
{
    GLBakeParameters p;
    p.uvWindow = {0.5f, 0.0f, 2.0f, 2.0f};
    p.uvTile = {1, 0};
    const auto d = p.shaderUvWindow();
    const auto m = p.shaderUvWindowProduct();
    // The tile spans u 1.5 .. 2.0 in the UV square (1, 0).
    for (float u : {1.5f, 1.75f, 2.0f}) {
        const float expected = (u - 1.5f) * 4.0f - 1.0f;
        EXPECT_FLOAT_EQ((u - d[0]) * d[2], expected);
        EXPECT_FLOAT_EQ(u * m[2] - m[0], expected);
    }
    for (float v : {0.0f, 0.25f, 0.5f}) {
        const float expected = v * 4.0f - 1.0f;
        EXPECT_FLOAT_EQ((v - d[1]) * d[3], expected);
        EXPECT_FLOAT_EQ(v * m[3] - m[1], expected);
    }

    p.sourceWindow = {0.25f, 0.5f, 4.0f, 2.0f};
    const auto s = p.shaderSourceWindow();
    EXPECT_FLOAT_EQ((1.25f - s[0]) * s[2], 0.0f);
    EXPECT_FLOAT_EQ((1.5f - s[0]) * s[2], 1.0f);
}

TEST(GLBakeParameters, BakeTypeSetterIgnoresUnknownTypes)
{
    GLBakeParameters p;
    p.setBakeType(2);
    p.setBakeType(3);
    EXPECT_EQ(p.bakeType, 2u);
}

TEST(GLBakeParameters, DrawFilterTestsAllBitsOfTheMask)
{
    const uint32_t plain = selectionMaskFromRenderFlags(0x40000000);
    const uint32_t selected = selectionMaskFromRenderFlags(int(0xC0000000u));
    EXPECT_EQ(plain, 1u);
    EXPECT_EQ(selected, 3u);
    EXPECT_FALSE(passesMeshMask(plain, 2));
    EXPECT_TRUE(passesMeshMask(selected, 2));
    EXPECT_TRUE(passesMeshMask(plain, 1));
    EXPECT_TRUE(passesMeshMask(0, 0xFFFFFFFFu));
}
