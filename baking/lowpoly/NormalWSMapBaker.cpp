#include "baking/lowpoly/NormalWSMapBaker.h"

#include "baking/BakerRequirements.h"

namespace Ond::Baking {

QString NormalWSMapBaker::label() const
{
    return trBaking("World Space Normals");
}

QString NormalWSMapBaker::description() const
{
    return trBaking("This baker allows you to extract normals coordinates relative to a fixed frame in the "
                    "object space.");
}

std::string NormalWSMapBaker::identifier() const
{
    return "normalworldspace";
}

bool NormalWSMapBaker::isAvailable(QString* why) const
{
    return checkGlVersion33(why);
}

Surfaces::SurfaceSPtr NormalWSMapBaker::process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene)
{
    (void)context;
    (void)scene;
    throwAlgorithmMissing();
}

} // namespace Ond::Baking
