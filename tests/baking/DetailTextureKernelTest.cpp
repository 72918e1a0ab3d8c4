// Texture transfer: a known gradient read at the hit's UV through the
// bilinear and nearest samplers, and tangent-space normals taken to world
// space on the high mesh's frame.

#include "DetailKernelTestUtil.h"

#include "baking/detail/TextureKernel.h"
#include "baking/detail/TextureNormalKernel.h"
#include "image/IGenericSampler.h"

#include <gtest/gtest.h>

using namespace DetailKernelTest;
using namespace Ond::Surfaces;

namespace {

// 4 by 4 RGBA float: red grows with the column, green with the row from the
// bottom, blue constant.
SurfaceSPtr gradient()
{
    auto s = SurfaceSPtr::create(SurfaceDesc(4, 4, PixelFormat::RGBA32F));
    for (uint32_t y = 0; y < 4; ++y)
        for (uint32_t x = 0; x < 4; ++x)
            s->writePixel(x, 3 - y, Eigen::Vector4f(float(x) / 3.0f, float(y) / 3.0f, 0.5f, 1.0f));
    return s;
}

SurfaceSPtr constant(const Eigen::Vector4f& value)
{
    auto s = SurfaceSPtr::create(SurfaceDesc(2, 2, PixelFormat::RGBA32F));
    for (uint32_t y = 0; y < 2; ++y)
        for (uint32_t x = 0; x < 2; ++x)
            s->writePixel(x, y, value);
    return s;
}

// The unit triangle, UVs equal to its x and y.
std::shared_ptr<GrabbedMesh> uvTriangle()
{
    auto mesh = triangle();
    fill(mesh->uvs, {0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 1.0f});
    return mesh;
}

std::array<float, 4> textureAt(bool bilinear, float u, float v)
{
    auto mesh = uvTriangle();
    EmbreeScene scene(mesh);
    TextureParams params;
    params.sampler.reset(createSampler(gradient(), bilinear));
    DetailBakeJob job;
    job.kind = BakeJobKind::Texture;
    job.params = &params;
    TextureKernel kernel(job, scene);
    // Barycentrics (u, v) on this triangle are the UV itself.
    return accumulate(kernel, hitAt(scene, 0, u, v));
}

} // namespace

TEST(DetailTextureKernels, GradientNearestAndBilinear)
{
    // Texel centres read the texel under both filters.
    for (bool bilinear : {false, true}) {
        const auto centre = textureAt(bilinear, 0.375f, 0.125f);
        EXPECT_NEAR(centre[0], 1.0f / 3.0f, 1e-5f);
        EXPECT_NEAR(centre[1], 0.0f, 1e-5f);
        EXPECT_NEAR(centre[2], 0.5f, 1e-5f);
    }
    // Halfway between columns 1 and 2: nearest takes column 2, bilinear the mean.
    const auto nearest = textureAt(false, 0.5f, 0.375f);
    EXPECT_NEAR(nearest[0], 2.0f / 3.0f, 1e-5f);
    EXPECT_NEAR(nearest[1], 1.0f / 3.0f, 1e-5f);
    const auto linear = textureAt(true, 0.5f, 0.375f);
    EXPECT_NEAR(linear[0], 0.5f, 1e-5f);
    EXPECT_NEAR(linear[1], 1.0f / 3.0f, 1e-5f);
    // A quarter of the way from column 1 to 2.
    EXPECT_NEAR(textureAt(true, 0.4375f, 0.125f)[0], 1.0f / 3.0f + 0.25f / 3.0f, 1e-5f);
    EXPECT_NEAR(textureAt(false, 0.4375f, 0.125f)[0], 1.0f / 3.0f, 1e-5f);
}

TEST(DetailTextureKernels, WithoutSamplerNothingIsAdded)
{
    auto mesh = uvTriangle();
    EmbreeScene scene(mesh);
    DetailBakeJob job;
    TextureKernel kernel(job, scene);
    EXPECT_EQ(accumulate(kernel, hitAt(scene, 0, 0.2f, 0.2f))[0], 0.0f);
}

namespace {

// The unit triangle with frame T = +x, B = `binormalY` * y, N = +z, and a
// normal map holding (0, 0.5, 1) everywhere.
std::array<float, 4> normalAt(bool invertGreen, bool perFragment, float binormalY = 1.0f)
{
    auto mesh = uvTriangle();
    fill(mesh->tangents, {1.0f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f});
    fill(mesh->binormals, {0.0f, binormalY, 0.0f, 0.0f, 0.0f, binormalY, 0.0f, 0.0f, 0.0f, binormalY, 0.0f, 0.0f});
    EmbreeScene scene(mesh);
    TextureNormalParams params;
    params.sampler.reset(createSampler(constant(Eigen::Vector4f(0.5f, 0.75f, 1.0f, 1.0f)), true));
    params.invertGreen = invertGreen;
    params.perFragmentBinormal = perFragment;
    DetailBakeJob job;
    job.kind = BakeJobKind::TextureNormal;
    job.params = &params;
    TextureNormalKernel kernel(job, scene);
    return accumulate(kernel, hitAt(scene, 0, 0.3f, 0.3f));
}

void expectVector(const std::array<float, 4>& acc, float x, float y, float z)
{
    EXPECT_NEAR(acc[0], x, 1e-5f);
    EXPECT_NEAR(acc[1], y, 1e-5f);
    EXPECT_NEAR(acc[2], z, 1e-5f);
}

} // namespace

TEST(DetailTextureKernels, NormalTextureToWorldWithGreenInversion)
{
    expectVector(normalAt(false, false), 0.0f, 0.5f, 1.0f);
    expectVector(normalAt(true, false), 0.0f, -0.5f, 1.0f);
    // Per-fragment binormal N x T = +y agrees with the stored one.
    expectVector(normalAt(false, true), 0.0f, 0.5f, 1.0f);
    expectVector(normalAt(true, true), 0.0f, -0.5f, 1.0f);
    // A mirrored stored binormal (-y) is a flip: green goes down unless inverted.
    expectVector(normalAt(false, false, -1.0f), 0.0f, -0.5f, 1.0f);
    expectVector(normalAt(false, true, -1.0f), 0.0f, -0.5f, 1.0f);
    expectVector(normalAt(true, true, -1.0f), 0.0f, 0.5f, 1.0f);
}
