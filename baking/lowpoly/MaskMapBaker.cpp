#include "baking/lowpoly/MaskMapBaker.h"

namespace Ond::Baking {

QString MaskMapBaker::label() const
{
    return trBaking("UV Mask");
}

QString MaskMapBaker::description() const
{
    return trBaking("");
}

std::string MaskMapBaker::identifier() const
{
    return "uvmask";
}

Surfaces::SurfaceSPtr MaskMapBaker::process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene)
{
    (void)context;
    (void)scene;
    throwAlgorithmMissing();
}

} // namespace Ond::Baking
