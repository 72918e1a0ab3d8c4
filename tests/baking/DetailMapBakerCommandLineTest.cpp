// The detail bakers through the real binary on the reference box pair: the
// normal maps against the independent reference bake, and the mask and
// position maps against what the low mesh alone says.

#include "BoxPairTestUtil.h"

#include "common/ProcessRunner.h"
#include "common/TestPaths.h"

#include <gtest/gtest.h>

#include <QDir>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <iostream>
#include <vector>

using Ond::Surfaces::SurfaceSPtr;

namespace {

QStringList referenceOptions()
{
    return QStringList{QStringLiteral("--highdef-mesh"), BoxPair::testFile(QStringLiteral("box_high.obj"))}
        << BoxPair::referenceOptions();
}

SurfaceSPtr reference(const char* name)
{
    return BoxPair::loadRgbaFloat(BoxPair::testFile(QLatin1String(name)));
}

// Texels of the reference islands at least `radius` from their borders.
std::vector<char> innerTexels(int radius)
{
    return BoxPair::erode(BoxPair::referenceIslands(), 1024, 1024, radius);
}

struct AngleStats
{
    double mean = 0.0;
    double p99 = 0.0;
    size_t count = 0;
};

// Angles in degrees between the decoded normals of two maps; the reference
// carries a bias of 1e-5 in its encoding.
AngleStats compareNormals(const SurfaceSPtr& baked, const SurfaceSPtr& ref, const std::vector<char>& mask)
{
    std::vector<double> angles;
    const unsigned w = ref->width(), h = ref->height();
    for (unsigned y = 0; y < h; ++y)
        for (unsigned x = 0; x < w; ++x) {
            if (!mask[size_t(y) * w + x])
                continue;
            const float* a = baked->pixel<float>(x, y);
            const float* b = ref->pixel<float>(x, y);
            double na[3], nb[3], la = 0.0, lb = 0.0, dot = 0.0;
            for (int c = 0; c < 3; ++c) {
                na[c] = 2.0 * a[c] - 1.0;
                nb[c] = 2.0 * b[c] - 1.0 - 2e-5;
                la += na[c] * na[c];
                lb += nb[c] * nb[c];
                dot += na[c] * nb[c];
            }
            const double cosine = la > 0.0 && lb > 0.0 ? dot / std::sqrt(la * lb) : -1.0;
            angles.push_back(std::acos(std::clamp(cosine, -1.0, 1.0)) * 180.0 / M_PI);
        }
    AngleStats stats;
    stats.count = angles.size();
    if (angles.empty())
        return stats;
    double sum = 0.0;
    for (double a : angles)
        sum += a;
    stats.mean = sum / double(angles.size());
    const size_t at = std::min(angles.size() - 1, size_t(double(angles.size()) * 0.99));
    std::nth_element(angles.begin(), angles.begin() + long(at), angles.end());
    stats.p99 = angles[at];
    return stats;
}

} // namespace

