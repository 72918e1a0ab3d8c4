#include "image/ONDHalf16.h"
#include "image/PixelFormat.h"
#include "image/Surface.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

using namespace Ond::Surfaces;

TEST(PixelFormat, TableHelpersAndInverseLookup)
{
    struct Row { uint32_t value, channels, bytes; ComponentType type; };
    const Row rows[] = {
        {0, 0, 0, ComponentType::None},    {1, 1, 1, ComponentType::UInt8},  {2, 2, 1, ComponentType::UInt8},
        {3, 3, 1, ComponentType::UInt8},   {4, 3, 1, ComponentType::UInt8},  {5, 4, 1, ComponentType::UInt8},
        {6, 4, 1, ComponentType::UInt8},   {7, 1, 2, ComponentType::UInt16}, {8, 2, 2, ComponentType::UInt16},
        {9, 3, 2, ComponentType::UInt16},  {10, 4, 2, ComponentType::UInt16}, {11, 1, 2, ComponentType::Half},
        {12, 2, 2, ComponentType::Half},   {13, 3, 2, ComponentType::Half},  {14, 4, 2, ComponentType::Half},
        {15, 1, 4, ComponentType::Float},  {16, 2, 4, ComponentType::Float}, {17, 3, 4, ComponentType::Float},
        {18, 4, 4, ComponentType::Float},
    };
    for (const Row& r : rows) {
        const PixelFormat f = PixelFormat(r.value);
        EXPECT_EQ(channelCount(f), r.channels) << r.value;
        EXPECT_EQ(bytesPerComponent(f), r.bytes) << r.value;
        EXPECT_EQ(bitsPerComponent(f), 8 * r.bytes) << r.value;
        EXPECT_EQ(bytesPerPixel(f), r.channels * r.bytes) << r.value;
        EXPECT_EQ(componentType(f), r.type) << r.value;
        EXPECT_EQ(isColor(f), r.channels >= 3) << r.value;
        EXPECT_EQ(isGrayscale(f), r.channels >= 1 && r.channels < 3) << r.value;
    }
    EXPECT_EQ(bytesPerPixel(PixelFormat(19)), 0u);
    const uint32_t expected[4][4] = {{1, 2, 3, 5}, {7, 8, 9, 10}, {11, 12, 13, 14}, {15, 16, 17, 18}};
    const ComponentType types[4] = {ComponentType::UInt8, ComponentType::UInt16, ComponentType::Half,
                                    ComponentType::Float};
    for (int t = 0; t < 4; ++t)
        for (uint32_t c = 1; c <= 4; ++c)
            EXPECT_EQ(uint32_t(pixelFormatFor(types[t], c)), expected[t][c - 1]);
    EXPECT_EQ(pixelFormatFor(ComponentType::Float, 5), PixelFormat::Invalid);
}

TEST(ONDHalf16, ConversionsRoundToNearestEvenAndKeepSpecials)
{
    EXPECT_EQ(ONDHalf16(1.0f).bits, 0x3C00);
    EXPECT_EQ(ONDHalf16(-2.0f).bits, 0xC000);
    EXPECT_EQ(ONDHalf16(65504.0f).bits, 0x7BFF);
    EXPECT_EQ(ONDHalf16(65520.0f).bits, 0x7C00); // halfway to the next: rounds to infinity
    EXPECT_EQ(ONDHalf16(std::numeric_limits<float>::infinity()).bits, 0x7C00);
    EXPECT_TRUE(std::isnan(float(ONDHalf16(std::nanf("")))));
    EXPECT_EQ(ONDHalf16(5.9604645e-8f).bits, 0x0001); // smallest subnormal
    EXPECT_EQ(ONDHalf16(2.9802322e-8f).bits, 0x0000); // half of it: ties to even
    EXPECT_EQ(ONDHalf16(1.0f + 1.0f / 2048.0f).bits, 0x3C00); // tie, even stays
    EXPECT_EQ(ONDHalf16(1.0f + 3.0f / 2048.0f).bits, 0x3C02); // tie, odd rounds up
    // Every finite half survives the way through float.
    for (uint32_t b = 0; b < 0x10000; ++b) {
        if ((b & 0x7C00) == 0x7C00)
            continue;
        const float f = ONDHalf16::toFloat(uint16_t(b));
        ASSERT_EQ(ONDHalf16::fromFloat(f), b == 0x8000 ? 0x8000 : b) << b;
    }
}

