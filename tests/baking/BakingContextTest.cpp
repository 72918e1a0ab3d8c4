// The context the commands hand to bakers: conversion of scenes into mesh
// records, scene and image loading, cancellation from handlers and jobs.

#include "baking/BakingContext.h"
#include "baking/SceneConverterVisitor.h"

#include "common/TestPaths.h"
#include "image/RawSurfaceCodec.h"
#include "scene/graph/Entity.h"
#include "scene/graph/MaterialDefinition.h"
#include "scene/graph/MeshDisplayComponent.h"
#include "scene/graph/MurmurHash3.h"
#include "scene/load/SceneMgr.h"

#include <QFile>

#include <gtest/gtest.h>

#include <cstring>

using namespace Ond::SceneGraph;
using namespace Vrn::Baking;

namespace {

Mesh::DataSPtr meshData(size_t vertices, size_t uvSets, int flags, std::shared_ptr<MaterialDefinition> material)
{
    std::vector<Vec2BufferUPtr> uvs;
    for (size_t i = 0; i < uvSets; ++i)
        uvs.push_back(std::make_unique<VectorBinaryBuffer<Eigen::Vector2f>>(
            std::vector<Eigen::Vector2f>(vertices, Eigen::Vector2f(float(i), 0.f))));
    std::vector<SubMesh> subMeshes;
    subMeshes.emplace_back(std::make_unique<VectorBinaryBuffer<uint32_t>>(std::vector<uint32_t>{0, 1, 2}),
                           PrimitiveType::Triangles, 3, std::move(material), flags);
    return std::make_shared<Mesh::Data>(
        std::make_unique<VectorBinaryBuffer<Eigen::Vector3f>>(std::vector<Eigen::Vector3f>(vertices)),
        std::make_unique<VectorBinaryBuffer<Eigen::Vector3f>>(std::vector<Eigen::Vector3f>(vertices)), nullptr,
        nullptr, nullptr, std::move(uvs), std::move(subMeshes));
}

void addPart(Scene& scene, const QString& name, Mesh::DataSPtr data, const Eigen::Matrix4f& transform)
{
    auto location = std::make_unique<LocationComponent>();
    location->setLocalTransform(transform);
    scene.addEntity(std::make_shared<Entity>(name, std::move(location),
                                             std::make_unique<MeshDisplayComponent>(std::make_shared<Mesh>(data, name))));
}

struct Handler : TaskHandler
{
    void begin(const QString& name) override { calls << QStringLiteral("begin ") + name; }
    void setValue(double v) override { calls << QStringLiteral("value %1").arg(v); }
    void end() override { calls << QStringLiteral("end"); }
    void setText(const QString& text) override { calls << QStringLiteral("text ") + text; }
    bool isCancelled() const override { return cancelled; }
    QStringList calls;
    bool cancelled = false;
};

std::shared_ptr<Ond::SceneLoad::SceneMgr> sceneMgr()
{
    return std::make_shared<Ond::SceneLoad::SceneMgr>(Ond::SceneLoad::createSceneLoaderMgr(),
                                                      Ond::SceneLoad::createSceneExporterMgr());
}

} // namespace

TEST(SceneConverterVisitor, RecordsOfEachPart)
{
    Scene scene;
    auto red = std::make_shared<UserMaterialDefinition>(QStringLiteral("red"));
    red->color = Eigen::Vector4f(1, 0, 0, 0.5f);
    Eigen::Matrix4f moved = Eigen::Matrix4f::Identity();
    moved(0, 3) = 2.f;
    const auto first = meshData(3, 9, DefaultRenderFlags | SelectedRenderFlag, red);
    addPart(scene, QStringLiteral("first"), first, moved);
    addPart(scene, QStringLiteral("empty"), meshData(0, 1, DefaultRenderFlags, nullptr), Eigen::Matrix4f::Identity());
    addPart(scene, QStringLiteral("second"), meshData(3, 0, 0, nullptr), Eigen::Matrix4f::Identity());

    SceneConverterVisitor visitor;
    scene.accept(visitor);
    const ConvertedMeshList& meshes = visitor.meshes();
    ASSERT_EQ(meshes.size(), 2u);

    const ConvertedMesh& a = meshes[0];
    EXPECT_EQ(a.name, QStringLiteral("first"));
    EXPECT_EQ(a.index, QStringLiteral("0"));
    EXPECT_EQ(a.selectionBits, 3u);
    EXPECT_EQ(a.color, Eigen::Vector4f(1, 0, 0, 0.5f));
    EXPECT_EQ(a.transform, moved);
    const QByteArray revision = QByteArray::number(qulonglong(first->getRevision()));
    EXPECT_EQ(a.identity, murmurHash3_x86_32(revision.constData(), size_t(revision.size()), 0));
    // Positions and normals, then eight of the nine UV sets.
    ASSERT_EQ(a.attributes.size(), 10u);
    EXPECT_EQ(a.attributes[0].semantic, PositionAttribute);
    EXPECT_EQ(a.attributes[1].semantic, NormalAttribute);
    EXPECT_FALSE(a.attribute(TangentAttribute));
    ASSERT_TRUE(a.attribute(13));
    EXPECT_EQ(a.attribute(13)->components, 2);
    EXPECT_EQ(a.attribute(13)->values[0], 7.f);
    EXPECT_FALSE(a.attribute(14));

    const ConvertedMesh& b = meshes[1];
    EXPECT_EQ(b.name, QStringLiteral("second"));
    EXPECT_EQ(b.index, QStringLiteral("1"));
    EXPECT_EQ(b.selectionBits, 0u);
    EXPECT_EQ(b.color, MaterialDefinition::defaultColor());
    EXPECT_EQ(b.attributes.size(), 2u);
}

