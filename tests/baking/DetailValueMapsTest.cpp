// The value steps of the detail post-process: remap and log tone-map.

#include "baking/detail/DetailValueMaps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace Ond::Baking;

TEST(DetailValueMaps, SymmetricRemapKeepsZeroInTheMiddleAndClamps)
{
    EXPECT_FLOAT_EQ(remapValue(0.0f, -0.5f, 2.0f, true), 0.5f);
    EXPECT_FLOAT_EQ(remapValue(2.0f, -0.5f, 2.0f, true), 1.0f);
    EXPECT_FLOAT_EQ(remapValue(-0.5f, -0.5f, 2.0f, true), 0.375f);
    EXPECT_FLOAT_EQ(remapValue(-9.0f, -0.5f, 2.0f, true), 0.375f);
    // A mesh against itself: unbounded range, every value lands on 0.5.
    const float inf = std::numeric_limits<float>::infinity();
    EXPECT_FLOAT_EQ(remapValue(0.3f, -inf, inf, true), 0.5f);
}

TEST(DetailValueMaps, PlainRemapSpansTheRange)
{
    EXPECT_FLOAT_EQ(remapValue(-0.5f, -0.5f, 1.5f, false), 0.0f);
    EXPECT_FLOAT_EQ(remapValue(0.5f, -0.5f, 1.5f, false), 0.5f);
    EXPECT_FLOAT_EQ(remapValue(7.0f, -0.5f, 1.5f, false), 1.0f);
}

TEST(DetailValueMaps, LogTonemapFixesZeroAndTheBoundsAndKeepsTheSign)
{
    EXPECT_EQ(logTonemapValue(0.0f, -2.0f, 4.0f, 0.05f), 0.0f);
    EXPECT_NEAR(logTonemapValue(4.0f, -2.0f, 4.0f, 0.05f), 1.0f, 1e-6f);
    EXPECT_NEAR(logTonemapValue(-2.0f, -2.0f, 4.0f, 0.05f), -1.0f, 1e-6f);
    // Low values are lifted: a tenth of the range gives over a third,
    // ln(0.2 + 0.4) - ln(0.2) over ln(0.2 + 4) - ln(0.2).
    const float tenth = logTonemapValue(0.4f, -2.0f, 4.0f, 0.05f);
    EXPECT_NEAR(tenth, std::log(3.0f) / std::log(21.0f), 1e-6f);
    EXPECT_NEAR(logTonemapValue(-0.2f, -2.0f, 4.0f, 0.05f), -tenth, 1e-6f);
}

TEST(DetailValueMaps, GrayTakesTheRedChannelExactly)
{
    Ond::Surfaces::SurfaceDesc desc(2, 1, Ond::Surfaces::PixelFormat::RGBA32F);
    Ond::Surfaces::SurfaceSPtr rgba(new Ond::Surfaces::Surface(desc, 64));
    float* p = rgba->pixel<float>(0, 0);
    const float values[8] = {0.123456f, 0.123456f, 0.123456f, 1.0f, -3.5f, -3.5f, -3.5f, 0.0f};
    std::copy(values, values + 8, p);
    const Ond::Surfaces::SurfaceSPtr gray = toGray(rgba);
    ASSERT_EQ(gray->format(), Ond::Surfaces::PixelFormat::L32F);
    EXPECT_EQ(gray->pixel<float>(0, 0)[0], 0.123456f);
    EXPECT_EQ(gray->pixel<float>(1, 0)[0], -3.5f);
}
