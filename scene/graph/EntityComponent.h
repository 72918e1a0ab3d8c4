#pragma once
// Base of the parts an Entity is made of. An entity has at most one
// component of each kind and owns them outright.

#include <QObject>

namespace Ond::SceneGraph {

class Entity;

class EntityComponent : public QObject
{
    Q_OBJECT

public:
    EntityComponent();
    ~EntityComponent() override;

    // Set by the Entity that takes the component; null before.
    Entity* getEntity() const { return m_entity; }
    void setEntity(Entity* entity) { m_entity = entity; }

    // Copies the parameters of a component of the same class; a component
    // of another class is ignored.
    virtual void copyFrom(const EntityComponent& other);

private:
    Entity* m_entity = nullptr;
};

} // namespace Ond::SceneGraph
