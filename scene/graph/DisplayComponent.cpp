#include "scene/graph/DisplayComponent.h"

namespace Ond::SceneGraph {

QString DisplayComponent::parameterName(int id)
{
    switch (id) {
    case All: return QStringLiteral("all");
    case IsVisible: return QStringLiteral("is_visible");
    default: return QString();
    }
}

DisplayComponent::DisplayComponent() = default;

void DisplayComponent::setVisible(bool visible)
{
    if (m_isVisible == visible)
        return;
    m_isVisible = visible;
    emit parameterChanged(IsVisible);
}

void DisplayComponent::copyFrom(const EntityComponent& other)
{
    if (const auto* display = dynamic_cast<const DisplayComponent*>(&other))
        setVisible(display->isVisible());
}

} // namespace Ond::SceneGraph
