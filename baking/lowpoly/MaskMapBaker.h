#pragma once
// The "uvmask" baker.

#include "baking/lowpoly/LowPolyMapBaker.h"

namespace Ond::Baking {

class MaskMapBaker : public LowPolyMapBaker
{
public:
    QString label() const override;
    QString description() const override;
    std::string identifier() const override;
    Surfaces::SurfaceSPtr process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene) override;
};

} // namespace Ond::Baking
