#pragma once
// One object of a scene: a name and at most one component of each kind.
// The entity owns its components; its world box is cached against the
// display's box and the first global transform.

#include "scene/graph/BoundingBox.h"
#include "scene/graph/CameraComponent.h"
#include "scene/graph/DisplayComponent.h"
#include "scene/graph/LightComponent.h"
#include "scene/graph/LocationComponent.h"
#include "scene/graph/MetadataDict.h"

#include <QObject>
#include <QString>

#include <Eigen/Core>

#include <memory>

namespace Ond::SceneGraph {

class ISceneVisitor;
class MeshDisplayComponent;
class EnvironmentDisplayComponent;

class Entity : public QObject
{
    Q_OBJECT

public:
    using SPtr = std::shared_ptr<Entity>;

    enum ParameterId { All = 0, IsEnabled = 1, MetersPerUnit = 2 };
    Q_ENUM(ParameterId)
    static QString parameterName(int id);

    // Takes ownership of every component and sets its entity. A null
    // metadata gets an empty dictionary.
    explicit Entity(const QString& name, std::unique_ptr<LocationComponent> location = nullptr,
                    std::unique_ptr<DisplayComponent> display = nullptr,
                    std::unique_ptr<LightComponent> light = nullptr,
                    std::unique_ptr<CameraComponent> camera = nullptr,
                    std::unique_ptr<MetadataDict> metadata = nullptr);
    ~Entity() override;

    // --- Components
    LocationComponent* getLocation() const { return m_location.get(); }
    DisplayComponent* getDisplay() const { return m_display.get(); }
    LightComponent* getLight() const { return m_light.get(); }
    CameraComponent* getCamera() const { return m_camera.get(); }
    MetadataDict* getMetadata() const { return m_metadata.get(); }
    // The display as a mesh or environment display, or null.
    MeshDisplayComponent* getMeshDisplay() const;
    EnvironmentDisplayComponent* getEnvironmentDisplay() const;
    void setLocation(std::unique_ptr<LocationComponent> location);
    void setDisplay(std::unique_ptr<DisplayComponent> display);

    // --- Parameters
    const QString& getName() const { return m_name; }
    // The label if set; else the name, unless the entity is bare; "Entity"
    // when that leaves nothing. Translated.
    QString getLabel() const;
    void setLabel(const QString& label) { m_label = label; }
    bool isEnabled() const { return m_isEnabled; }
    void setEnabled(bool enabled);
    double getMetersPerUnit() const { return m_metersPerUnit; }
    // False for a value that is not positive.
    bool setMetersPerUnit(double metersPerUnit);

    // World box over all global transforms; cached.
    const BoundingBox& getGlobalBoundingBox();

    // Forwards to the display, if any.
    void accept(ISceneVisitor& visitor);

signals:
    void parameterChanged(Ond::SceneGraph::Entity::ParameterId id);
    void metaDataChanged();

private:
    void adopt(EntityComponent* component);

    std::unique_ptr<LocationComponent> m_location;
    std::unique_ptr<DisplayComponent> m_display;
    std::unique_ptr<LightComponent> m_light;
    std::unique_ptr<CameraComponent> m_camera;
    std::unique_ptr<MetadataDict> m_metadata;
    bool m_isEnabled = true;
    QString m_name;
    QString m_label;
    double m_metersPerUnit = 1.0;
    BoundingBox m_boundingBox;
    BoundingBox m_cachedLocalBox;
    Eigen::Matrix4f m_cachedGlobalTransform = Eigen::Matrix4f::Identity();
};

using EntitySPtr = Entity::SPtr;

} // namespace Ond::SceneGraph
