#include "baking/lowpoly/SeAOMapBaker.h"

#include "baking/BakerRequirements.h"

namespace Ond::Baking {

QString SeAOMapBaker::label() const
{
    return trBaking("Ambient Occlusion (deprecated)");
}

QString SeAOMapBaker::description() const
{
    return trBaking("This baker allows you to extract ambient occlusion (soft shadowing in occluded areas) "
                    "using the mesh and a normal map (no high poly needed).\nIt uses a fast algorithm executed "
                    "on the GPU.");
}

std::string SeAOMapBaker::identifier() const
{
    return "ambientocclusion";
}

bool SeAOMapBaker::isAvailable(QString* why) const
{
    return checkSupportedRenderer(why);
}

Surfaces::SurfaceSPtr SeAOMapBaker::process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene)
{
    (void)context;
    (void)scene;
    throwAlgorithmMissing();
}

} // namespace Ond::Baking