TEST(BakingContext, LoadsScenesAndKeepsTheirRecords)
{
    BakingContext context(sceneMgr());
    const QString path = ZmfTest::testDataDir() + QStringLiteral("/box_low.obj");
    const SceneSPtr scene = context.loadSceneFile(path, 63);
    ASSERT_TRUE(scene);
    const auto records = context.convertedMeshes(scene);
    ASSERT_TRUE(records);
    ASSERT_EQ(records->size(), 1u);
    EXPECT_EQ((*records)[0].attribute(PositionAttribute)->count, scene->getMeshes()[0]->getData()->getPositions()->size());
    EXPECT_EQ((*records)[0].name, QStringLiteral("box_low"));
    EXPECT_TRUE((*records)[0].attribute(FirstUvSetAttribute));

    // The same file as a URL, loaded afresh with other flags: no UV sets.
    const SceneSPtr bare = context.loadSceneFile(QStringLiteral("file://") + path, 1);
    ASSERT_TRUE(bare);
    EXPECT_NE(bare, scene);
    EXPECT_FALSE(context.convertedMeshes(bare)->front().attribute(FirstUvSetAttribute));

    // A changed scene has no records until converted again.
    scene->addEntity(std::make_shared<Entity>(QStringLiteral("extra")));
    EXPECT_FALSE(context.convertedMeshes(scene));
    context.convertScene(scene);
    EXPECT_TRUE(context.convertedMeshes(scene));

    EXPECT_FALSE(context.loadSceneFile(path + QStringLiteral(".missing"), 63));
    EXPECT_FALSE(BakingContext(nullptr).loadSceneFile(path, 63));
}

TEST(BakingContext, LoadsSurfacesByTheirSuffix)
{
    const QString dir = ZmfTest::makeTempDir();
    auto surface = Ond::Surfaces::SurfaceSPtr::create(Ond::Surfaces::SurfaceDesc(2, 3, Ond::Surfaces::PixelFormat::L8));
    std::memset(surface->row(0), 7, 2);
    std::memset(surface->row(1), 8, 2);
    std::memset(surface->row(2), 9, 2);
    {
        QFile file(dir + QStringLiteral("/s.surface"));
        Ond::Surfaces::RawSurfaceCodec codec(&file, "surface");
        ASSERT_TRUE(codec.write(surface));
    }
    BakingContext context(nullptr);
    Ond::Surfaces::SurfaceSPtr loaded;
    ASSERT_TRUE(context.loadSurface(dir + QStringLiteral("/s.surface"), loaded));
    EXPECT_EQ(loaded->width(), 2u);
    EXPECT_EQ(loaded->height(), 3u);
    EXPECT_EQ(*loaded->pixel<uint8_t>(1, 2), 9);

    EXPECT_FALSE(context.loadSurface(dir + QStringLiteral("/missing.surface"), loaded));
    EXPECT_TRUE(loaded.isNull());
    EXPECT_FALSE(context.loadSurface(dir + QStringLiteral("/s.unknownsuffix"), loaded));
}

TEST(BakingContext, CancellationAndProgress)
{
    BakingContext context(nullptr);
    EXPECT_FALSE(context.isCancelled());
    // Nothing installed: progress goes nowhere, quietly.
    context.progressBegin(QStringLiteral("x"));
    context.progressText();

    auto first = std::make_shared<Handler>();
    auto second = std::make_shared<Handler>();
    context.setTaskHandler(0, first);
    context.setTaskHandler(1, second);
    context.progressBegin(QStringLiteral("Height from mesh"));
    context.progressValue(0.5);
    context.progressText();
    context.progressEnd();
    EXPECT_EQ(first->calls, (QStringList{QStringLiteral("begin Height from mesh"), QStringLiteral("value 0.5"),
                                         QStringLiteral("text "), QStringLiteral("end")}));
    EXPECT_TRUE(second->calls.isEmpty());
    second->cancelled = true;
    EXPECT_TRUE(context.isCancelled());
    second->cancelled = false;

    auto job = std::make_shared<BakingJob>();
    auto other = std::make_shared<BakingJob>();
    context.addJob(job);
    context.addJob(other);
    EXPECT_FALSE(context.isCancelled());
    other->cancel();
    EXPECT_TRUE(context.isCancelled());
    // A job that ended no longer counts, cancelled or not.
    other.reset();
    EXPECT_FALSE(context.isCancelled());
}

TEST(BakingContext, TileOutputGoesToTheProviderIfAny)
{
    BakingContext context(nullptr);
    int cells = 0;
    context.tileOutput(nullptr, 1, 2, true);
    context.setTileOutput([&](const Ond::Surfaces::SurfaceSPtr&, int x, int y, bool final) {
        cells += x * 10 + y + (final ? 100 : 0);
    });
    context.tileOutput(nullptr, 1, 2, true);
    EXPECT_EQ(cells, 112);
}
