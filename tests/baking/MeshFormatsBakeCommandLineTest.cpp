// The reference box pair baked from each mesh format the Assimp loader
// reads, against the bake of the same pair from OBJ with the same settings:
// tangent- and object-space normals and occlusion, inside the islands.
// Blender wrote every file from the same OBJ pair; FBX, glTF and COLLADA
// state their units and axes, PLY does not and stays in Blender's Z-up.

#include "BoxPairTestUtil.h"

#include "common/ProcessRunner.h"
#include "common/TestPaths.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTextStream>

#include <Eigen/Core>

#include <assimp/Exporter.hpp>
#include <assimp/Importer.hpp>
#include <assimp/scene.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iostream>
#include <map>
#include <vector>

using Ond::Surfaces::SurfaceSPtr;

namespace {

struct Bake
{
    const char* name;
    QString baker;
    QStringList options;
};

std::vector<Bake> bakes()
{
    return {
        {"tangent-space normals", QStringLiteral("normal-from-mesh"), {QStringLiteral("--normal-format"), QStringLiteral("0")}},
        {"object-space normals", QStringLiteral("normal-from-mesh"), {QStringLiteral("--map-type"), QStringLiteral("0")}},
        {"ambient occlusion", QStringLiteral("ambient-occlusion-from-mesh"),
         {QStringLiteral("--max-dist-relative-scale"), QStringLiteral("false"), QStringLiteral("--max-dist"),
          QStringLiteral("0.2"), QStringLiteral("--min-dist"), QStringLiteral("0.0001"),
          QStringLiteral("--attenuation"), QStringLiteral("0"), QStringLiteral("--nb-second-rays"),
          QStringLiteral("16")}},
    };
}

SurfaceSPtr bake(const Bake& what, const QString& low, const QString& high, QString* log = nullptr)
{
    const QString dir = ZmfTest::makeTempDir();
    QStringList args{what.baker, low, QStringLiteral("--highdef-mesh"), high};
    args << BoxPair::referenceOptions() << what.options << QStringLiteral("--output-path") << dir;
    const ZmfTest::ProcessResult result = ZmfTest::runZmfbaker(args);
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    if (log)
        *log = result.out + result.err;
    const QStringList files = QDir(dir).entryList(QDir::Files);
    EXPECT_EQ(files.size(), 1) << result.err.toStdString();
    if (files.size() != 1)
        return {};
    return BoxPair::loadRgbaFloat(dir + '/' + files.front());
}

using Direction = std::function<Eigen::Vector3d(const Eigen::Vector3d&)>;

struct Difference
{
    double max = 0.0;
    double mean = 0.0;
    // Share of the texels off by more than 1 degree, or 0.1 of occlusion.
    double outliers = 0.0;
    size_t count = 0;
};

// Normals: angle in degrees after `toObj` takes the format's space to the
// OBJ's. Occlusion: the absolute difference of the values.
Difference compare(const SurfaceSPtr& baked, const SurfaceSPtr& objBake, const std::vector<char>& mask,
                   bool normals, const Direction& toObj)
{
    Difference d;
    double sum = 0.0;
    for (unsigned y = 0; y < objBake->height(); ++y)
        for (unsigned x = 0; x < objBake->width(); ++x) {
            if (!mask[size_t(y) * objBake->width() + x])
                continue;
            const float* a = baked->pixel<float>(x, y);
            const float* b = objBake->pixel<float>(x, y);
            double value;
            if (normals) {
                const Eigen::Vector3d na = toObj(Eigen::Vector3d(2.0 * a[0] - 1.0, 2.0 * a[1] - 1.0, 2.0 * a[2] - 1.0));
                const Eigen::Vector3d nb(2.0 * b[0] - 1.0, 2.0 * b[1] - 1.0, 2.0 * b[2] - 1.0);
                const double cosine = na.dot(nb) / std::max(1e-12, na.norm() * nb.norm());
                value = std::acos(std::clamp(cosine, -1.0, 1.0)) * 180.0 / M_PI;
            } else {
                value = std::abs(double(a[0]) - double(b[0]));
            }
            d.max = std::max(d.max, value);
            sum += value;
            d.outliers += value > (normals ? 1.0 : 0.1) ? 1.0 : 0.0;
            ++d.count;
        }
    d.mean = d.count ? sum / double(d.count) : 0.0;
    d.outliers = d.count ? d.outliers / double(d.count) : 0.0;
    return d;
}

Eigen::Vector3d same(const Eigen::Vector3d& n)
{
    return n;
}

// Blender's own axes, as the PLY file holds them: OBJ (x, y, z) = (x, z, -y).
Eigen::Vector3d fromBlenderAxes(const Eigen::Vector3d& n)
{
    return {n.x(), n.z(), -n.y()};
}

QString testFile(const QString& stem, const char* suffix)
{
    return BoxPair::testFile(stem + '.' + QLatin1String(suffix));
}

} // namespace

