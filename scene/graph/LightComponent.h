#pragma once
// A light. No importer of this program makes one; the info report reads it.

#include "scene/graph/EntityComponent.h"

#include <QString>

#include <Eigen/Core>

#include <cstdint>

namespace Ond::SceneGraph {

class LightComponent : public EntityComponent
{
    Q_OBJECT

public:
    enum ParameterId { All = 0, LightType = 1, Color = 2, Intensity = 3 };
    Q_ENUM(ParameterId)
    static QString parameterName(int id);

    // 0 point, 1 ambient; other values are unknown kinds.
    enum Type : uint32_t { Point = 0, Ambient = 1 };

    LightComponent();

    uint32_t getLightType() const { return m_lightType; }
    void setLightType(uint32_t type);
    const Eigen::Vector3f& getColor() const { return m_color; }
    void setColor(const Eigen::Vector3f& color);
    float getIntensity() const { return m_intensity; }
    void setIntensity(float intensity);

    void copyFrom(const EntityComponent& other) override;

signals:
    void parameterChanged(Ond::SceneGraph::LightComponent::ParameterId id);

private:
    uint32_t m_lightType = Point;
    Eigen::Vector3f m_color{1.0f, 1.0f, 1.0f};
    float m_intensity = 1.0f;
};

} // namespace Ond::SceneGraph
