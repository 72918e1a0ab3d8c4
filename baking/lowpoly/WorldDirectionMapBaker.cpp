#include "baking/lowpoly/WorldDirectionMapBaker.h"

#include "baking/BakerRequirements.h"

namespace Ond::Baking {

QString WorldDirectionMapBaker::label() const
{
    return trBaking("World Space Direction");
}

QString WorldDirectionMapBaker::description() const
{
    return trBaking("This baker allows you to transform vector directions from world space coordinates to "
                    "tangent space coordinates.\nThe direction can come from a texture or an uniform vector.");
}

std::string WorldDirectionMapBaker::identifier() const
{
    return "worldspacedirection";
}

bool WorldDirectionMapBaker::isAvailable(QString* why) const
{
    return checkGlVersion33(why);
}

Surfaces::SurfaceSPtr WorldDirectionMapBaker::process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene)
{
    (void)context;
    (void)scene;
    throwAlgorithmMissing();
}

} // namespace Ond::Baking