TEST(Surface, AllocationStridesAndViews)
{
    Surface packed(SurfaceDesc(5, 3, PixelFormat::RGB8));
    EXPECT_EQ(packed.rowStride(), 15);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(packed.data()) % 64, 0u);
    EXPECT_EQ(packed.desc().depth, 1u);

    Surface bottomUp(SurfaceDesc(4, 3, PixelFormat::L8, -8));
    EXPECT_EQ(bottomUp.rowStride(), -8);
    // data addresses the last row of the block; row 2 is the lowest address.
    EXPECT_EQ(reinterpret_cast<uintptr_t>(bottomUp.row(2)) % 64, 0u);

    Surface empty(SurfaceDesc(0, 7, PixelFormat::RGBA8));
    EXPECT_TRUE(empty.isEmpty());
    Surface invalid(SurfaceDesc(4, 4, PixelFormat::Invalid));
    EXPECT_TRUE(invalid.isEmpty());

    Surface parent(SurfaceDesc(8, 8, PixelFormat::L16));
    for (uint32_t y = 0; y < 8; ++y)
        for (uint32_t x = 0; x < 8; ++x)
            *parent.pixel<uint16_t>(x, y) = uint16_t(y * 100 + x);
    Surface view(parent, 2, 3, 4, 2);
    EXPECT_TRUE(view.isView());
    EXPECT_EQ(view.width(), 4u);
    EXPECT_EQ(view.rowStride(), parent.rowStride());
    EXPECT_EQ(*view.pixel<uint16_t>(0, 0), 302);
    EXPECT_EQ(*view.pixel<uint16_t>(3, 1), 405);
    Surface emptyView(Surface(), 1, 1, 2, 2);
    EXPECT_TRUE(emptyView.isEmpty());

    Surface moved(std::move(parent));
    EXPECT_TRUE(parent.isEmpty());
    EXPECT_EQ(*moved.pixel<uint16_t>(7, 7), 707);
}

TEST(Surface, ForeignPixelsUseTheirDeleterOnce)
{
    int calls = 0;
    static uint8_t block[16];
    {
        Surface s(block, SurfaceDesc(4, 4, PixelFormat::L8), [&calls]() { ++calls; });
        Surface t(std::move(s));
        EXPECT_EQ(t.rowStride(), 4);
    }
    EXPECT_EQ(calls, 1);
    Surface view(block, SurfaceDesc(4, 4, PixelFormat::L8));
    EXPECT_TRUE(view.isView());
}

TEST(Surface, FlipAndCopyKeepLogicalOrder)
{
    Surface s(SurfaceDesc(3, 4, PixelFormat::L8, -3));
    for (uint32_t y = 0; y < 4; ++y)
        for (uint32_t x = 0; x < 3; ++x)
            *s.pixel<uint8_t>(x, y) = uint8_t(10 * y + x);
    Surface target(SurfaceDesc(3, 4, PixelFormat::L8));
    copyPixels(s, target);
    EXPECT_EQ(*target.pixel<uint8_t>(0, 0), 0);
    EXPECT_EQ(*target.pixel<uint8_t>(2, 3), 32);
    // Storage of target is top-down, so byte 0 is row 0.
    EXPECT_EQ(target.data()[0], 0);

    uint8_t* first = target.data();
    target.flipVertical();
    EXPECT_EQ(target.rowStride(), -3);
    EXPECT_EQ(*target.pixel<uint8_t>(1, 0), 31);
    target.flipVertical();
    EXPECT_EQ(target.data(), first);
}

