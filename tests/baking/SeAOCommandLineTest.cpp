// ambient-occlusion through the real binary on the box pair's low mesh and
// its normal map: how it follows the ray-traced occlusion of the same low
// mesh, what quality changes, and the words for bad settings.

#include "BoxPairTestUtil.h"

#include "common/ProcessRunner.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iostream>

using Ond::Surfaces::SurfaceSPtr;

namespace {

// Options both bakers share: the reference's tangent-space normal map
// (OpenGL convention), no post-process, float output.
QStringList withNormalMap(const QString& log2Size, QStringList options = {})
{
    options << QStringLiteral("--normal") << BoxPair::testFile(QStringLiteral("box_1024_normal_tangent.png"))
            << QStringLiteral("--normal-format") << QStringLiteral("0") << QStringLiteral("--output-size")
            << log2Size + ',' + log2Size << QStringLiteral("--dilation-width") << QStringLiteral("0")
            << QStringLiteral("--apply-diffusion") << QStringLiteral("false") << QStringLiteral("--output-format")
            << QStringLiteral("tif");
    return options;
}

// Texels of a map of `size` inside the reference islands, two texels in.
std::vector<char> innerTexels(unsigned size)
{
    const std::vector<char> full = BoxPair::referenceIslands();
    const unsigned step = 1024 / size;
    std::vector<char> inside(size_t(size) * size, 0);
    for (unsigned y = 0; y < size; ++y)
        for (unsigned x = 0; x < size; ++x) {
            bool all = true;
            for (unsigned k = 0; k < step * step; ++k)
                all = all && full[size_t(y * step + k / step) * 1024 + x * step + k % step];
            inside[size_t(y) * size + x] = all;
        }
    return BoxPair::erode(inside, int(size), int(size), 2);
}

double pearson(const SurfaceSPtr& a, const SurfaceSPtr& b, const std::vector<char>& inside, double* count)
{
    BoxPair::Correlation correlation;
    for (unsigned y = 0; y < a->height(); ++y)
        for (unsigned x = 0; x < a->width(); ++x)
            if (inside[size_t(y) * a->width() + x])
                correlation.add(a->pixel<float>(x, y)[0], b->pixel<float>(x, y)[0]);
    *count = correlation.n;
    return correlation.pearson();
}

} // namespace

TEST(SeAOCommandLine, FollowsTheRayTracedOcclusionOfTheLowMeshWithItsNormalMap)
{
    const SurfaceSPtr seao = BoxPair::bakeBoxLow(QStringLiteral("ambient-occlusion"),
                                                 withNormalMap(QStringLiteral("10"), {QStringLiteral("--details"),
                                                                                      QStringLiteral("0.4"),
                                                                                      QStringLiteral("--quality"),
                                                                                      QStringLiteral("2")}));
    const SurfaceSPtr rays = BoxPair::bakeBoxLow(
        QStringLiteral("ambient-occlusion-from-mesh"),
        withNormalMap(QStringLiteral("10"), {QStringLiteral("--use-lowdef-as-highdef"), QStringLiteral("true"),
                                             QStringLiteral("--nb-second-rays"), QStringLiteral("256")}));
    ASSERT_TRUE(seao && rays);
    ASSERT_EQ(seao->width(), 1024u);
    double n = 0;
    const double r = pearson(seao, rays, innerTexels(1024), &n);
    std::cout << "ambient-occlusion against ambient-occlusion-from-mesh of the low mesh (1024, normal map): Pearson "
              << r << " over " << n << " texels" << std::endl;
    EXPECT_GT(n, 500000.0);
    // The rays also darken the creases of the normal map, which no disc
    // sees: the two agree on the slopes, not there.
    EXPECT_GE(r, 0.8);
}

TEST(SeAOCommandLine, QualityChangesTheMapLessThanTheOcclusionItself)
{
    const SurfaceSPtr low = BoxPair::bakeBoxLow(QStringLiteral("ambient-occlusion"),
                                                withNormalMap(QStringLiteral("9"), {QStringLiteral("--quality"),
                                                                                    QStringLiteral("0")}));
    const SurfaceSPtr high = BoxPair::bakeBoxLow(QStringLiteral("ambient-occlusion"),
                                                 withNormalMap(QStringLiteral("9"), {QStringLiteral("--quality"),
                                                                                     QStringLiteral("3")}));
    ASSERT_TRUE(low && high);
    const std::vector<char> inside = innerTexels(512);
    double qualityGap = 0, occlusion = 0, n = 0;
    for (unsigned y = 0; y < 512; ++y)
        for (unsigned x = 0; x < 512; ++x) {
            if (!inside[size_t(y) * 512 + x])
                continue;
            const double a = low->pixel<float>(x, y)[0], b = high->pixel<float>(x, y)[0];
            qualityGap += std::abs(a - b);
            occlusion += 1.0 - a;
            n += 1;
        }
    std::cout << "mean |quality 0 - quality 3| " << qualityGap / n << ", mean occlusion of quality 0 "
              << occlusion / n << std::endl;
    EXPECT_GT(occlusion, 0.0);
    EXPECT_LT(qualityGap, occlusion);
}

TEST(SeAOCommandLine, BadSettingsAreRefusedInTheParsersWords)
{
    const QString mesh = BoxPair::testFile(QStringLiteral("box_low.obj"));
    const struct
    {
        const char* option;
        const char* value;
        const char* type;
    } cases[] = {{"quality", "high", "int"},
                 {"spread", "far", "double"},
                 {"details", "1,2", "double"},
                 {"normal-invert", "maybe", "bool"},
                 {"use-neighbors", "2", "bool"}};
    for (const auto& c : cases) {
        const ZmfTest::ProcessResult r = ZmfTest::runZmfbaker(
            {QStringLiteral("ambient-occlusion"), mesh, QStringLiteral("--") + c.option, QString::fromLatin1(c.value)});
        EXPECT_EQ(r.exitCode, 1) << c.option;
        EXPECT_TRUE(r.err.contains(QStringLiteral("[ERROR][CLIParser]Option %1 expected a value of type %2, but "
                                                  "received non-convertible \"%3\".")
                                       .arg(QString::fromLatin1(c.option), QString::fromLatin1(c.type),
                                            QString::fromLatin1(c.value))))
            << r.err.toStdString();
    }
}
