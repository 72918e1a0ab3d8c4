#pragma once
// The "curvature" baker.

#include "baking/AbstractMapBakerFactory.h"
#include "baking/lowpoly/LowPolyMapBaker.h"

namespace Ond::Baking {

class CurvatureMapBaker : public LowPolyMapBaker
{
public:
    QString label() const override;
    QString description() const override;
    std::string identifier() const override;
    bool isAvailable(QString* why) const override;
    Surfaces::SurfaceSPtr process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene) override;
};

class CurvatureMapBakerFactory : public AbstractMapBakerFactory
{
public:
    AbstractMapBaker* create() const override { return new CurvatureMapBaker(); }
};

} // namespace Ond::Baking