TEST(DetailMapBakerCommandLine, NormalMapsMatchTheReferenceBakeInsideTheIslands)
{
    const SurfaceSPtr mask = reference("box_1024_mask.png");
    const SurfaceSPtr refTangent = reference("box_1024_normal_tangent.png");
    const SurfaceSPtr refObject = reference("box_1024_normal_object.png");
    ASSERT_TRUE(mask && refTangent && refObject);
    const std::vector<char> inner = innerTexels(2);

    QStringList tangentOptions = referenceOptions();
    tangentOptions << QStringLiteral("--normal-format") << QStringLiteral("0");
    const SurfaceSPtr tangent = BoxPair::bakeBoxLow(QStringLiteral("normal-from-mesh"), tangentOptions);
    ASSERT_TRUE(tangent);
    ASSERT_EQ(tangent->width(), 1024u);
    const AngleStats ts = compareNormals(tangent, refTangent, inner);
    std::cout << "tangent-space normals against the reference: mean " << ts.mean << " deg, 99th percentile "
              << ts.p99 << " deg over " << ts.count << " texels" << std::endl;
    EXPECT_GT(ts.count, 500000u);
    EXPECT_LE(ts.mean, 2.0);
    EXPECT_LE(ts.p99, 10.0);

    // One thread bakes the very same map.
    QStringList oneThread = tangentOptions;
    oneThread << QStringLiteral("--threads") << QStringLiteral("1");
    const SurfaceSPtr capped = BoxPair::bakeBoxLow(QStringLiteral("normal-from-mesh"), oneThread);
    ASSERT_TRUE(capped);
    ASSERT_EQ(capped->height(), tangent->height());
    for (unsigned y = 0; y < tangent->height(); ++y)
        ASSERT_EQ(std::memcmp(capped->row(y), tangent->row(y), size_t(tangent->rowBytes())), 0) << "row " << y;

    // DirectX orientation: the same map with green pointing down.
    QStringList directXOptions = referenceOptions();
    directXOptions << QStringLiteral("--normal-format") << QStringLiteral("1");
    const SurfaceSPtr directX = BoxPair::bakeBoxLow(QStringLiteral("normal-from-mesh"), directXOptions);
    ASSERT_TRUE(directX);
    for (unsigned y = 0; y < directX->height(); ++y)
        for (unsigned x = 0; x < directX->width(); ++x)
            directX->pixel<float>(x, y)[1] = 1.0f - directX->pixel<float>(x, y)[1];
    const AngleStats ds = compareNormals(directX, refTangent, inner);
    std::cout << "DirectX tangent-space normals, green turned back: mean " << ds.mean << " deg" << std::endl;
    EXPECT_LE(ds.mean, 2.0);

    QStringList objectOptions = referenceOptions();
    objectOptions << QStringLiteral("--map-type") << QStringLiteral("0");
    const SurfaceSPtr object = BoxPair::bakeBoxLow(QStringLiteral("normal-from-mesh"), objectOptions);
    ASSERT_TRUE(object);
    const AngleStats os = compareNormals(object, refObject, inner);
    std::cout << "object-space normals against the reference: mean " << os.mean << " deg, 99th percentile "
              << os.p99 << " deg over " << os.count << " texels" << std::endl;
    EXPECT_LE(os.mean, 1.5);
}

TEST(DetailMapBakerCommandLine, MaskCoversTheReferenceTexelsAndNothingBeyondTheIslandBorders)
{
    const SurfaceSPtr ref = reference("box_1024_mask.png");
    ASSERT_TRUE(ref);
    const SurfaceSPtr mask = BoxPair::bakeBoxLow(QStringLiteral("opacity-mask-from-mesh"), referenceOptions());
    ASSERT_TRUE(mask);
    ASSERT_EQ(mask->width(), 1024u);
    const std::vector<char> inner = innerTexels(1);
    size_t differing = 0, innerMisses = 0, covered = 0;
    for (unsigned y = 0; y < 1024; ++y)
        for (unsigned x = 0; x < 1024; ++x) {
            const bool ours = mask->pixel<float>(x, y)[0] > 0.5f;
            const bool theirs = ref->pixel<float>(x, y)[0] > 0.5f;
            covered += ours;
            differing += ours != theirs;
            innerMisses += inner[size_t(y) * 1024 + x] && !ours;
        }
    std::cout << "mask: " << covered << " texels covered, " << differing << " differ from the reference" << std::endl;
    // Every ray of the reference found the high mesh, so inside the islands
    // nothing may be missing; only the border rule may differ.
    EXPECT_EQ(innerMisses, 0u);
    EXPECT_LE(differing, 16u);
}

