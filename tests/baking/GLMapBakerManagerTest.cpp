// The registry and the protected run: whatever a baker does, apply leaves a
// result and at most one line in the log, and never reports a map it didn't
// make.

#include "baking/BakerCatalogue.h"
#include "baking/BakingContext.h"
#include "baking/GLMapBakerManager.h"
#include "baking/detail/DetailMapBaker.h"
#include "baking/lowpoly/ColorMapBaker.h"
#include "baking/lowpoly/LowPolyMapBaker.h"

#include "LowPolyBakeTestUtil.h"
#include "common/LogCapture.h"
#include "program/LogChannel.h"
#include "scene/graph/Entity.h"
#include "scene/graph/MeshDisplayComponent.h"

#include <QCoreApplication>
#include <QSize>

#include <gtest/gtest.h>

#include <stdexcept>

using namespace Ond::Baking;
using namespace Ond::SceneGraph;

namespace {

class FakeBaker : public LowPolyMapBaker
{
public:
    QString label() const override { return QStringLiteral("Fake"); }
    QString description() const override { return QString(); }
    std::string identifier() const override { return "position"; }
    bool isAvailable(QString* why) const override
    {
        if (!available && why)
            *why = QStringLiteral("no reason");
        return available;
    }
    Ond::Surfaces::SurfaceSPtr process(AbstractBakingContext&, const SceneSPtr&) override
    {
        ++runs;
        if (failure)
            throw std::runtime_error("kernel failed");
        return Ond::Surfaces::SurfaceSPtr::create(Ond::Surfaces::SurfaceDesc(4, 4, Ond::Surfaces::PixelFormat::L8));
    }

    bool available = true;
    bool failure = false;
    int runs = 0;
};

SceneSPtr sceneWithOneUvSet()
{
    std::vector<Eigen::Vector3f> points = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    std::vector<Eigen::Vector2f> uvs = {{0, 0}, {1, 0}, {0, 1}};
    std::vector<Vec2BufferUPtr> uvSets;
    uvSets.push_back(std::make_unique<VectorBinaryBuffer<Eigen::Vector2f>>(std::move(uvs)));
    auto data = std::make_shared<Mesh::Data>(std::make_unique<VectorBinaryBuffer<Eigen::Vector3f>>(std::move(points)),
                                             nullptr, nullptr, nullptr, nullptr, std::move(uvSets),
                                             std::vector<SubMesh>());
    auto mesh = std::make_shared<Mesh>(data, QStringLiteral("mesh"));
    auto scene = std::make_shared<Scene>();
    scene->addEntity(std::make_shared<Entity>(QStringLiteral("part"), nullptr,
                                              std::make_unique<MeshDisplayComponent>(mesh)));
    return scene;
}

class ManagerApply : public ::testing::Test
{
protected:
    void SetUp() override
    {
        // Named by the program at start-up.
        Ond::Core::bakersChannel().setName(QStringLiteral("Bakers"));
        baker.init();
    }

    FakeBaker baker;
    Vrn::Baking::BakingContext context{nullptr};
    GLMapBakerManager& manager = GLMapBakerManager::instance();
};

} // namespace

TEST(GLMapBakerManager, KeysFollowByteOrderWithTheUvMapRegisteredByTheProgram)
{
    GLMapBakerManager& manager = GLMapBakerManager::instance();
    manager.registerFactory("GLMapBakerManager.ColorMap", std::make_shared<ColorMapBakerFactory>());
    const QList<QByteArray> keys = manager.keys();
    const auto& catalogue = registeredBakers();
    ASSERT_EQ(keys.size(), int(catalogue.size()));
    for (int i = 0; i < keys.size(); ++i)
        EXPECT_EQ(keys[i], QByteArray(catalogue[size_t(i)].key));
}

