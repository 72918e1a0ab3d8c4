#pragma once
// The "normalworldspace" baker.

#include "baking/AbstractMapBakerFactory.h"
#include "baking/lowpoly/LowPolyMapBaker.h"

namespace Ond::Baking {

class NormalWSMapBaker : public LowPolyMapBaker
{
public:
    QString label() const override;
    QString description() const override;
    std::string identifier() const override;
    bool isAvailable(QString* why) const override;
    Surfaces::SurfaceSPtr process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene) override;
};

class NormalWSMapBakerFactory : public AbstractMapBakerFactory
{
public:
    AbstractMapBaker* create() const override { return new NormalWSMapBaker(); }
};

} // namespace Ond::Baking
