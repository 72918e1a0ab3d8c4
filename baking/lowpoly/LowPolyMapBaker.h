#pragma once
// Bakers that need only the low-definition mesh.

#include "baking/AbstractMapBaker.h"

#include "scene/graph/Scene.h"

namespace Ond::Baking {

class AbstractBakingContext;

class LowPolyMapBaker : public AbstractMapBaker
{
public:
    // Bakes the map of the scene. Throws on failure; a cancelled bake
    // returns what it has.
    virtual Surfaces::SurfaceSPtr process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene) = 0;
};

} // namespace Ond::Baking
