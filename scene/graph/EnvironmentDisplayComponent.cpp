#include "scene/graph/EnvironmentDisplayComponent.h"

namespace Ond::SceneGraph {

QString EnvironmentDisplayComponent::parameterName(int id)
{
    switch (id) {
    case All: return QStringLiteral("all");
    case EnvironmentTexture: return QStringLiteral("environment_texture");
    case PanoramaTexture: return QStringLiteral("panorama_texture");
    case DomeVisible: return QStringLiteral("dome_visible");
    default: return QString();
    }
}

EnvironmentDisplayComponent::EnvironmentDisplayComponent() = default;

void EnvironmentDisplayComponent::setEnvironmentTexture(const QString& path)
{
    if (m_environmentTexture == path)
        return;
    m_environmentTexture = path;
    emit parameterChanged(EnvironmentTexture);
}

void EnvironmentDisplayComponent::setPanoramaTexture(const QString& path)
{
    if (m_panoramaTexture == path)
        return;
    m_panoramaTexture = path;
    emit parameterChanged(PanoramaTexture);
}

void EnvironmentDisplayComponent::setDomeVisible(bool visible)
{
    if (m_domeVisible == visible)
        return;
    m_domeVisible = visible;
    emit parameterChanged(DomeVisible);
}

void EnvironmentDisplayComponent::copyFrom(const EntityComponent& other)
{
    DisplayComponent::copyFrom(other);
    const auto* env = dynamic_cast<const EnvironmentDisplayComponent*>(&other);
    if (!env)
        return;
    setEnvironmentTexture(env->m_environmentTexture);
    setPanoramaTexture(env->m_panoramaTexture);
    setDomeVisible(env->m_domeVisible);
}

const BoundingBox& EnvironmentDisplayComponent::getBoundingBox() const
{
    return BoundingBox::emptyBox();
}

void EnvironmentDisplayComponent::accept(ISceneVisitor& visitor)
{
    (void)visitor;
}

} // namespace Ond::SceneGraph
