// The shipped tangent frames against an independent MikkTSpace: box_low.obj
// loaded by the OBJ importer and post-processed as a bake command does
// (deindex, plugin, reindex), compared corner by corner with the reference
// frames of box_low_tangents.csv.

#include "common/TestPaths.h"
#include "scene/graph/Mesh.h"
#include "scene/load/SceneLoaderMgr.h"
#include "scene/load/UrlSceneHandler.h"
#include "scene/processing/TangentSpaceGenerator.h"

#include <QFile>
#include <QUrl>

#include <Eigen/Geometry>

#include <gtest/gtest.h>

#include <cmath>
#include <iostream>

using namespace Ond::SceneGraph;
using namespace Ond::SceneGraph::MeshProcessing;

namespace {

struct ReferenceCorner
{
    int face, corner;
    Eigen::Vector3f position, normal;
    Eigen::Vector2f uv;
    Eigen::Vector3f tangent;
    float sign;
};

std::vector<ReferenceCorner> readReference()
{
    std::vector<ReferenceCorner> rows;
    QFile file(ZmfTest::testDataDir() + QStringLiteral("/box_low_tangents.csv"));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return rows;
    file.readLine(); // header
    while (!file.atEnd()) {
        const QList<QByteArray> f = file.readLine().trimmed().split(',');
        if (f.size() != 14)
            continue;
        auto v = [&](int i) { return f[i].toFloat(); };
        rows.push_back({f[0].toInt(), f[1].toInt(), {v(2), v(3), v(4)}, {v(5), v(6), v(7)}, {v(8), v(9)},
                        {v(10), v(11), v(12)}, v(13)});
    }
    return rows;
}

Mesh::DataSPtr loadBox(const TangentSpaceGenerator::SPtr& generator)
{
    const QString path = ZmfTest::testDataDir() + QStringLiteral("/box_low.obj");
    Ond::SceneLoad::UrlSceneHandler handler(QUrl::fromLocalFile(path));
    auto loaders = Ond::SceneLoad::createSceneLoaderMgr();
    const auto scene = handler.load(Ond::SceneLoad::SceneLoadOptions(Ond::SceneLoad::BakeLoadFlags, generator),
                                    loaders.get(), nullptr);
    if (!scene)
        return nullptr;
    const auto meshes = scene->getMeshes();
    return meshes.size() == 1 ? meshes.front()->getData() : nullptr;
}

struct Agreement
{
    size_t corners = 0, within = 0, signsAgree = 0;
    float maxError = 0.0f;
};

// Every reference corner is looked up through the index of its face and
// corner, so the comparison also checks that faces keep their file order.
Agreement compare(const Mesh::Data& data, const std::vector<ReferenceCorner>& reference)
{
    Agreement a;
    const SubMesh* subMesh = data.getSubMesh(0);
    const auto& positions = *data.getPositions();
    const auto& normals = *data.getNormals();
    const auto& tangents = *data.getTangents();
    const auto& binormals = *data.getBinormals();
    for (const ReferenceCorner& r : reference) {
        const uint32_t v = (*subMesh->indices)[size_t(r.face) * 3 + size_t(r.corner)];
        EXPECT_LT((positions[v] - r.position).cwiseAbs().maxCoeff(), 1e-5f) << "face " << r.face;
        const float error = (tangents[v] - r.tangent).cwiseAbs().maxCoeff();
        a.maxError = std::max(a.maxError, error);
        a.within += error <= 1e-3f ? 1 : 0;
        const float sign = binormals[v].dot(normals[v].cross(tangents[v])) < 0.0f ? -1.0f : 1.0f;
        a.signsAgree += sign == r.sign ? 1 : 0;
        ++a.corners;
    }
    return a;
}

} // namespace

TEST(MikkTSpaceAccuracy, BoxLowMatchesIndependentReference)
{
    const auto reference = readReference();
    ASSERT_EQ(reference.size(), 564u);

    const auto generator = std::make_shared<TangentSpaceGenerator>(
        ZmfTest::buildDir() + QStringLiteral("/plugins/tangentspace/mikktspace.so"));
    ASSERT_TRUE(generator->isValid());
    const auto data = loadBox(generator);
    ASSERT_NE(data, nullptr);
    ASSERT_EQ(data->getSubMeshCount(), 1u);
    ASSERT_EQ(data->getSubMesh(0)->indices->size(), 564u);
    ASSERT_NE(data->getTangents(), nullptr);
    ASSERT_NE(data->getBinormals(), nullptr);
    // Reindexing merged the deindexed corners back into shared vertices.
    EXPECT_LT(data->getVertexCount(), 564u);

    const Agreement a = compare(*data, reference);
    const double within = 100.0 * double(a.within) / double(a.corners);
    std::cout << "[ figures  ] mikktspace on box_low: max tangent error " << a.maxError << ", " << within
              << " % of " << a.corners << " corners within 1e-3, signs agree on " << a.signsAgree << "/"
              << a.corners << std::endl;
    RecordProperty("maxTangentError", std::to_string(a.maxError));
    EXPECT_GE(within, 99.9);
    EXPECT_EQ(a.signsAgree, a.corners);
}

TEST(MikkTSpaceAccuracy, VariantsAgreeWhereTheirConventionsDoNotDiffer)
{
    // The box has no near-coincident corners and no mirrored UVs, so all
    // three plugins give the same frames.
    const auto reference = readReference();
    ASSERT_FALSE(reference.empty());
    for (const char* name : {"unitytspace", "mikkunrealtspace"}) {
        SCOPED_TRACE(name);
        const auto generator = std::make_shared<TangentSpaceGenerator>(
            ZmfTest::buildDir() + QStringLiteral("/plugins/tangentspace/%1.so").arg(QLatin1String(name)));
        ASSERT_TRUE(generator->isValid());
        const auto data = loadBox(generator);
        ASSERT_NE(data, nullptr);
        const Agreement a = compare(*data, reference);
        EXPECT_EQ(a.within, a.corners);
        EXPECT_EQ(a.signsAgree, a.corners);
    }
}
