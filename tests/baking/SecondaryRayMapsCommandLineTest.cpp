// Bent normals, thickness and curvature of the box pair through the real
// binary: what the shape says each map must show inside the UV islands.

#include "BoxPairTestUtil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <vector>

using BoxPair::testFile;
using Ond::Surfaces::SurfaceSPtr;

namespace {

QStringList fromHighBox()
{
    return {QStringLiteral("--highdef-mesh"), testFile(QStringLiteral("box_high.obj"))};
}

// The low box as its own high mesh, with the options that name its normal map.
QStringList lowAsHigh(const QStringList& normalMap = {})
{
    return QStringList{QStringLiteral("--use-lowdef-as-highdef"), QStringLiteral("true")} + normalMap;
}

// Bakes one map of box_low at 512 by 512 with few rays; `log` gets what the
// run printed.
SurfaceSPtr bake(const QString& baker, const QStringList& source = fromHighBox(), QString* log = nullptr)
{
    return BoxPair::bakeBoxLow(baker,
                               source
                                   + QStringList{QStringLiteral("--output-size"), QStringLiteral("9,9"),
                                                 QStringLiteral("--nb-second-rays"), QStringLiteral("16"),
                                                 QStringLiteral("--output-format"), QStringLiteral("tif")},
                               log);
}

// Channel c of the texels whose 2x2 reference-mask block and its
// neighbours two texels around are all covered.
std::vector<float> inside(const SurfaceSPtr& map, int c)
{
    const std::vector<char> islands = BoxPair::referenceIslands();
    const int n = int(map->width());
    std::vector<char> covered(size_t(n) * n);
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) {
            bool all = true;
            for (int k = 0; k < 4; ++k)
                all = all && islands[size_t(2 * y + (k >> 1)) * 1024 + 2 * x + (k & 1)];
            covered[size_t(y) * n + x] = all;
        }
    const std::vector<char> inner = BoxPair::erode(covered, n, n, 2);
    std::vector<float> values;
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x)
            if (inner[size_t(y) * n + x])
                values.push_back(map->pixel<float>(x, y)[c]);
    return values;
}

float quantile(std::vector<float> v, double q)
{
    const size_t at = std::min(v.size() - 1, size_t(double(v.size()) * q));
    std::nth_element(v.begin(), v.begin() + long(at), v.end());
    return v[at];
}

} // namespace

TEST(SecondaryRayMapsCommandLine, BoxBentNormalsThicknessAndCurvature)
{
    const SurfaceSPtr bent = bake(QStringLiteral("bent-normal-from-mesh"));
    const SurfaceSPtr thickness = bake(QStringLiteral("thickness-from-mesh"));
    const SurfaceSPtr curvature = bake(QStringLiteral("curvature-from-mesh-v2"));
    ASSERT_TRUE(bent && thickness && curvature);

    const std::vector<float> blue = inside(bent, 2), red = inside(bent, 0);
    const std::vector<float> thick = inside(thickness, 0), curv = inside(curvature, 0);
    ASSERT_GT(blue.size(), 100000u);
    std::cout << "bent blue p05/p50 " << quantile(blue, 0.05) << "/" << quantile(blue, 0.5) << ", red p05/p50/p95 "
              << quantile(red, 0.05) << "/" << quantile(red, 0.5) << "/" << quantile(red, 0.95)
              << "; thickness p01/p50/p99 " << quantile(thick, 0.01) << "/" << quantile(thick, 0.5) << "/"
              << quantile(thick, 0.99) << "; curvature p01/p50/p99 " << quantile(curv, 0.01) << "/"
              << quantile(curv, 0.5) << "/" << quantile(curv, 0.99) << std::endl;

    // A box is open almost everywhere: bent normals stay near the low normal
    // in tangent space, leaning no way in particular.
    EXPECT_GT(quantile(blue, 0.5), 0.95f);
    EXPECT_NEAR(quantile(red, 0.5), 0.5f, 0.02f);
    // Thickness spans its range: open where the far side is out of reach,
    // darker near the bevels and the recesses.
    EXPECT_GE(*std::min_element(thick.begin(), thick.end()), 0.0f);
    EXPECT_LE(*std::max_element(thick.begin(), thick.end()), 1.0f);
    EXPECT_LT(quantile(thick, 0.01), 0.95f);
    // Flat faces sit at the middle grey; the bevels and the dome lift it,
    // the hole, grooves and recess lower it.
    EXPECT_NEAR(quantile(curv, 0.5), 0.5f, 0.01f);
    EXPECT_LT(quantile(curv, 0.01), 0.45f);
    EXPECT_GT(quantile(curv, 0.99), 0.53f);
}

