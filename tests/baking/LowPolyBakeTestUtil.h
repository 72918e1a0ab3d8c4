#pragma once
// Shared by the low-poly baker tests: a context that records what the baker
// asks of it, scenes (box_low.obj and small synthetic ones), a CPU lookup of
// the UV triangle under a texel, and a run inside the GL context.

#include "baking/AbstractBakingContext.h"
#include "baking/PropertyBag.h"
#include "opengl/OglContextData.h"
#include "opengl/QGLManager.h"
#include "scene/graph/MeshDisplayComponent.h"
#include "scene/graph/Scene.h"
#include "scene/load/SceneImporter.h"
#include "scene/obj/OBJSceneLoader.h"

#include "common/TestPaths.h"

#include <Eigen/Geometry>
#include <QPoint>
#include <QSize>
#include <QVariant>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace LowPolyTest {

using namespace Ond::SceneGraph;

class RecordingContext : public Ond::Baking::AbstractBakingContext
{
public:
    std::string tangentPluginName() const override { return "mikktspace"; }
    bool isCancelled() const override { return cancelAfterChecks >= 0 && ++checks > cancelAfterChecks; }
    bool perFragmentBinormal() const override { return perFragment; }
    bool loadSurface(const QString& path, Ond::Surfaces::SurfaceSPtr& result) override
    {
        loadedPaths.push_back(path);
        const auto it = surfaces.find(path);
        if (it == surfaces.end())
            return false;
        result = it->second;
        return true;
    }
    void tileOutput(const Ond::Surfaces::SurfaceSPtr&, int cellX, int cellY, bool) override
    {
        tiles.emplace_back(cellX, cellY);
    }
    void progressBegin(const QString& name) override { progressLabels.push_back(name); }
    void progressValue(double fraction) override { progress.push_back(fraction); }
    void progressEnd() override {}
    void progressText(const QString&) override {}
    bool gpuAllowed() const override { return false; }
    bool forceDxr() const override { return false; }
    bool forceOptix() const override { return false; }

    std::map<QString, Ond::Surfaces::SurfaceSPtr> surfaces;
    std::vector<QString> loadedPaths;
    std::vector<std::pair<int, int>> tiles;
    std::vector<QString> progressLabels;
    std::vector<double> progress;
    // Negative: never cancelled; otherwise cancelled after that many checks.
    int cancelAfterChecks = -1;
    bool perFragment = false;
    mutable int checks = 0;
};

// Runs `function` with the test program's GL context current.
inline void inGL(const std::function<void()>& function)
{
    auto* manager = Ond::OpenGLUtils::QGLManager::instance();
    ASSERT_NE(manager, nullptr);
    ASSERT_FALSE(manager->hasFailed()) << manager->errorText().toStdString();
    manager->runInContext(true, [&](Ond::OglUtils::OglContextData&) {
        function();
        return 0;
    });
}

inline void setProperty(Ond::Baking::PropertyBag& bag, const std::string& id, const QVariant& value)
{
    ASSERT_TRUE(bag.contains(id)) << id;
    Ond::Baking::setPropertyValue(bag, id, value);
}

// A fixture around one low-poly baker: output sides of 2^side and no
// post-process, so that uncovered texels stay empty for the checks.
template <class Baker, int Side>
struct BakerFixture : ::testing::Test
{
    void SetUp() override
    {
        baker.init();
        setProperty(baker.properties(), "Common.OutputSize", QVariant::fromValue(QSize(Side, Side)));
        setProperty(baker.properties(), "Common.DilationWidth", 0);
        setProperty(baker.properties(), "Common.ApplyDiffusion", false);
    }

    Ond::Surfaces::SurfaceSPtr bake(const SceneSPtr& scene)
    {
        Ond::Surfaces::SurfaceSPtr result;
        inGL([&] { result = baker.process(context, scene); });
        return result;
    }

    Baker baker;
    RecordingContext context;
};

// Marks every part selected, as the bake run does for an empty selection.
inline void selectAll(const Scene& scene, bool selected = true)
{
    scene.forAllMeshes([selected](const Mesh::SPtr& mesh) {
        const Mesh::DataSPtr data = mesh->getData();
        for (size_t i = 0; i < data->getSubMeshCount(); ++i)
            data->getSubMesh(i)->renderFlags.set(SelectedRenderFlag, selected);
        return true;
    });
}

inline SceneSPtr loadBoxLow()
{
    Ond::SceneLoad::OBJSceneLoader loader;
    std::unique_ptr<Ond::SceneLoad::SceneImporter> importer(
        loader.createImporter(ZmfTest::testDataDir() + QStringLiteral("/box_low.obj"), "obj"));
    if (!importer)
        return nullptr;
    SceneSPtr scene(importer->import(Ond::SceneLoad::SceneLoadOptions(Ond::SceneLoad::AllLoadFlags), nullptr));
    if (scene)
        selectAll(*scene);
    return scene;
}

