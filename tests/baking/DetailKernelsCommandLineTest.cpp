// Curvature and colour from mesh through the real binary on the reference
// box pair, read inside the low mesh's UV islands.

#include "common/ProcessRunner.h"
#include "common/TestPaths.h"
#include "image/DefaultCodecs.h"
#include "image/FileTextureLoader.h"
#include "image/Surface.h"

#include <gtest/gtest.h>

#include <QDir>

#include <cmath>

using Ond::Surfaces::PixelFormat;
using Ond::Surfaces::SurfaceSPtr;

namespace {

SurfaceSPtr loadRgbaFloat(const QString& path)
{
    Ond::Surfaces::registerDefaultCodecs();
    SurfaceSPtr surface = Ond::Surfaces::FileTextureLoader::load(path);
    if (!surface || surface->format() == PixelFormat::RGBA32F)
        return surface;
    auto out = SurfaceSPtr::create();
    Ond::Surfaces::convert(*surface, *out, PixelFormat::RGBA32F);
    return out;
}

// Bakes box_low against box_high at 1024 by 1024, the size of the reference
// mask, and loads the one map written.
SurfaceSPtr bake(const QString& baker, const QStringList& options = {})
{
    const QString dir = ZmfTest::makeTempDir();
    QStringList args{baker, ZmfTest::testDataDir() + QStringLiteral("/box_low.obj"), QStringLiteral("--highdef-mesh"),
                     ZmfTest::testDataDir() + QStringLiteral("/box_high.obj"), QStringLiteral("--output-size"),
                     QStringLiteral("10,10"), QStringLiteral("--output-format"), QStringLiteral("tif"),
                     QStringLiteral("--output-path"), dir};
    args << options;
    const ZmfTest::ProcessResult result = ZmfTest::runZmfbaker(args);
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    const QStringList files = QDir(dir).entryList(QDir::Files);
    EXPECT_EQ(files.size(), 1) << files.join(' ').toStdString();
    if (files.size() != 1)
        return {};
    return loadRgbaFloat(dir + '/' + files.front());
}

std::vector<char> islands()
{
    const SurfaceSPtr mask = loadRgbaFloat(ZmfTest::testDataDir() + QStringLiteral("/box_1024_mask.png"));
    std::vector<char> inside;
    if (!mask)
        return inside;
    inside.resize(size_t(mask->width()) * mask->height());
    for (unsigned y = 0; y < mask->height(); ++y)
        for (unsigned x = 0; x < mask->width(); ++x)
            inside[size_t(y) * mask->width() + x] = mask->pixel<float>(x, y)[0] > 0.5f;
    return inside;
}

} // namespace

TEST(DetailKernelsCommandLine, CurvatureOfTheBoxIsHalfOnItsFlatFaces)
{
    const SurfaceSPtr map = bake(QStringLiteral("curvature-from-mesh"));
    const std::vector<char> inside = islands();
    ASSERT_TRUE(map);
    ASSERT_EQ(map->width(), 1024u);
    ASSERT_EQ(inside.size(), size_t(1024) * 1024);
    size_t covered = 0, flat = 0, above = 0, below = 0;
    for (unsigned y = 0; y < 1024; ++y)
        for (unsigned x = 0; x < 1024; ++x) {
            if (!inside[size_t(y) * 1024 + x])
                continue;
            const float v = map->pixel<float>(x, y)[0];
            ++covered;
            if (std::abs(v - 0.5f) <= 0.004f)
                ++flat;
            else if (v > 0.5f)
                ++above;
            else
                ++below;
        }
    ASSERT_GT(covered, 0u);
    // The faces of the box are flat (about 55 % of the islands); its
    // bevelled edges, corners and dome bulge more than its grooves sink.
    EXPECT_GT(double(flat) / double(covered), 0.45) << flat << " of " << covered;
    EXPECT_GT(above, below);
}

TEST(DetailKernelsCommandLine, ColorOfTheBoxIsOneColourForItsOnePart)
{
    const SurfaceSPtr map = bake(QStringLiteral("color-from-mesh"));
    const std::vector<char> inside = islands();
    ASSERT_TRUE(map);
    ASSERT_EQ(inside.size(), size_t(map->width()) * map->height());
    const float* first = nullptr;
    size_t covered = 0;
    for (unsigned y = 0; y < map->height(); ++y)
        for (unsigned x = 0; x < map->width(); ++x) {
            if (!inside[size_t(y) * map->width() + x])
                continue;
            const float* px = map->pixel<float>(x, y);
            if (!first)
                first = px;
            ++covered;
            for (int c = 0; c < 3; ++c)
                ASSERT_NEAR(px[c], first[c], 1e-3f) << x << ", " << y;
        }
    ASSERT_GT(covered, 0u);
    // Rays hit: a material's colour, not the black of a miss.
    EXPECT_GT(first[0] + first[1] + first[2], 0.5f);
}
