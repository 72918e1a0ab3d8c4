#pragma once
// The "normalworldspace" baker.

#include "baking/AbstractMapBakerFactory.h"
#include "baking/lowpoly/GLBakeParameters.h"
#include "baking/lowpoly/LowPolyMapBaker.h"

#include <QSize>

namespace Ond::Baking {

class NormalWSMapBaker : public LowPolyMapBaker
{
public:
    QString label() const override;
    QString description() const override;
    std::string identifier() const override;
    bool isAvailable(QString* why) const override;
    Surfaces::SurfaceSPtr process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene) override;

    // The normal pass alone, without post-process: the scene's world-space
    // normals (or tangents, binormals by the bake type) encoded in 0..1,
    // alpha 1 inside the UV islands. With a tangent-space map, that map in
    // world space.
    static Surfaces::SurfaceSPtr renderWorldSpaceNormals(AbstractBakingContext& context,
                                                         const SceneGraph::Scene* scene,
                                                         const GLBakeParameters& parameters, const QSize& size,
                                                         const Surfaces::SurfaceSPtr& map);
};

class NormalWSMapBakerFactory : public AbstractMapBakerFactory
{
public:
    AbstractMapBaker* create() const override { return new NormalWSMapBaker(); }
};

} // namespace Ond::Baking