// The first mesh's data of a scene.
inline Mesh::DataSPtr firstMeshData(const Scene& scene)
{
    Mesh::DataSPtr data;
    scene.forAllMeshes([&data](const Mesh::SPtr& mesh) {
        data = mesh->getData();
        return false;
    });
    return data;
}

struct Vertex
{
    Eigen::Vector3f position;
    Eigen::Vector2f uv;
    Eigen::Vector3f normal;
    Eigen::Vector3f tangent;
    Eigen::Vector3f binormal;
};

// One mesh entity of triangles, selected unless told otherwise.
inline SceneSPtr makeScene(const std::vector<Vertex>& vertices, std::vector<uint32_t> indices, bool selected = true)
{
    std::vector<Eigen::Vector3f> p, n, t, b;
    std::vector<Eigen::Vector2f> uv;
    for (const Vertex& v : vertices) {
        p.push_back(v.position);
        n.push_back(v.normal);
        t.push_back(v.tangent);
        b.push_back(v.binormal);
        uv.push_back(v.uv);
    }
    std::vector<Vec2BufferUPtr> uvSets;
    uvSets.push_back(makeBuffer(std::move(uv)));
    std::vector<SubMesh> subs;
    subs.emplace_back(makeBuffer(std::move(indices)), PrimitiveType::Triangles, 3, nullptr,
                      DefaultRenderFlags | (selected ? SelectedRenderFlag : 0));
    auto data = std::make_shared<Mesh::Data>(makeBuffer(std::move(p)), makeBuffer(std::move(n)),
                                             makeBuffer(std::move(t)), makeBuffer(std::move(b)), nullptr,
                                             std::move(uvSets), std::move(subs));
    auto scene = std::make_shared<Scene>();
    scene->addEntity(std::make_shared<Entity>(QStringLiteral("part"), nullptr,
                                              std::make_unique<MeshDisplayComponent>(
                                                  std::make_shared<Mesh>(data, QStringLiteral("part")))));
    return scene;
}

// A unit quad covering UV 0..1 (shifted by uvOffset), lying in the plane
// spanned by `tangent` and `binormal` with the given frame at every corner.
inline SceneSPtr makeQuad(const Eigen::Vector3f& normal, const Eigen::Vector3f& tangent,
                          const Eigen::Vector3f& binormal, Eigen::Vector2f uvOffset = Eigen::Vector2f::Zero(),
                          bool selected = true)
{
    std::vector<Vertex> v;
    for (int i = 0; i < 4; ++i) {
        const float u = float(i & 1), w = float(i >> 1);
        v.push_back({tangent * u + binormal * w, Eigen::Vector2f(u, w) + uvOffset, normal, tangent, binormal});
    }
    return makeScene(v, {0, 1, 3, 0, 3, 2}, selected);
}

// The triangle of a UV set that holds a point, with barycentric weights.
struct UvHit
{
    int triangle = -1;
    Eigen::Vector3f weights = Eigen::Vector3f::Zero();
    uint32_t corners[3] = {0, 0, 0};
};

inline UvHit locate(const Mesh::Data& data, const Eigen::Vector2f& uv)
{
    UvHit hit;
    const Vec2Buffer& uvs = *data.getUvSet(0);
    int triangle = 0;
    for (const SubMesh& sub : data.getSubMeshes()) {
        for (size_t i = 0; i + 2 < sub.indices->size(); i += 3, ++triangle) {
            const uint32_t a = (*sub.indices)[i], b = (*sub.indices)[i + 1], c = (*sub.indices)[i + 2];
            const Eigen::Vector2f e0 = uvs[b] - uvs[a], e1 = uvs[c] - uvs[a], d = uv - uvs[a];
            const float det = e0.x() * e1.y() - e0.y() * e1.x();
            if (std::abs(det) < 1e-12f)
                continue;
            const float w1 = (d.x() * e1.y() - d.y() * e1.x()) / det;
            const float w2 = (e0.x() * d.y() - e0.y() * d.x()) / det;
            const float w0 = 1.0f - w1 - w2;
            if (w0 >= 0 && w1 >= 0 && w2 >= 0) {
                hit.triangle = triangle;
                hit.weights = {w0, w1, w2};
                hit.corners[0] = a;
                hit.corners[1] = b;
                hit.corners[2] = c;
            }
        }
    }
    return hit;
}

// UV of the centre of texel (x, y) of a map whose row 0 is the top.
inline Eigen::Vector2f texelUv(int x, int y, int width, int height)
{
    return {(float(x) + 0.5f) / float(width), 1.0f - (float(y) + 0.5f) / float(height)};
}

inline Eigen::Vector4f texel(const Ond::Surfaces::Surface& s, int x, int y)
{
    return s.readPixel(uint32_t(x), uint32_t(y));
}

} // namespace LowPolyTest
