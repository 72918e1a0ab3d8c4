#pragma once
// The "position" baker.

#include "baking/AbstractMapBakerFactory.h"
#include "baking/lowpoly/LowPolyMapBaker.h"

namespace Ond::Baking {

class PositionMapBaker : public LowPolyMapBaker
{
public:
    QString label() const override;
    QString description() const override;
    std::string identifier() const override;
    bool isAvailable(QString* why) const override;
    Surfaces::SurfaceSPtr process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene) override;
};

class PositionMapBakerFactory : public AbstractMapBakerFactory
{
public:
    AbstractMapBaker* create() const override { return new PositionMapBaker(); }
};

} // namespace Ond::Baking
