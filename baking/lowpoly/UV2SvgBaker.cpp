#include "baking/lowpoly/UV2SvgBaker.h"

namespace Ond::Baking {

QString UV2SvgBaker::label() const
{
    return trBaking("Convert UV to SVG");
}

QString UV2SvgBaker::description() const
{
    return trBaking("This baker allows you to transform your UV into a vector graphic file to easily create "
                    "masks.");
}

std::string UV2SvgBaker::identifier() const
{
    return "uvmap";
}

void UV2SvgBaker::setTile(int u, int v)
{
    m_tileU = u;
    m_tileV = v;
}

bool UV2SvgBaker::process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene)
{
    (void)context;
    (void)scene;
    mutableData().clear();
    throwAlgorithmMissing();
}

} // namespace Ond::Baking
