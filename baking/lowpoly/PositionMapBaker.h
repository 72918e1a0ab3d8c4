#pragma once
// The "position" baker.

#include "baking/AbstractMapBakerFactory.h"
#include "baking/lowpoly/GLBakeParameters.h"
#include "baking/lowpoly/LowPolyMapBaker.h"

#include <Eigen/Core>

#include <QSize>

namespace Ond::Baking {

// What the position pass writes: (P - offset) * coeff per axis, or one axis
// in all three channels; alpha 1 inside the UV islands.
struct PositionEncoding
{
    Eigen::Vector3f coeff = Eigen::Vector3f::Ones();
    Eigen::Vector3f offset = Eigen::Vector3f::Zero();
    int channel = 0;
    bool monochrome = false;
};

class PositionMapBaker : public LowPolyMapBaker
{
public:
    QString label() const override;
    QString description() const override;
    std::string identifier() const override;
    bool isAvailable(QString* why) const override;
    Surfaces::SurfaceSPtr process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene) override;

    // The position pass alone, without post-process.
    static Surfaces::SurfaceSPtr renderPositions(AbstractBakingContext& context, const SceneGraph::Scene* scene,
                                                 const GLBakeParameters& parameters, const QSize& size,
                                                 const PositionEncoding& encoding);
};

class PositionMapBakerFactory : public AbstractMapBakerFactory
{
public:
    AbstractMapBaker* create() const override { return new PositionMapBaker(); }
};

} // namespace Ond::Baking
