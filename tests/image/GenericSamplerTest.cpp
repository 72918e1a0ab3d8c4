#include "image/GenericSampler.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Ond::Surfaces;

namespace {

// 4×4 grey ramp: storage row r, column c holds 16 r + c (as a fraction for
// non-byte formats).
SurfaceSPtr ramp(PixelFormat f, int64_t stride = 0)
{
    auto s = SurfaceSPtr::create(SurfaceDesc(4, 4, f, stride));
    for (uint32_t y = 0; y < 4; ++y)
        for (uint32_t x = 0; x < 4; ++x) {
            const float v = float(16 * y + x) / 255.0f;
            s->writePixel(x, y, Eigen::Vector4f(v, v, v, 1.0f - v));
        }
    return s;
}

float at(uint32_t storageRow, uint32_t column) { return float(16 * storageRow + column) / 255.0f; }

} // namespace

TEST(GenericSampler, BottomLeftRepeatAddressing)
{
    for (PixelFormat f : {PixelFormat::L8, PixelFormat::L16, PixelFormat::L16F, PixelFormat::L32F}) {
        std::unique_ptr<IGenericSampler> s(createSampler(ramp(f), false));
        ASSERT_TRUE(s) << pixelFormatName(f);
        const float tol = 1e-3f;
        EXPECT_NEAR(s->sample(0, 0).x(), at(3, 0), tol);   // y = 0 is the last storage row
        EXPECT_NEAR(s->sample(-1, 0).x(), at(3, 3), tol);  // column wraps to 3
        EXPECT_NEAR(s->sample(5, 3).x(), at(0, 1), tol);
        EXPECT_NEAR(s->sample(2, -1).x(), at(0, 2), tol);
        EXPECT_FLOAT_EQ(s->sample(0, 0).w(), 1.0f);        // one channel: alpha 1
        // UV (0.3, 0.8): texel (1, 3) from the bottom, storage row 0.
        EXPECT_NEAR(s->sample(0.3f, 0.8f).y(), at(0, 1), tol);
        EXPECT_NEAR(s->sample(-0.2f, 0.1f).y(), at(3, 3), tol); // floor of -0.8 is -1
    }
}

TEST(GenericSampler, ChannelExpansionAndOrder)
{
    auto la = SurfaceSPtr::create(SurfaceDesc(2, 2, PixelFormat::LA8));
    fill(*la, Eigen::Vector4f(0.2f, 0.2f, 0.2f, 0.6f));
    std::unique_ptr<IGenericSampler> s(createSampler(la, true)); // no bilinear form: nearest
    const Eigen::Vector4f v = s->sample(1, 1);
    EXPECT_NEAR(v.x(), 0.2f, 0.003f);
    EXPECT_EQ(v.x(), v.z());
    EXPECT_NEAR(v.w(), 0.6f, 0.003f);

    for (PixelFormat f : {PixelFormat::BGR8, PixelFormat::BGRA8, PixelFormat::RGB16F, PixelFormat::RGBA16F}) {
        auto c = SurfaceSPtr::create(SurfaceDesc(2, 2, f));
        fill(*c, Eigen::Vector4f(1.0f, 0.5f, 0.0f, 1.0f));
        for (bool bilinear : {false, true}) {
            std::unique_ptr<IGenericSampler> cs(createSampler(c, bilinear));
            const Eigen::Vector4f r = cs->sample(0.3f, 0.7f);
            EXPECT_NEAR(r.x(), 1.0f, 0.003f) << pixelFormatName(f);
            EXPECT_NEAR(r.y(), 0.5f, 0.003f) << pixelFormatName(f);
            EXPECT_NEAR(r.z(), 0.0f, 0.003f) << pixelFormatName(f);
            EXPECT_NEAR(r.w(), 1.0f, 0.003f) << pixelFormatName(f);
        }
    }
}

TEST(GenericSampler, BilinearMixesNeighboursAndWraps)
{
    for (PixelFormat f : {PixelFormat::L8, PixelFormat::L32F, PixelFormat::RGBA8, PixelFormat::RGBA16,
                          PixelFormat::RGBA32F}) {
        auto surface = ramp(f);
        std::unique_ptr<IGenericSampler> s(createSampler(surface, true));
        const float tol = 2e-3f;
        // A texel centre returns the texel.
        EXPECT_NEAR(s->sample(0.125f, 0.125f).x(), at(3, 0), tol) << pixelFormatName(f);
        // Between texel centres (1,0) and (2,0) of the bottom row, and half way up to the next row.
        const float u = 2.0f / 4.0f, v = 1.0f / 4.0f;
        const float expected = 0.25f * (at(3, 1) + at(3, 2) + at(2, 1) + at(2, 2));
        EXPECT_NEAR(s->sample(u, v).x(), expected, tol) << pixelFormatName(f);
        // The corner mixes the four corners of the image.
        const float corner = 0.25f * (at(3, 3) + at(3, 0) + at(0, 3) + at(0, 0));
        EXPECT_NEAR(s->sample(0.0f, 0.0f).x(), corner, tol) << pixelFormatName(f);
        if (channelCount(f) == 4) {
            EXPECT_NEAR(s->sample(u, v).w(), 1.0f - expected, tol) << pixelFormatName(f);
        }
    }
}

TEST(GenericSampler, NegativeStrideReadsLogicalRows)
{
    auto up = ramp(PixelFormat::RGBA32F);
    auto down = ramp(PixelFormat::RGBA32F, -64);
    std::unique_ptr<IGenericSampler> a(createSampler(up, true)), b(createSampler(down, true));
    for (float v : {0.1f, 0.4f, 0.9f})
        EXPECT_FLOAT_EQ(a->sample(0.33f, v).x(), b->sample(0.33f, v).x());
    EXPECT_EQ(createSampler(SurfaceSPtr::create(), true), nullptr);
}
