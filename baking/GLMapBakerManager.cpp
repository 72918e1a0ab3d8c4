#include "baking/GLMapBakerManager.h"

#include "baking/AbstractBakingContext.h"
#include "baking/detail/DetailMapBaker.h"
#include "baking/detail/DetailMapBakerFactory.h"
#include "baking/lowpoly/CurvatureMapBaker.h"
#include "baking/lowpoly/LowPolyMapBaker.h"
#include "baking/lowpoly/NormalWSMapBaker.h"
#include "baking/lowpoly/PositionMapBaker.h"
#include "baking/lowpoly/SeAOMapBaker.h"
#include "baking/lowpoly/WorldDirectionMapBaker.h"

#include "program/LogChannel.h"
#include "scene/graph/Entity.h"
#include "scene/graph/MeshDisplayComponent.h"

#include <QCoreApplication>

#include <cstring>
#include <functional>
#include <map>
#include <stdexcept>

namespace Ond::Baking {

struct GLMapBakerManager::Impl_
{
    std::map<QByteArray, AbstractMapBakerFactorySPtr> factories;
};

GLMapBakerManager::GLMapBakerManager()
    : m_impl(std::make_unique<Impl_>())
{
}

GLMapBakerManager::~GLMapBakerManager() = default;

GLMapBakerManager& GLMapBakerManager::instance()
{
    static GLMapBakerManager* manager = [] {
        static GLMapBakerManager m;
        m.registerFactory("GLMapBakerManager.SeAO", std::make_shared<SeAOMapBakerFactory>());
        m.registerFactory("GLMapBakerManager.NormalWS", std::make_shared<NormalWSMapBakerFactory>());
        m.registerFactory("GLMapBakerManager.WorldDirection", std::make_shared<WorldDirectionMapBakerFactory>());
        m.registerFactory("GLMapBakerManager.Curvature", std::make_shared<CurvatureMapBakerFactory>());
        m.registerFactory("GLMapBakerManager.Position", std::make_shared<PositionMapBakerFactory>());
        m.registerFactory("GLMapBakerManager.HeightFromDetail", std::make_shared<HeightDetailMapBakerFactory>());
        m.registerFactory("GLMapBakerManager.NormalFromDetail", std::make_shared<NormalDetailMapBakerFactory>());
        m.registerFactory("GLMapBakerManager.ColorFromDetail", std::make_shared<ColorDetailMapBakerFactory>());
        m.registerFactory("GLMapBakerManager.AOFromDetail", std::make_shared<AODetailMapBakerFactory>());
        m.registerFactory("GLMapBakerManager.BentNormalsFromDetail",
                          std::make_shared<BentNormalsDetailMapBakerFactory>());
        m.registerFactory("GLMapBakerManager.MaskFromDetail", std::make_shared<MaskDetailMapBakerFactory>());
        m.registerFactory("GLMapBakerManager.ThicknessFromDetail",
                          std::make_shared<ThicknessDetailMapBakerFactory>());
        m.registerFactory("GLMapBakerManager.TextureFromDetail", std::make_shared<TextureDetailMapBakerFactory>());
        m.registerFactory("GLMapBakerManager.PositionFromDetail",
                          std::make_shared<PositionDetailMapBakerFactory>());
        m.registerFactory("GLMapBakerManager.CurvatureFromDetail",
                          std::make_shared<CurvatureDetailMapBakerFactory>());
        m.registerFactory("GLMapBakerManager.Curvature1FromDetail",
                          std::make_shared<Curvature1DetailMapBakerFactory>());
        return &m;
    }();
    return *manager;
}

void GLMapBakerManager::registerFactory(const QByteArray& key, const AbstractMapBakerFactorySPtr& factory)
{
    m_impl->factories[key] = factory;
}

QList<QByteArray> GLMapBakerManager::keys() const
{
    QList<QByteArray> out;
    for (const auto& entry : m_impl->factories)
        out.append(entry.first);
    return out;
}

bool GLMapBakerManager::hasFactory(const QByteArray& key) const
{
    auto it = m_impl->factories.find(key);
    return it != m_impl->factories.end() && it->second;
}

std::unique_ptr<AbstractMapBaker> GLMapBakerManager::create(const QByteArray& key, const std::string& fileFilter) const
{
    auto it = m_impl->factories.find(key);
    if (it == m_impl->factories.end() || !it->second)
        throw std::invalid_argument("No baker factory registered under " + key.toStdString());
    std::unique_ptr<AbstractMapBaker> baker(it->second->create());
    baker->setFileFilter(fileFilter);
    baker->init();
    return baker;
}

Surfaces::SurfaceSPtr GLMapBakerManager::fallbackSurface()
{
    auto surface = Surfaces::SurfaceSPtr::create(Surfaces::SurfaceDesc(8, 8, Surfaces::PixelFormat::RGBA8));
    const uint32_t pixel = 0xFF000000u;
    for (uint32_t y = 0; y < 8; ++y)
        for (uint32_t x = 0; x < 8; ++x)
            std::memcpy(surface->pixel<uint8_t>(x, y), &pixel, sizeof(pixel));
    return surface;
}

namespace {

struct MeshSurvey
{
    int meshEntities = 0;
    bool hasUvSet = false;
};

MeshSurvey surveyMeshes(const SceneGraph::Scene& scene, int uvSet)
{
    MeshSurvey survey;
    scene.forAllEntities([&](const SceneGraph::Entity::SPtr& entity) {
        const SceneGraph::MeshDisplayComponent* display = entity->getMeshDisplay();
        if (!display || !display->getMesh())
            return true;
        ++survey.meshEntities;
        const SceneGraph::Mesh::DataSPtr data = display->getMesh()->getData();
        if (data && uvSet >= 0 && data->getUvSetCount() > size_t(uvSet))
            survey.hasUvSet = true;
        return true;
    });
    return survey;
}

QString failureText(const char* what, const AbstractMapBaker& baker, const QString& detail)
{
    return QStringLiteral("%1 (%2)\n%3").arg(QCoreApplication::translate("baking", what), baker.label(), detail);
}

// The body shared by both overloads; `run` calls the baker proper.
bool applyCommon(AbstractBakingContext& context, AbstractMapBaker& baker, const SceneGraph::SceneSPtr& low,
                 const std::function<Surfaces::SurfaceSPtr()>& run)
{
    QString why;
    if (!baker.isAvailable(&why)) {
        baker.setResult(GLMapBakerManager::fallbackSurface());
        Core::bakersChannel().error(failureText("Baker not available", baker, why));
        return false;
    }
    try {
        const int uvSet = baker.properties()["Common.UVSet"].valueAs<int>();
        const MeshSurvey survey = low ? surveyMeshes(*low, uvSet) : MeshSurvey();
        // A scene without meshes has nothing to bake and nothing to complain about.
        if (survey.meshEntities > 0 && !survey.hasUvSet)
            throw std::runtime_error("UV set " + std::to_string(uvSet) + " doesn't exist");
        if (survey.meshEntities == 0)
            return false;
        baker.setResult(run());
        return !context.isCancelled();
    } catch (const std::exception& e) {
        baker.setResult(GLMapBakerManager::fallbackSurface());
        Core::bakersChannel().error(failureText("Baking failed", baker, QString::fromUtf8(e.what())));
        return false;
    }
}

} // namespace

bool GLMapBakerManager::apply(AbstractBakingContext& context, DetailMapBaker& baker, const SceneGraph::SceneSPtr& low,
                              const SceneGraph::SceneSPtr& high, const SceneGraph::SceneSPtr& cage)
{
    return applyCommon(context, baker, low, [&] { return baker.process(context, low, high, cage); });
}

bool GLMapBakerManager::apply(AbstractBakingContext& context, LowPolyMapBaker& baker, const SceneGraph::SceneSPtr& low)
{
    return applyCommon(context, baker, low, [&] { return baker.process(context, low); });
}

} // namespace Ond::Baking
