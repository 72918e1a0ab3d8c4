#include "scene/graph/LightComponent.h"

namespace Ond::SceneGraph {

QString LightComponent::parameterName(int id)
{
    switch (id) {
    case All: return QStringLiteral("all");
    case LightType: return QStringLiteral("light_type");
    case Color: return QStringLiteral("color");
    case Intensity: return QStringLiteral("intensity");
    default: return QString();
    }
}

LightComponent::LightComponent() = default;

void LightComponent::setLightType(uint32_t type)
{
    if (m_lightType == type)
        return;
    m_lightType = type;
    emit parameterChanged(LightType);
}

void LightComponent::setColor(const Eigen::Vector3f& color)
{
    if (m_color == color)
        return;
    m_color = color;
    emit parameterChanged(Color);
}

void LightComponent::setIntensity(float intensity)
{
    if (m_intensity == intensity)
        return;
    m_intensity = intensity;
    emit parameterChanged(Intensity);
}

void LightComponent::copyFrom(const EntityComponent& other)
{
    const auto* light = dynamic_cast<const LightComponent*>(&other);
    if (!light)
        return;
    setLightType(light->m_lightType);
    setColor(light->m_color);
    setIntensity(light->m_intensity);
}

} // namespace Ond::SceneGraph
