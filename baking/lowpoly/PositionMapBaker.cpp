#include "baking/lowpoly/PositionMapBaker.h"

#include "baking/BakerRequirements.h"

namespace Ond::Baking {

QString PositionMapBaker::label() const
{
    return trBaking("Position");
}

QString PositionMapBaker::description() const
{
    return trBaking("This baker allows you to extract the position (x,y,z world space coordinates) of all "
                    "points at the surface of the mesh.");
}

std::string PositionMapBaker::identifier() const
{
    return "position";
}

bool PositionMapBaker::isAvailable(QString* why) const
{
    return checkGlVersion33(why);
}

Surfaces::SurfaceSPtr PositionMapBaker::process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene)
{
    (void)context;
    (void)scene;
    throwAlgorithmMissing();
}

} // namespace Ond::Baking
