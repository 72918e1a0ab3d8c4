#include "baking/detail/DetailNormalSampling.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace Ond::Baking;
using namespace Ond::Surfaces;

namespace {

// One triangle whose UVs are its x and y.
std::unique_ptr<GrabbedMesh> unitTriangle(bool withUvs = true)
{
    auto mesh = std::make_unique<GrabbedMesh>();
    mesh->vertexCount = 3;
    mesh->triangleCount = 1;
    mesh->indices.allocate(3);
    mesh->positions.allocate(12);
    mesh->uvs.allocate(withUvs ? 6 : 0);
    const float p[3][2] = {{0, 0}, {1, 0}, {0, 1}};
    for (unsigned i = 0; i < 3; ++i) {
        mesh->indices[i] = i;
        mesh->positions[i * 4 + 0] = p[i][0];
        mesh->positions[i * 4 + 1] = p[i][1];
        mesh->positions[i * 4 + 2] = 0.0f;
        mesh->positions[i * 4 + 3] = 1.0f;
        if (withUvs) {
            mesh->uvs[i * 2 + 0] = p[i][0];
            mesh->uvs[i * 2 + 1] = p[i][1];
        }
    }
    return mesh;
}

// A normal map whose x leans with u by `slope` per unit of u; coverage
// `cover` everywhere.
DetailNormals detailMaps(float slope, float cover)
{
    const unsigned n = 32;
    SurfaceSPtr normals(new Surface(SurfaceDesc(n, n, PixelFormat::RGBA32F)));
    SurfaceSPtr positions(new Surface(SurfaceDesc(n, n, PixelFormat::RGBA32F)));
    for (unsigned y = 0; y < n; ++y)
        for (unsigned x = 0; x < n; ++x) {
            float* c = normals->pixel<float>(x, y);
            c[0] = 0.5f + slope * 0.5f * (float(x) + 0.5f) / float(n);
            c[1] = 0.5f;
            c[2] = 1.0f;
            c[3] = 1.0f;
            float* p = positions->pixel<float>(x, y);
            p[0] = p[1] = p[2] = 0.0f;
            p[3] = cover;
        }
    DetailNormals d;
    d.normals.reset(createSampler(normals, false));
    d.positions.reset(createSampler(positions, false));
    d.width = d.height = n;
    return d;
}

} // namespace

TEST(DetailNormalSamplingTest, NormalFromTheTextureAndCreaseOnlyWhereNormalsConverge)
{
    auto mesh = unitTriangle();
    float n[3];
    float crease = 1.0f;
    // Normals turning towards each other along u: a groove, darkened by
    // 0.2 * 2 + 0.1 * 4 texel steps of the slope.
    const DetailNormals groove = detailMaps(-1.0f, 1.0f);
    ASSERT_TRUE(detailNormalAndCrease(groove, *mesh, 0, 0.25f, 0.25f, n, crease));
    EXPECT_NEAR(crease, -(0.2f * 2.0f + 0.1f * 4.0f) * 0.5f / 32.0f, 1e-5f);
    const float x = -2.0f * 0.5f * 8.5f / 32.0f;
    EXPECT_NEAR(n[0], x / std::sqrt(x * x + 1.0f), 1e-5f);
    EXPECT_NEAR(n[1], 0.0f, 1e-6f);
    // A ridge is left alone.
    const DetailNormals ridge = detailMaps(1.0f, 1.0f);
    ASSERT_TRUE(detailNormalAndCrease(ridge, *mesh, 0, 0.25f, 0.25f, n, crease));
    EXPECT_EQ(crease, 0.0f);
    // Outside the islands the neighbours weigh nothing.
    const DetailNormals uncovered = detailMaps(-1.0f, 0.0f);
    ASSERT_TRUE(detailNormalAndCrease(uncovered, *mesh, 0, 0.25f, 0.25f, n, crease));
    EXPECT_EQ(crease, 0.0f);
    // Without UVs there is nothing to look up: the caller falls back.
    auto bare = unitTriangle(false);
    EXPECT_FALSE(detailNormal(groove, *bare, 0, 0.25f, 0.25f, n));
    EXPECT_FALSE(detailNormalAndCrease(groove, *bare, 0, 0.25f, 0.25f, n, crease));
    EXPECT_EQ(crease, 0.0f);
}
