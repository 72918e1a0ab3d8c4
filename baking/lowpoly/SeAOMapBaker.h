#pragma once
// The "ambientocclusion" baker.

#include "baking/AbstractMapBakerFactory.h"
#include "baking/lowpoly/LowPolyMapBaker.h"

namespace Ond::Baking {

class SeAOMapBaker : public LowPolyMapBaker
{
public:
    QString label() const override;
    QString description() const override;
    std::string identifier() const override;
    bool isAvailable(QString* why) const override;
    Surfaces::SurfaceSPtr process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene) override;
};

class SeAOMapBakerFactory : public AbstractMapBakerFactory
{
public:
    AbstractMapBaker* create() const override { return new SeAOMapBaker(); }
};

} // namespace Ond::Baking
