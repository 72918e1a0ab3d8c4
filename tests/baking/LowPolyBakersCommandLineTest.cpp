// The three bakers through the real binary on box_low.obj: the files they
// write and what those files hold.

#include "LowPolyBakeTestUtil.h"

#include "common/ProcessRunner.h"
#include "image/DefaultCodecs.h"
#include "image/FileTextureLoader.h"

#include <QDir>

#include <algorithm>
#include <cmath>

using namespace LowPolyTest;
using Ond::Surfaces::PixelFormat;
using Ond::Surfaces::SurfaceSPtr;

namespace {

SurfaceSPtr runAndLoad(const QStringList& options, const QString& file)
{
    Ond::Surfaces::registerDefaultCodecs();
    const QString dir = ZmfTest::makeTempDir();
    QStringList args = options;
    args << ZmfTest::testDataDir() + QStringLiteral("/box_low.obj") << QStringLiteral("--output-path") << dir;
    const ZmfTest::ProcessResult result = ZmfTest::runZmfbaker(args);
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_TRUE(QDir(dir).exists(file)) << QDir(dir).entryList().join(' ').toStdString();
    return Ond::Surfaces::FileTextureLoader::load(dir + '/' + file);
}

} // namespace

TEST(LowPolyBakersCommandLine, PositionOfOneAxisIsAOneChannelMapOfThatAxis)
{
    const SurfaceSPtr map = runAndLoad({QStringLiteral("position"), QStringLiteral("--mode"), QStringLiteral("1"),
                                        QStringLiteral("--axis"), QStringLiteral("2"), QStringLiteral("--output-size"),
                                        QStringLiteral("7,7"), QStringLiteral("--output-format"),
                                        QStringLiteral("tif"), QStringLiteral("--dilation-width"), QStringLiteral("0"),
                                        QStringLiteral("--apply-diffusion"), QStringLiteral("false")},
                                       QStringLiteral("box_low_position.tif"));
    ASSERT_TRUE(map);
    ASSERT_EQ(map->width(), 128u);
    EXPECT_EQ(Ond::Surfaces::channelCount(map->format()), 1u);

    // The cube spans -1 .. 1 on every axis: z maps to (z + 1) / 2.
    const SceneSPtr scene = loadBoxLow();
    ASSERT_TRUE(scene);
    const Mesh::DataSPtr data = firstMeshData(*scene);
    const Vec3Buffer& positions = *data->getPositions();
    int checked = 0;
    float worst = 0.0f;
    for (int y = 0; y < 128; y += 2)
        for (int x = 0; x < 128; x += 2) {
            const UvHit hit = locate(*data, texelUv(x, y, 128, 128));
            if (hit.triangle < 0)
                continue;
            float z = 0.0f;
            for (int k = 0; k < 3; ++k)
                z += hit.weights[k] * positions[hit.corners[k]].z();
            const float got = texel(*map, x, y).x();
            if (got == 0.0f)
                continue; // an island border texel the rasteriser left out
            worst = std::max(worst, std::abs(got - (z + 1.0f) * 0.5f));
            ++checked;
        }
    EXPECT_GT(checked, 1500);
    EXPECT_LT(worst, 1e-3f);
}

TEST(LowPolyBakersCommandLine, WorldNormalsAndDirectionsAreWrittenAsColourMaps)
{
    const SurfaceSPtr normals = runAndLoad({QStringLiteral("normal-world-space"), QStringLiteral("--output-size"),
                                            QStringLiteral("6,6")},
                                           QStringLiteral("box_low_normal-world-space.png"));
    ASSERT_TRUE(normals);
    ASSERT_EQ(normals->width(), 64u);
    EXPECT_GE(Ond::Surfaces::channelCount(normals->format()), 3u);
    // Inside the islands: the file's normals, to the precision of 8 bits.
    const SceneSPtr scene = loadBoxLow();
    ASSERT_TRUE(scene);
    const Mesh::DataSPtr data = firstMeshData(*scene);
    const Vec3Buffer& vertexNormals = *data->getNormals();
    int checked = 0;
    for (int y = 1; y < 63; ++y)
        for (int x = 1; x < 63; ++x) {
            const UvHit hit = locate(*data, texelUv(x, y, 64, 64));
            if (hit.triangle < 0 || locate(*data, texelUv(x - 1, y, 64, 64)).triangle < 0
                || locate(*data, texelUv(x + 1, y, 64, 64)).triangle < 0
                || locate(*data, texelUv(x, y - 1, 64, 64)).triangle < 0
                || locate(*data, texelUv(x, y + 1, 64, 64)).triangle < 0)
                continue;
            Eigen::Vector3f expected = Eigen::Vector3f::Zero();
            for (int k = 0; k < 3; ++k)
                expected += hit.weights[k] * vertexNormals[hit.corners[k]].normalized();
            const Eigen::Vector3f got = (texel(*normals, x, y).head<3>() * 2.0f - Eigen::Vector3f::Ones()).normalized();
            EXPECT_GT(got.dot(expected.normalized()), std::cos(2.0f * float(M_PI) / 180.0f)) << x << "," << y;
            ++checked;
        }
    EXPECT_GT(checked, 1500);

    const SurfaceSPtr directions = runAndLoad({QStringLiteral("world-space-direction"), QStringLiteral("--output-size"),
                                               QStringLiteral("6,6")},
                                              QStringLiteral("box_low_world-space-direction.png"));
    ASSERT_TRUE(directions);
    EXPECT_EQ(directions->width(), 64u);
}
