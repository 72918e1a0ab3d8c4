#include "scene/graph/EntityComponent.h"

namespace Ond::SceneGraph {

EntityComponent::EntityComponent() = default;

EntityComponent::~EntityComponent() = default;

void EntityComponent::copyFrom(const EntityComponent& other)
{
    (void)other;
}

} // namespace Ond::SceneGraph
