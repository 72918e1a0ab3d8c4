#pragma once
// Settings of the position kernel: which axis (or all), and the affine map
// from world position to the stored value.

#include "baking/PropertyBag.h"
#include "scene/graph/Scene.h"

#include <cstdint>

namespace Ond::Baking {

struct PositionParams
{
    int axis = -1;  // -1 all axes, else 0, 1, 2
    float offset[3] = {0.0f, 0.0f, 0.0f};
    float scale[3] = {1.0f, 1.0f, 1.0f};
};

// From the position baker's settings, normalised on the low scene's box.
PositionParams positionParamsOf(const PropertyBag& bag, const SceneGraph::Scene& lowScene, uint32_t uvSet);

} // namespace Ond::Baking
