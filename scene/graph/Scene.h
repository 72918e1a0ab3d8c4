#pragma once
// A scene: a flat list of entities, sub-scenes that are walked after it, and
// the unit of length. Changes of the lists advance the revision and are
// signalled; the signals of sub-scenes bubble up.

#include "scene/graph/BoundingBox.h"
#include "scene/graph/Entity.h"
#include "scene/graph/LengthUnit.h"
#include "scene/graph/Mesh.h"
#include "scene/graph/SceneCache.h"

#include <QObject>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace Ond::SceneGraph {

class ISceneVisitor;

class Scene : public QObject
{
    Q_OBJECT

public:
    using SPtr = std::shared_ptr<Scene>;

    enum ParameterId { All = 0, MetersPerUnit = 1 };
    Q_ENUM(ParameterId)
    static QString parameterName(int id);

    // The root entity, which may be null, comes first in the entity list.
    // A null cache gets a new one.
    explicit Scene(Entity::SPtr rootEntity = nullptr, SceneCache* cache = nullptr);
    explicit Scene(std::vector<Entity::SPtr> entities, SceneCache* cache = nullptr);
    ~Scene() override;

    // --- Entities
    const std::vector<Entity::SPtr>& getEntities() const { return m_entities; }
    const Entity::SPtr& getRootEntity() const { return m_rootEntity; }
    // Null entities are skipped.
    void addEntity(Entity::SPtr entity);
    void addEntities(const std::vector<Entity::SPtr>& entities);
    // False if the entity is not in this scene's own list.
    bool removeEntity(const Entity::SPtr& entity);
    // Removes all entities, last first, then all sub-scenes.
    void clear();
    // Empty names find nothing. Sub-scenes are searched after the entities.
    Entity::SPtr findEntityByName(const QString& name) const;
    // This scene's entities, then each sub-scene depth first; false as soon
    // as the function returns false.
    bool forAllEntities(const std::function<bool(const Entity::SPtr&)>& function) const;

    // --- Sub-scenes
    const std::vector<SPtr>& getSubScenes() const { return m_subScenes; }
    void addScene(SPtr scene);
    bool removeScene(const SPtr& scene);

    // --- Meshes, each once
    bool forAllMeshes(const std::function<bool(const Mesh::SPtr&)>& function) const;
    bool forAllSubMeshes(const std::function<bool(SubMesh&)>& function) const;
    std::vector<Mesh::SPtr> getMeshes() const;

    void accept(ISceneVisitor& visitor);

    // Recomputed on every call from the entities' world boxes and the
    // sub-scenes' boxes.
    const BoundingBox& getBoundingBox();

    // --- Units
    double getMetersPerUnit() const { return m_metersPerUnit; }
    LengthUnit getLengthUnit() const { return m_lengthUnit; }
    // False for a value that is not positive. Applies to all entities and
    // sub-scenes.
    bool setMetersPerUnit(double metersPerUnit);

    uint64_t getRevision() const { return m_revision; }

    SceneCache* getCache() const { return m_cache.get(); }
    // A null cache gets a new one; the old one is destroyed.
    void setCache(SceneCache* cache);

    // Opaque objects kept alive with the scene, replaced as a whole.
    static constexpr size_t SharedObjectSlots = 1;
    const std::vector<std::shared_ptr<void>>& getSharedObjects(size_t slot) const;
    void setSharedObjects(size_t slot, std::vector<std::shared_ptr<void>> objects);

signals:
    void entityAdded(Ond::SceneGraph::Entity::SPtr entity);
    void entityAboutToBeRemoved(Ond::SceneGraph::Entity::SPtr entity);
    void entityRemoved(Ond::SceneGraph::Entity::SPtr entity);
    void parameterChanged(Ond::SceneGraph::Scene::ParameterId id);

private:
    void connectSubScene(Scene* scene);
    void disconnectSubScene(Scene* scene);

    std::vector<Entity::SPtr> m_entities;
    std::vector<SPtr> m_subScenes;
    Entity::SPtr m_rootEntity;
    std::unique_ptr<SceneCache> m_cache;
    double m_metersPerUnit = 1.0;
    LengthUnit m_lengthUnit = LengthUnit::Meter;
    uint64_t m_revision = 0;
    BoundingBox m_boundingBox;
    std::array<std::vector<std::shared_ptr<void>>, SharedObjectSlots> m_sharedObjects;
};

using SceneSPtr = Scene::SPtr;

// True if any Mesh of the scene is marked UDIM.
bool isSceneUdim(const Scene* scene);
// Marks every Mesh of the scene.
void setSceneUdim(const Scene* scene, bool udim);

} // namespace Ond::SceneGraph

Q_DECLARE_METATYPE(Ond::SceneGraph::Entity::SPtr)
