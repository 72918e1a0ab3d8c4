#include "BoxPairTestUtil.h"

#include "common/ProcessRunner.h"
#include "common/TestPaths.h"
#include "image/DefaultCodecs.h"
#include "image/FileTextureLoader.h"

#include <gtest/gtest.h>

#include <QDir>

namespace BoxPair {

using Ond::Surfaces::PixelFormat;

SurfaceSPtr toRgbaFloat(const SurfaceSPtr& surface)
{
    if (!surface || surface->format() == PixelFormat::RGBA32F)
        return surface;
    auto out = SurfaceSPtr::create();
    Ond::Surfaces::convert(*surface, *out, PixelFormat::RGBA32F);
    return out;
}

SurfaceSPtr loadRgbaFloat(const QString& path)
{
    Ond::Surfaces::registerDefaultCodecs();
    return toRgbaFloat(Ond::Surfaces::FileTextureLoader::load(path));
}

QString testFile(const QString& name)
{
    return ZmfTest::testDataDir() + '/' + name;
}

SurfaceSPtr bakeBoxLow(const QString& baker, const QStringList& options, QString* log)
{
    const QString dir = ZmfTest::makeTempDir();
    QStringList args{baker, testFile(QStringLiteral("box_low.obj"))};
    args << options << QStringLiteral("--output-path") << dir;
    const ZmfTest::ProcessResult result = ZmfTest::runZmfbaker(args);
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    if (log)
        *log = result.out + result.err;
    const QStringList files = QDir(dir).entryList(QDir::Files);
    EXPECT_EQ(files.size(), 1) << files.join(' ').toStdString();
    if (files.size() != 1)
        return {};
    return loadRgbaFloat(dir + '/' + files.front());
}

std::vector<char> referenceIslands()
{
    const SurfaceSPtr mask = loadRgbaFloat(testFile(QStringLiteral("box_1024_mask.png")));
    std::vector<char> inside;
    if (!mask)
        return inside;
    inside.resize(size_t(mask->width()) * mask->height());
    for (unsigned y = 0; y < mask->height(); ++y)
        for (unsigned x = 0; x < mask->width(); ++x)
            inside[size_t(y) * mask->width() + x] = mask->pixel<float>(x, y)[0] > 0.5f;
    return inside;
}

QStringList referenceOptions()
{
    return {QStringLiteral("--output-size"), QStringLiteral("10,10"),
            QStringLiteral("--relative-to-bbox"), QStringLiteral("false"),
            QStringLiteral("--max-frontal"), QStringLiteral("0.1"),
            QStringLiteral("--max-rear"), QStringLiteral("0.1"),
            QStringLiteral("--average-normals"), QStringLiteral("false"),
            QStringLiteral("--ignore-backface"), QStringLiteral("false"),
            QStringLiteral("--dilation-width"), QStringLiteral("0"),
            QStringLiteral("--apply-diffusion"), QStringLiteral("false"),
            QStringLiteral("--output-format"), QStringLiteral("tif")};
}

double Correlation::pearson() const
{
    const double cov = sab / n - (sa / n) * (sb / n);
    return cov / std::sqrt((saa / n - (sa / n) * (sa / n)) * (sbb / n - (sb / n) * (sb / n)));
}

std::vector<char> erode(const std::vector<char>& inside, int w, int h, int radius)
{
    std::vector<char> out(inside.size(), 0);
    for (int y = radius; y < h - radius; ++y)
        for (int x = radius; x < w - radius; ++x) {
            bool all = true;
            for (int dy = -radius; dy <= radius && all; ++dy)
                for (int dx = -radius; dx <= radius && all; ++dx)
                    all = inside[size_t(y + dy) * w + x + dx] != 0;
            out[size_t(y) * w + x] = all;
        }
    return out;
}

} // namespace BoxPair