TEST(DetailMapBakerCommandLine, PositionsNormalisedOnTheLowBoxLieOnTheHighSurface)
{
    QStringList options = referenceOptions();
    options << QStringLiteral("--normalization") << QStringLiteral("0") << QStringLiteral("--output-size")
            << QStringLiteral("9,9");
    const SurfaceSPtr map = BoxPair::bakeBoxLow(QStringLiteral("position-from-mesh"), options);
    ASSERT_TRUE(map);
    ASSERT_EQ(map->width(), 512u);
    const SurfaceSPtr ref = reference("box_1024_mask.png");
    ASSERT_TRUE(ref);
    // The low box spans -1 .. 1 on each axis, so a value q is the point
    // 2 q - 1; on the high mesh (bevels, dome and hole included) its largest
    // coordinate lies between 0.9 and 1.07.
    size_t checked = 0, off = 0;
    for (unsigned y = 2; y < 510; ++y)
        for (unsigned x = 2; x < 510; ++x) {
            bool inside = true;
            for (unsigned dy = 0; dy < 2; ++dy)
                for (unsigned dx = 0; dx < 2; ++dx)
                    inside = inside && ref->pixel<float>(2 * x + dx, 2 * y + dy)[0] > 0.5f;
            if (!inside)
                continue;
            const float* q = map->pixel<float>(x, y);
            float largest = 0.0f;
            for (int c = 0; c < 3; ++c)
                largest = std::max(largest, std::fabs(2.0f * q[c] - 1.0f));
            ++checked;
            off += largest < 0.9f || largest > 1.07f;
        }
    EXPECT_GT(checked, 100000u);
    EXPECT_EQ(off, 0u);
}

TEST(DetailMapBakerCommandLine, HeightsRelativeToTheRayDistancesShowDomeAndHole)
{
    QStringList options = referenceOptions();
    options << QStringLiteral("--auto-normalize") << QStringLiteral("0") << QStringLiteral("--output-size")
            << QStringLiteral("9,9");
    const SurfaceSPtr map = BoxPair::bakeBoxLow(QStringLiteral("height-from-mesh"), options);
    ASSERT_TRUE(map);
    ASSERT_EQ(map->width(), 512u);
    const SurfaceSPtr ref = reference("box_1024_mask.png");
    ASSERT_TRUE(ref);
    // Symmetric over a reach of 0.1 each way: h maps to 0.5 + 5 h. The dome
    // stands 0.06 out, the hole goes 0.05 in; apart from the panel, the
    // recess, the grooves and those two, the surface lies within a few
    // thousandths of the low mesh.
    float lowest = 1.0f, highest = 0.0f;
    size_t checked = 0, near = 0;
    for (unsigned y = 0; y < 512; ++y)
        for (unsigned x = 0; x < 512; ++x) {
            if (ref->pixel<float>(2 * x, 2 * y)[0] < 0.5f)
                continue;
            const float v = map->pixel<float>(x, y)[0];
            lowest = std::min(lowest, v);
            highest = std::max(highest, v);
            ++checked;
            near += v > 0.5f - 5.0f * 0.004f && v < 0.5f + 5.0f * 0.006f;
        }
    std::cout << "height: lowest " << (lowest - 0.5f) / 5.0f << ", highest " << (highest - 0.5f) / 5.0f << ", "
              << 100.0 * double(near) / double(checked) << " % near the low surface" << std::endl;
    EXPECT_NEAR((highest - 0.5f) / 5.0f, 0.06f, 0.005f);
    EXPECT_NEAR((lowest - 0.5f) / 5.0f, -0.05f, 0.005f);
    EXPECT_GT(double(near) / double(checked), 0.8);
}

TEST(DetailMapBakerCommandLine, MissingTransferTextureFailsTheBakeWithItsMessage)
{
    const QString dir = ZmfTest::makeTempDir();
    const ZmfTest::ProcessResult result = ZmfTest::runZmfbaker(
        {QStringLiteral("texture-from-mesh"), BoxPair::testFile(QStringLiteral("box_low.obj")),
         QStringLiteral("--highdef-mesh"), BoxPair::testFile(QStringLiteral("box_high.obj")),
         QStringLiteral("--texture-file"), dir + QStringLiteral("/none.png"), QStringLiteral("--output-size"),
         QStringLiteral("5,5"), QStringLiteral("--output-path"), dir});
    EXPECT_TRUE((result.out + result.err).contains(QStringLiteral("Detail texture loading failed")))
        << (result.out + result.err).toStdString();
    EXPECT_TRUE(QDir(dir).entryList(QDir::Files).isEmpty());
}