TEST(MeshFormatsBakeCommandLine, EveryFormatBakesWhatTheObjPairBakes)
{
    const std::vector<char> inner = BoxPair::erode(BoxPair::referenceIslands(), 1024, 1024, 2);
    ASSERT_FALSE(inner.empty());
    struct Limit
    {
        double normalMean, normalOutliers, aoMean, aoOutliers;
    };
    // FBX, glTF and COLLADA hold the OBJ's numbers up to float rounding: a
    // few texels whose ray meets the high mesh right on a sharp edge pick
    // the other side's normal. The PLY files hold Blender's plain vertex
    // normals (the low mesh's weighted normals and the high mesh's split
    // normals are lost), so their bakes differ wherever normals matter.
    // Occlusion rays turn with the mesh's frame, so a rotation of 1e-7
    // already changes which of them escape near the rims.
    const std::map<QString, Limit> limits{{"fbx", {0.01, 1e-4, 0.001, 0.003}},
                                          {"glb", {0.01, 1e-4, 0.001, 0.003}},
                                          {"dae", {0.01, 1e-4, 0.001, 0.003}},
                                          {"ply", {10.0, 1.0, 0.02, 0.05}}};
    for (const Bake& what : bakes()) {
        const SurfaceSPtr objBake = bake(what, testFile("box_low", "obj"), testFile("box_high", "obj"));
        ASSERT_TRUE(objBake);
        const bool normals = what.baker == QLatin1String("normal-from-mesh");
        const bool objectSpace = what.options.contains(QStringLiteral("--map-type"));
        for (const char* suffix : {"fbx", "glb", "dae", "ply"}) {
            const SurfaceSPtr baked = bake(what, testFile("box_low", suffix), testFile("box_high", suffix));
            ASSERT_TRUE(baked) << suffix;
            const bool rotated = objectSpace && QLatin1String(suffix) == QLatin1String("ply");
            const Difference d = compare(baked, objBake, inner, normals, rotated ? fromBlenderAxes : same);
            std::cout << what.name << " from " << suffix << " against OBJ: largest difference " << d.max
                      << (normals ? " deg" : "") << ", mean " << d.mean << ", share above "
                      << (normals ? "1 deg " : "0.1 ") << d.outliers << " over " << d.count << " texels"
                      << std::endl;
            const Limit& limit = limits.at(QLatin1String(suffix));
            EXPECT_GT(d.count, 500000u);
            EXPECT_LE(d.mean, normals ? limit.normalMean : limit.aoMean) << what.name << " " << suffix;
            EXPECT_LE(d.outliers, normals ? limit.normalOutliers : limit.aoOutliers) << what.name << " " << suffix;
        }
    }
}

// The way a user mixes them: the low mesh from FBX, the high one from glTF.
TEST(MeshFormatsBakeCommandLine, LowFromFbxAndHighFromGlbBakeTogether)
{
    const Bake tangent = bakes().front();
    const SurfaceSPtr objBake = bake(tangent, testFile("box_low", "obj"), testFile("box_high", "obj"));
    const SurfaceSPtr mixed = bake(tangent, testFile("box_low", "fbx"), testFile("box_high", "glb"));
    ASSERT_TRUE(objBake && mixed);
    const Difference d =
        compare(mixed, objBake, BoxPair::erode(BoxPair::referenceIslands(), 1024, 1024, 2), true, same);
    std::cout << "FBX low with glTF high against OBJ: largest difference " << d.max << " deg, mean " << d.mean
              << std::endl;
    EXPECT_LE(d.mean, 0.01);
    EXPECT_LE(d.outliers, 1e-4);
}

