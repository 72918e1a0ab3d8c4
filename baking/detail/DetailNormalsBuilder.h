#pragma once
// The detail normals of the occlusion and surface-fit curvature bakes when
// the low mesh stands in for the high one: its normal map in world space
// and the coverage of its UV islands, both at the map's size.

#include "baking/detail/SecondaryRayParams.h"

#include "scene/graph/Scene.h"

#include <QString>

#include <array>
#include <cstdint>
#include <optional>

namespace Ond::Baking {

class AbstractBakingContext;

struct DetailNormalsSource
{
    QString path;             // the normal map; empty: none
    bool worldSpace = false;  // the map is already in world space
    bool invertGreen = false; // a tangent-space map with green pointing down
    uint32_t uvSet = 0;
    std::array<int32_t, 2> uvTile = {0, 0};
};

// Empty when no map is named or it does not load (the bake then goes on
// with the mesh's own normals, and a warning says so). Runs GL passes: the
// caller holds the context.
std::optional<DetailNormals> buildDetailNormals(AbstractBakingContext& context, const SceneGraph::Scene& low,
                                                const DetailNormalsSource& source);

} // namespace Ond::Baking