TEST(Surface, BlitOnlyWhenWhollyInside)
{
    Surface target(SurfaceDesc(4, 4, PixelFormat::L8));
    std::memset(target.data(), 0, 16);
    Surface source(SurfaceDesc(2, 2, PixelFormat::L8));
    std::memset(source.data(), 9, 4);
    EXPECT_FALSE(blit(source, target, 3, 0));
    EXPECT_FALSE(blit(Surface(), target, 0, 0));
    EXPECT_EQ(*target.pixel<uint8_t>(3, 0), 0);
    EXPECT_TRUE(blit(source, target, 2, 2));
    EXPECT_EQ(*target.pixel<uint8_t>(3, 3), 9);
    EXPECT_EQ(*target.pixel<uint8_t>(1, 3), 0);
}

TEST(Surface, ConvertFollowsTheComponentRules)
{
    Surface s(SurfaceDesc(2, 1, PixelFormat::RGB8, -6));
    s.pixel<uint8_t>(0, 0)[0] = 1; s.pixel<uint8_t>(0, 0)[1] = 128; s.pixel<uint8_t>(0, 0)[2] = 255;
    s.pixel<uint8_t>(1, 0)[0] = 7; s.pixel<uint8_t>(1, 0)[1] = 7; s.pixel<uint8_t>(1, 0)[2] = 7;

    Surface wide;
    convert(s, wide, PixelFormat::RGBA16);
    EXPECT_LT(wide.rowStride(), 0);
    const uint16_t* p = wide.pixel<uint16_t>(0, 0);
    EXPECT_EQ(p[0], 257);
    EXPECT_EQ(p[1], 128 * 257);
    EXPECT_EQ(p[3], 65535); // missing alpha is opaque

    Surface bgr;
    convert(s, bgr, PixelFormat::BGR8);
    EXPECT_EQ(bgr.pixel<uint8_t>(0, 0)[0], 255);

    Surface grey;
    convert(s, grey, PixelFormat::L8);
    EXPECT_EQ(*grey.pixel<uint8_t>(1, 0), 7); // grey stays grey

    Surface f(SurfaceDesc(1, 1, PixelFormat::L32F));
    *f.pixel<float>(0, 0) = 1.7f;
    Surface clamped;
    convert(f, clamped, PixelFormat::RGB8);
    EXPECT_EQ(clamped.pixel<uint8_t>(0, 0)[2], 255);
    *f.pixel<float>(0, 0) = 0.5f;
    convert(f, clamped, PixelFormat::L8);
    EXPECT_EQ(*clamped.pixel<uint8_t>(0, 0), 128); // 127.5 rounds up
}

TEST(Surface, TransparencyAndFill)
{
    const PixelFormat fours[] = {PixelFormat::RGBA8, PixelFormat::BGRA8, PixelFormat::RGBA16, PixelFormat::RGBA16F,
                                 PixelFormat::RGBA32F};
    for (PixelFormat f : fours) {
        Surface s(SurfaceDesc(3, 2, f));
        fill(s, Eigen::Vector4f(0.2f, 0.4f, 0.6f, 1.0f));
        EXPECT_FALSE(hasTransparency(s)) << pixelFormatName(f);
        s.writePixel(2, 1, Eigen::Vector4f(0, 0, 0, 0.99f));
        EXPECT_TRUE(hasTransparency(s)) << pixelFormatName(f);
    }
    Surface rgb(SurfaceDesc(2, 2, PixelFormat::RGB8));
    fill(rgb, Eigen::Vector4f(0, 0, 0, 0));
    EXPECT_FALSE(hasTransparency(rgb));
    Surface la(SurfaceDesc(2, 2, PixelFormat::LA8));
    fill(la, Eigen::Vector4f(1, 1, 1, 0));
    EXPECT_FALSE(hasTransparency(la)); // only four-channel formats count

    Surface h(SurfaceDesc(1, 1, PixelFormat::RGBA16F));
    fill(h, Eigen::Vector4f(1, 1, 1, 1));
    EXPECT_EQ(h.pixel<uint16_t>(0, 0)[3], 0x3C00);
}
