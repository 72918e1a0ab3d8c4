#pragma once
// The "worldspacedirection" baker.

#include "baking/AbstractMapBakerFactory.h"
#include "baking/lowpoly/LowPolyMapBaker.h"

namespace Ond::Baking {

class WorldDirectionMapBaker : public LowPolyMapBaker
{
public:
    QString label() const override;
    QString description() const override;
    std::string identifier() const override;
    bool isAvailable(QString* why) const override;
    Surfaces::SurfaceSPtr process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene) override;
};

class WorldDirectionMapBakerFactory : public AbstractMapBakerFactory
{
public:
    AbstractMapBaker* create() const override { return new WorldDirectionMapBaker(); }
};

} // namespace Ond::Baking
