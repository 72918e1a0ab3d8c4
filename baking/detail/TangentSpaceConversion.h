#pragma once
// The last step of the normal-like detail maps: a world-space normal map
// baked for the low mesh turned into its tangent space by a GL pass over
// the low mesh, with the tangent plugin's frame.

#include "image/Surface.h"
#include "scene/graph/Scene.h"

#include <cstdint>

namespace Ond::Baking {

class AbstractBakingContext;

struct TangentSpaceSettings
{
    uint32_t uvSet = 0;
    int32_t uvTileU = 0;
    int32_t uvTileV = 0;
    bool invertGreen = false;   // DirectX orientation
    int dilationWidth = 1;
    bool applyDiffusion = true;
};

// Returns the tangent-space map, dilated; texels the world map left empty
// stay empty until dilation. Needs a current GL context.
Surfaces::SurfaceSPtr convertToTangentSpace(AbstractBakingContext& context, const SceneGraph::Scene& lowScene,
                                            const Surfaces::SurfaceSPtr& worldNormals,
                                            const TangentSpaceSettings& settings);

} // namespace Ond::Baking
