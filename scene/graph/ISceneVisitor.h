#pragma once
// Walks a Scene: Scene::accept calls visitScene, then for each accepted
// entity the entity's display component, then the sub-scenes, then
// endVisitScene.

namespace Ond::SceneGraph {

class Entity;
class MeshDisplayComponent;
class Scene;

class ISceneVisitor
{
public:
    virtual ~ISceneVisitor() = default;
    // False skips the entity, and its endVisitEntity.
    virtual bool visitEntity(Entity& entity) = 0;
    // False skips the whole scene, and its endVisitScene.
    virtual bool visitScene(Scene& scene) = 0;
    virtual void endVisitEntity(Entity& entity) = 0;
    virtual void endVisitScene(Scene& scene) = 0;
    virtual void visit(const MeshDisplayComponent* component) = 0;
};

} // namespace Ond::SceneGraph