TEST(SecondaryRayMapsCommandLine, LowBoxNormalMapBringsItsDetailIntoOcclusionAndCurvature)
{
    const QStringList tangentMap{QStringLiteral("--normal"), testFile(QStringLiteral("box_1024_normal_tangent.png")),
                                 QStringLiteral("--normal-format"), QStringLiteral("0")};
    const QStringList objectMap{QStringLiteral("--normal"), testFile(QStringLiteral("box_1024_normal_object.png")),
                                QStringLiteral("--normal-world-space"), QStringLiteral("true")};
    const QString ao = QStringLiteral("ambient-occlusion-from-mesh");
    const SurfaceSPtr plain = bake(ao, lowAsHigh());
    const SurfaceSPtr tangent = bake(ao, lowAsHigh(tangentMap));
    const SurfaceSPtr object = bake(ao, lowAsHigh(objectMap));
    QString log;
    const SurfaceSPtr unreadable =
        bake(ao, lowAsHigh({QStringLiteral("--normal"), testFile(QStringLiteral("no_such_map.png"))}), &log);
    ASSERT_TRUE(plain && tangent && object && unreadable);

    const std::vector<float> p = inside(plain, 0), t = inside(tangent, 0), o = inside(object, 0);
    const std::vector<float> u = inside(unreadable, 0);
    ASSERT_EQ(p.size(), t.size());
    double meanGap = 0.0, maxGap = 0.0, unreadableGap = 0.0;
    for (size_t i = 0; i < t.size(); ++i) {
        meanGap += std::fabs(t[i] - o[i]);
        maxGap = std::max(maxGap, double(std::fabs(t[i] - o[i])));
        unreadableGap = std::max(unreadableGap, double(std::fabs(u[i] - p[i])));
    }
    meanGap /= double(t.size());
    std::cout << "occlusion of the low box, p001/p01: alone " << quantile(p, 0.001) << "/" << quantile(p, 0.01)
              << ", tangent map " << quantile(t, 0.001) << "/" << quantile(t, 0.01) << "; tangent against object "
              << "map: mean gap " << meanGap << ", largest " << maxGap << std::endl;

    // A convex box alone is open everywhere; its normal map's panel, hole,
    // dome, grooves and recess tilt the hemisphere and darken the creases.
    EXPECT_GT(quantile(p, 0.01), 0.99f);
    EXPECT_LT(quantile(t, 0.01), 0.95f);
    EXPECT_LT(quantile(t, 0.001), quantile(p, 0.001) - 0.05f);
    // The same detail given in world space leads to the same map.
    EXPECT_LT(meanGap, 0.001);
    EXPECT_LT(maxGap, 0.2);
    // A map that does not load is said, and the bake goes on without it.
    EXPECT_TRUE(log.contains(QStringLiteral("[WARNING][Bakers]Could not load the normal map '")
                             + testFile(QStringLiteral("no_such_map.png")) + QStringLiteral("': the mesh's own normals are used.")))
        << log.toStdString();
    EXPECT_EQ(unreadableGap, 0.0);

    const QString fit = QStringLiteral("curvature-from-mesh-v2");
    const std::vector<float> flat = inside(bake(fit, lowAsHigh()), 0);
    const std::vector<float> detailed = inside(bake(fit, lowAsHigh(tangentMap)), 0);
    std::cout << "surface-fit curvature of the low box, p01/p50/p99: alone " << quantile(flat, 0.01) << "/"
              << quantile(flat, 0.5) << "/" << quantile(flat, 0.99) << ", tangent map " << quantile(detailed, 0.01)
              << "/" << quantile(detailed, 0.5) << "/" << quantile(detailed, 0.99) << std::endl;
    // Without detail nothing inside the faces is concave; the grooves and
    // the hole's rim are.
    EXPECT_GT(quantile(flat, 0.01), 0.49f);
    EXPECT_LT(quantile(detailed, 0.01), 0.45f);
}