namespace {

// The OBJ file written again by Assimp's own exporter.
QString exportWithAssimp(const QString& objFile, const char* formatId, const QString& target)
{
    Assimp::Importer importer;
    const aiScene* scene = importer.ReadFile(QFile::encodeName(objFile).constData(), 0);
    EXPECT_TRUE(scene) << importer.GetErrorString();
    if (!scene)
        return {};
    Assimp::Exporter exporter;
    EXPECT_EQ(exporter.Export(scene, formatId, QFile::encodeName(target).constData()), AI_SUCCESS)
        << exporter.GetErrorString();
    return target;
}

// Assimp has no DXF writer: the OBJ's triangles as 3DFACE entities, in
// AutoCAD's Z-up axes, the way a CAD tool writes a mesh.
QString writeDxf(const QString& objFile, const QString& target)
{
    QFile in(objFile);
    EXPECT_TRUE(in.open(QIODevice::ReadOnly | QIODevice::Text));
    std::vector<QStringList> vertices;
    QFile out(target);
    EXPECT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Text));
    QTextStream dxf(&out);
    dxf << "0\nSECTION\n2\nENTITIES\n";
    while (!in.atEnd()) {
        const QString line = QString::fromLatin1(in.readLine()).trimmed();
        const QStringList words = line.split(' ', Qt::SkipEmptyParts);
        if (words.value(0) == QLatin1String("v") && words.size() >= 4) {
            // (x, y, z) with Y up is (x, -z, y) with Z up.
            const QString minusZ = words[3].startsWith('-') ? words[3].mid(1) : '-' + words[3];
            vertices.push_back({words[1], minusZ, words[2]});
        } else if (words.value(0) == QLatin1String("f") && words.size() == 4) {
            dxf << "0\n3DFACE\n8\n0\n";
            for (int corner = 0; corner < 4; ++corner) {
                const QStringList& v = vertices[size_t(words[std::min(corner, 2) + 1].section('/', 0, 0).toInt() - 1)];
                for (int axis = 0; axis < 3; ++axis)
                    dxf << (10 * (axis + 1) + corner) << '\n' << v[axis] << '\n';
            }
        }
    }
    dxf << "0\nENDSEC\n0\nEOF\n";
    return target;
}

} // namespace

// 3DS and DXF: the files Assimp's exporter makes (3DS) or a CAD tool's
// 3DFACE list (DXF, which has no UVs, so it serves as the high mesh). Both
// lack normals: 3DS's come from its smoothing groups, DXF's are computed the
// way the OBJ reader computes missing ones, so they differ from the OBJ's
// own normals along the sharp edges and the bevels.
TEST(MeshFormatsBakeCommandLine, ThreeDsAndDxfFilesLoadAndBake)
{
    const QString dir = ZmfTest::makeTempDir();
    const QString low3ds = exportWithAssimp(testFile("box_low", "obj"), "3ds", dir + "/box_low.3ds");
    const QString high3ds = exportWithAssimp(testFile("box_high", "obj"), "3ds", dir + "/box_high.3ds");
    const QString highDxf = writeDxf(testFile("box_high", "obj"), dir + "/box_high.dxf");
    ASSERT_FALSE(low3ds.isEmpty() || high3ds.isEmpty());

    const ZmfTest::ProcessResult info = ZmfTest::runZmfbaker({"info", low3ds, highDxf, "--hide-location"});
    EXPECT_EQ(info.exitCode, 0);
    EXPECT_TRUE(info.out.contains("Number of triangles: 188")) << info.out.toStdString();
    EXPECT_TRUE(info.out.contains("Number of triangles: 64544")) << info.out.toStdString();
    // The DXF root holds the mesh and gets the file's name.
    EXPECT_TRUE(info.out.contains("Entity \"box_high\":")) << info.out.toStdString();
    EXPECT_TRUE(info.err.isEmpty()) << info.err.toStdString();

    const Bake tangent = bakes().front();
    const std::vector<char> inner = BoxPair::erode(BoxPair::referenceIslands(), 1024, 1024, 2);
    const SurfaceSPtr objBake = bake(tangent, testFile("box_low", "obj"), testFile("box_high", "obj"));
    ASSERT_TRUE(objBake);
    const SurfaceSPtr from3ds = bake(tangent, low3ds, high3ds);
    const SurfaceSPtr fromDxf = bake(tangent, testFile("box_low", "obj"), highDxf);
    ASSERT_TRUE(from3ds && fromDxf);
    const Difference d3ds = compare(from3ds, objBake, inner, true, same);
    const Difference ddxf = compare(fromDxf, objBake, inner, true, same);
    std::cout << "tangent-space normals from 3DS against OBJ: mean " << d3ds.mean << " deg, largest " << d3ds.max
              << " deg" << std::endl;
    std::cout << "tangent-space normals, high mesh from DXF, against OBJ: mean " << ddxf.mean << " deg, largest "
              << ddxf.max << " deg" << std::endl;
    EXPECT_GT(d3ds.count, 500000u);
    EXPECT_LE(d3ds.mean, 5.0);
    EXPECT_LE(ddxf.mean, 5.0);
}
