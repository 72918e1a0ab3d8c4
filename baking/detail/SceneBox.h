#pragma once
// World-space box of a whole scene, kept per scene so that a second bake on
// the same high mesh does not walk it again.

#include "scene/graph/Scene.h"

#include <array>

namespace Ond::Baking {

struct SceneBox
{
    // Empty: minimum above maximum.
    std::array<float, 3> minimum{3.4028235e38f, 3.4028235e38f, 3.4028235e38f};
    std::array<float, 3> maximum{-3.4028235e38f, -3.4028235e38f, -3.4028235e38f};

    bool isEmpty() const { return minimum[0] > maximum[0]; }
    // 0 for an empty box.
    float largestExtent() const;
    float largestAbsoluteCoordinate() const;
};

// From the cache while the scene lives and is unchanged; an empty box for
// no scene.
SceneBox cachedBoundingBox(const SceneGraph::SceneSPtr& scene);

} // namespace Ond::Baking
