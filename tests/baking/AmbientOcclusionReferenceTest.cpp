// Ambient occlusion of the box pair through the real binary, against the
// independent reference bake: the same reach and distribution, fewer rays
// and half the size to keep the suite quick, compared by correlation.

#include "BoxPairTestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iostream>
#include <vector>

using Ond::Surfaces::SurfaceSPtr;

namespace {

// The reference at half size: a texel is covered when its four are, and
// its value is their mean.
struct HalfSize
{
    unsigned size = 0;
    std::vector<char> covered;
    std::vector<double> value;
};

HalfSize halve(const SurfaceSPtr& mask, const SurfaceSPtr& ao)
{
    HalfSize out;
    out.size = mask->width() / 2;
    out.covered.assign(size_t(out.size) * out.size, 0);
    out.value.assign(out.covered.size(), 0.0);
    for (unsigned y = 0; y < out.size; ++y)
        for (unsigned x = 0; x < out.size; ++x) {
            bool all = true;
            double sum = 0.0;
            for (unsigned k = 0; k < 4; ++k) {
                const unsigned sx = 2 * x + (k & 1), sy = 2 * y + (k >> 1);
                all = all && mask->pixel<float>(sx, sy)[0] > 0.5f;
                sum += ao->pixel<float>(sx, sy)[0];
            }
            out.covered[size_t(y) * out.size + x] = all;
            out.value[size_t(y) * out.size + x] = sum / 4.0;
        }
    return out;
}

} // namespace

TEST(AmbientOcclusionReference, BoxOcclusionCorrelatesWithTheReferenceBake)
{
    // The reference's set-up: primary rays from 0.1 in front of the low
    // surface reaching 0.1 behind it, cosine-distributed occlusion rays of
    // reach 0.2 counted without attenuation, back faces occluding. 64 rays
    // at 512 by 512 instead of 256 at 1024 by 1024.
    const QStringList options{QStringLiteral("--highdef-mesh"), BoxPair::testFile(QStringLiteral("box_high.obj")),
                              QStringLiteral("--output-size"), QStringLiteral("9,9"),
                              QStringLiteral("--relative-to-bbox"), QStringLiteral("false"),
                              QStringLiteral("--max-frontal"), QStringLiteral("0.1"),
                              QStringLiteral("--max-rear"), QStringLiteral("0.1"),
                              QStringLiteral("--average-normals"), QStringLiteral("false"),
                              QStringLiteral("--ignore-backface"), QStringLiteral("false"),
                              QStringLiteral("--max-dist-relative-scale"), QStringLiteral("false"),
                              QStringLiteral("--max-dist"), QStringLiteral("0.2"),
                              QStringLiteral("--min-dist"), QStringLiteral("0.0001"),
                              QStringLiteral("--ray-distrib"), QStringLiteral("1"),
                              QStringLiteral("--attenuation"), QStringLiteral("0"),
                              QStringLiteral("--nb-second-rays"), QStringLiteral("64"),
                              QStringLiteral("--dilation-width"), QStringLiteral("0"),
                              QStringLiteral("--apply-diffusion"), QStringLiteral("false"),
                              QStringLiteral("--output-format"), QStringLiteral("tif")};
    const SurfaceSPtr baked = BoxPair::bakeBoxLow(QStringLiteral("ambient-occlusion-from-mesh"), options);
    ASSERT_TRUE(baked);
    ASSERT_EQ(baked->width(), 512u);

    const SurfaceSPtr mask = BoxPair::loadRgbaFloat(BoxPair::testFile(QStringLiteral("box_1024_mask.png")));
    const SurfaceSPtr ref = BoxPair::loadRgbaFloat(BoxPair::testFile(QStringLiteral("box_1024_ao.png")));
    ASSERT_TRUE(mask && ref);
    const HalfSize half = halve(mask, ref);
    const std::vector<char> inner = BoxPair::erode(half.covered, int(half.size), int(half.size), 2);

    BoxPair::Correlation correlation;
    for (unsigned y = 0; y < half.size; ++y)
        for (unsigned x = 0; x < half.size; ++x)
            if (inner[size_t(y) * half.size + x])
                correlation.add(baked->pixel<float>(x, y)[0], half.value[size_t(y) * half.size + x]);
    ASSERT_GT(correlation.n, 100000.0);
    const double pearson = correlation.pearson();
    std::cout << "AO against the reference (512, 64 rays): Pearson " << pearson << " over " << correlation.n
              << " texels, means " << correlation.meanA() << " / " << correlation.meanB() << std::endl;
    EXPECT_GE(pearson, 0.9);
}
