#include "baking/lowpoly/CurvatureMapBaker.h"

#include "baking/BakerRequirements.h"

namespace Ond::Baking {

QString CurvatureMapBaker::label() const
{
    return trBaking("Curvature (deprecated)");
}

QString CurvatureMapBaker::description() const
{
    return trBaking("This baker allows you to extract a curvature map that contains convexity/concavity "
                    "information of the mesh.");
}

std::string CurvatureMapBaker::identifier() const
{
    return "curvature";
}

bool CurvatureMapBaker::isAvailable(QString* why) const
{
    return checkGlVersion33(why);
}

Surfaces::SurfaceSPtr CurvatureMapBaker::process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene)
{
    (void)context;
    (void)scene;
    throwAlgorithmMissing();
}

} // namespace Ond::Baking
