#include "scene/graph/Scene.h"

#include "scene/graph/ISceneVisitor.h"
#include "scene/graph/Revision.h"

#include <algorithm>

namespace Ond::SceneGraph {

namespace {
constexpr size_t ReservedEntities = 10000;
}

QString Scene::parameterName(int id)
{
    switch (id) {
    case All: return QStringLiteral("all");
    case MetersPerUnit: return QStringLiteral("meters_per_unit");
    default: return QString();
    }
}

Scene::Scene(Entity::SPtr rootEntity, SceneCache* cache)
    : m_rootEntity(std::move(rootEntity)), m_cache(cache ? cache : new SceneCache), m_revision(nextRevision())
{
    m_entities.reserve(ReservedEntities);
    if (m_rootEntity)
        m_entities.push_back(m_rootEntity);
    m_cache->setScene(this);
}

Scene::Scene(std::vector<Entity::SPtr> entities, SceneCache* cache)
    : m_entities(std::move(entities)), m_cache(cache ? cache : new SceneCache), m_revision(nextRevision())
{
    m_entities.erase(std::remove(m_entities.begin(), m_entities.end(), nullptr), m_entities.end());
    m_entities.reserve(std::max(ReservedEntities, m_entities.size()));
    if (!m_entities.empty())
        m_rootEntity = m_entities.front();
    m_cache->setScene(this);
}

Scene::~Scene()
{
    for (const auto& sub : m_subScenes)
        disconnectSubScene(sub.get());
}

void Scene::addEntity(Entity::SPtr entity)
{
    if (!entity)
        return;
    m_entities.push_back(entity);
    m_revision = nextRevision();
    emit entityAdded(entity);
}

void Scene::addEntities(const std::vector<Entity::SPtr>& entities)
{
    for (const auto& entity : entities)
        addEntity(entity);
}

bool Scene::removeEntity(const Entity::SPtr& entity)
{
    const auto it = std::find(m_entities.begin(), m_entities.end(), entity);
    if (!entity || it == m_entities.end())
        return false;
    const Entity::SPtr keep = entity;
    emit entityAboutToBeRemoved(keep);
    m_entities.erase(std::find(m_entities.begin(), m_entities.end(), keep));
    if (m_rootEntity == keep)
        m_rootEntity.reset();
    m_revision = nextRevision();
    emit entityRemoved(keep);
    return true;
}

void Scene::clear()
{
    while (!m_entities.empty()) {
        const Entity::SPtr entity = m_entities.back();
        emit entityAboutToBeRemoved(entity);
        m_entities.pop_back();
        m_revision = nextRevision();
        emit entityRemoved(entity);
    }
    m_rootEntity.reset();
    while (!m_subScenes.empty())
        removeScene(SPtr(m_subScenes.back()));
}

Entity::SPtr Scene::findEntityByName(const QString& name) const
{
    if (name.isEmpty())
        return nullptr;
    Entity::SPtr found;
    forAllEntities([&](const Entity::SPtr& entity) {
        if (entity->getName() == name) {
            found = entity;
            return false;
        }
        return true;
    });
    return found;
}

bool Scene::forAllEntities(const std::function<bool(const Entity::SPtr&)>& function) const
{
    for (const auto& entity : m_entities) {
        if (!function(entity))
            return false;
    }
    for (const auto& sub : m_subScenes) {
        if (!sub->forAllEntities(function))
            return false;
    }
    return true;
}

void Scene::connectSubScene(Scene* scene)
{
    connect(scene, &Scene::entityAdded, this, &Scene::entityAdded, Qt::UniqueConnection);
    connect(scene, &Scene::entityAboutToBeRemoved, this, &Scene::entityAboutToBeRemoved, Qt::UniqueConnection);
    connect(scene, &Scene::entityRemoved, this, &Scene::entityRemoved, Qt::UniqueConnection);
}

void Scene::disconnectSubScene(Scene* scene)
{
    disconnect(scene, &Scene::entityAdded, this, &Scene::entityAdded);
    disconnect(scene, &Scene::entityAboutToBeRemoved, this, &Scene::entityAboutToBeRemoved);
    disconnect(scene, &Scene::entityRemoved, this, &Scene::entityRemoved);
}

void Scene::addScene(SPtr scene)
{
    // A scene inside itself would make every walk endless.
    if (!scene || scene.get() == this)
        return;
    if (std::find(m_subScenes.begin(), m_subScenes.end(), scene) != m_subScenes.end())
        return;
    connectSubScene(scene.get());
    m_subScenes.push_back(scene);
    m_revision = nextRevision();
    scene->forAllEntities([this](const Entity::SPtr& entity) {
        emit entityAdded(entity);
        return true;
    });
}

bool Scene::removeScene(const SPtr& scene)
{
    const auto it = std::find(m_subScenes.begin(), m_subScenes.end(), scene);
    if (!scene || it == m_subScenes.end())
        return false;
    const SPtr keep = scene;
    std::vector<Entity::SPtr> entities;
    keep->forAllEntities([&](const Entity::SPtr& entity) {
        entities.push_back(entity);
        return true;
    });
    for (const auto& entity : entities)
        emit entityAboutToBeRemoved(entity);
    m_subScenes.erase(std::find(m_subScenes.begin(), m_subScenes.end(), keep));
    m_revision = nextRevision();
    disconnectSubScene(keep.get());
    for (const auto& entity : entities)
        emit entityRemoved(entity);
    return true;
}

std::vector<Mesh::SPtr> Scene::getMeshes() const
{
    return m_cache->getMeshes();
}

bool Scene::forAllMeshes(const std::function<bool(const Mesh::SPtr&)>& function) const
{
    for (const auto& mesh : m_cache->getMeshes()) {
        if (!function(mesh))
            return false;
    }
    return true;
}

bool Scene::forAllSubMeshes(const std::function<bool(SubMesh&)>& function) const
{
    return forAllMeshes([&](const Mesh::SPtr& mesh) {
        const auto data = mesh->getData();
        return !data || data->forAllSubMeshes(function);
    });
}

void Scene::accept(ISceneVisitor& visitor)
{
    if (!visitor.visitScene(*this))
        return;
    // By index: a visitor may add entities on the way.
    for (size_t i = 0; i < m_entities.size(); ++i) {
        const Entity::SPtr entity = m_entities[i];
        if (visitor.visitEntity(*entity)) {
            entity->accept(visitor);
            visitor.endVisitEntity(*entity);
        }
    }
    for (size_t i = 0; i < m_subScenes.size(); ++i) {
        const SPtr sub = m_subScenes[i];
        sub->accept(visitor);
    }
    visitor.endVisitScene(*this);
}

const BoundingBox& Scene::getBoundingBox()
{
    m_boundingBox.reset();
    for (const auto& entity : m_entities)
        m_boundingBox.merge(entity->getGlobalBoundingBox());
    for (const auto& sub : m_subScenes)
        m_boundingBox.merge(sub->getBoundingBox());
    return m_boundingBox;
}

bool Scene::setMetersPerUnit(double metersPerUnit)
{
    if (!(metersPerUnit > 0.0))
        return false;
    const bool changed = m_metersPerUnit != metersPerUnit;
    m_metersPerUnit = metersPerUnit;
    m_lengthUnit = lengthUnitFromMetersPerUnit(metersPerUnit);
    if (changed)
        emit parameterChanged(MetersPerUnit);
    for (const auto& entity : m_entities)
        entity->setMetersPerUnit(metersPerUnit);
    for (const auto& sub : m_subScenes)
        sub->setMetersPerUnit(metersPerUnit);
    return true;
}

void Scene::setCache(SceneCache* cache)
{
    m_cache.reset(cache ? cache : new SceneCache);
    m_cache->setScene(this);
}

const std::vector<std::shared_ptr<void>>& Scene::getSharedObjects(size_t slot) const
{
    static const std::vector<std::shared_ptr<void>> none;
    return slot < m_sharedObjects.size() ? m_sharedObjects[slot] : none;
}

void Scene::setSharedObjects(size_t slot, std::vector<std::shared_ptr<void>> objects)
{
    if (slot < m_sharedObjects.size())
        m_sharedObjects[slot] = std::move(objects);
}

bool isSceneUdim(const Scene* scene)
{
    if (!scene)
        return false;
    return !scene->forAllMeshes([](const Mesh::SPtr& mesh) { return !mesh->isUdim(); });
}

void setSceneUdim(const Scene* scene, bool udim)
{
    if (!scene)
        return;
    scene->forAllMeshes([udim](const Mesh::SPtr& mesh) {
        mesh->setUdim(udim);
        return true;
    });
}

} // namespace Ond::SceneGraph