TEST(GLMapBakerManager, CreatesInitialisedBakersWithTheirCatalogueIdentity)
{
    GLMapBakerManager& manager = GLMapBakerManager::instance();
    manager.registerFactory("GLMapBakerManager.ColorMap", std::make_shared<ColorMapBakerFactory>());
    for (const BakerInfo& info : registeredBakers()) {
        auto baker = manager.create(info.key, "Images (*.png)");
        ASSERT_TRUE(baker) << info.key;
        EXPECT_EQ(baker->identifier(), info.identifier);
        EXPECT_EQ(baker->label(), QString::fromUtf8(info.label));
        EXPECT_EQ(baker->fileFilter(), "Images (*.png)");
        ASSERT_TRUE(baker->propertyBag());
        EXPECT_EQ(baker->outputSize(), QSize(512, 512));
    }
    auto detail = manager.create("GLMapBakerManager.MaskFromDetail");
    EXPECT_EQ(dynamic_cast<DetailMapBaker&>(*detail).kind(), DetailMapBaker::Mask);
    EXPECT_EQ(dynamic_cast<DetailMapBaker&>(*detail).progressName(), QStringLiteral("Opacity mask from mesh"));
    EXPECT_THROW(manager.create("GLMapBakerManager.UVMask"), std::invalid_argument);
}

TEST(GLMapBakerManager, FallbackIsEightByEightOpaqueBlack)
{
    const auto surface = GLMapBakerManager::fallbackSurface();
    ASSERT_TRUE(surface);
    EXPECT_EQ(surface->width(), 8u);
    EXPECT_EQ(surface->height(), 8u);
    EXPECT_EQ(surface->format(), Ond::Surfaces::PixelFormat::RGBA8);
    const uint8_t* last = surface->pixel<uint8_t>(7, 7);
    EXPECT_EQ(last[0], 0);
    EXPECT_EQ(last[2], 0);
    EXPECT_EQ(last[3], 255);
}

TEST_F(ManagerApply, UnavailableBakerGetsTheFallbackAndOneLine)
{
    baker.available = false;
    ZmfTest::LogCapture log;
    EXPECT_FALSE(manager.apply(context, baker, sceneWithOneUvSet()));
    EXPECT_EQ(baker.runs, 0);
    ASSERT_TRUE(baker.result());
    EXPECT_EQ(baker.result()->width(), 8u);
    EXPECT_EQ(log.lines(), QStringList{QStringLiteral("[2][Bakers]Baker not available (Fake)\nno reason")});
}

TEST_F(ManagerApply, SceneWithoutMeshesFailsSilently)
{
    ZmfTest::LogCapture log;
    EXPECT_FALSE(manager.apply(context, baker, std::make_shared<Scene>()));
    EXPECT_EQ(baker.runs, 0);
    EXPECT_FALSE(baker.result());
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ManagerApply, MissingUvSetIsABakingFailure)
{
    setPropertyValue(baker.properties(), "Common.UVSet", QVariant(3));
    ZmfTest::LogCapture log;
    EXPECT_FALSE(manager.apply(context, baker, sceneWithOneUvSet()));
    EXPECT_EQ(baker.runs, 0);
    EXPECT_EQ(log.lines(), QStringList{QStringLiteral("[2][Bakers]Baking failed (Fake)\nUV set 3 doesn't exist")});
}

TEST_F(ManagerApply, ThrowingBakerIsReportedAndSuccessStoresTheSurface)
{
    baker.failure = true;
    {
        ZmfTest::LogCapture log;
        EXPECT_FALSE(manager.apply(context, baker, sceneWithOneUvSet()));
        EXPECT_EQ(log.lines(), QStringList{QStringLiteral("[2][Bakers]Baking failed (Fake)\nkernel failed")});
        EXPECT_EQ(baker.result()->width(), 8u);
    }
    baker.failure = false;
    EXPECT_TRUE(manager.apply(context, baker, sceneWithOneUvSet()));
    EXPECT_EQ(baker.result()->width(), 4u);
}

TEST_F(ManagerApply, OcclusionOfASceneWithoutTrianglesIsAnEmptyOneChannelMap)
{
    auto seao = manager.create("GLMapBakerManager.SeAO");
    setPropertyValue(seao->properties(), "Common.OutputSize", QVariant::fromValue(QSize(5, 5)));
    ZmfTest::LogCapture log;
    LowPolyTest::inGL(
        [&] { EXPECT_TRUE(manager.apply(context, dynamic_cast<LowPolyMapBaker&>(*seao), sceneWithOneUvSet())); });
    ASSERT_TRUE(seao->result());
    EXPECT_EQ(seao->result()->width(), 32u);
    EXPECT_EQ(seao->result()->format(), Ond::Surfaces::PixelFormat::L32F);
    EXPECT_EQ(seao->result()->readPixel(16, 16).x(), 0.0f);
    for (const QString& line : log.lines())
        EXPECT_TRUE(line.startsWith(QStringLiteral("[0]"))) << line.toStdString();
}
