#pragma once
// The "ambientocclusion" baker.

#include "baking/AbstractMapBakerFactory.h"
#include "baking/lowpoly/GLBakeParameters.h"
#include "baking/lowpoly/LowPolyMapBaker.h"
#include "baking/lowpoly/SeAOGeometry.h"

namespace Ond::Baking {

struct SeAOParameters;

class SeAOMapBaker : public LowPolyMapBaker
{
public:
    QString label() const override;
    QString description() const override;
    std::string identifier() const override;
    bool isAvailable(QString* why) const override;
    Surfaces::SurfaceSPtr process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene) override;

    // A new map with every encoded normal turned round (1 - rgb), coverage
    // kept.
    static Surfaces::SurfaceSPtr invertNormalMap(const Surfaces::SurfaceSPtr& map);

private:
    static void bakeOcclusion(AbstractBakingContext& context, SeAO::Geometry& geometry,
                              const SeAOParameters& seao, const GLBakeParameters& parameters,
                              const Surfaces::SurfaceSPtr& normals, Surfaces::SurfaceSPtr& output);
};

class SeAOMapBakerFactory : public AbstractMapBakerFactory
{
public:
    AbstractMapBaker* create() const override { return new SeAOMapBaker(); }
};

} // namespace Ond::Baking
