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

    // Where the last process spent its time, in milliseconds.
    struct Timings
    {
        double normals = 0.0;     // world-space normal map (per pixel)
        double preparation = 0.0; // gather, weld, groups, edges, packing
        double passes = 0.0;      // GL passes over all tiles, read-back included
        double postProcess = 0.0;
        double total = 0.0;
    };
    const Timings& lastTimings() const { return m_timings; }

private:
    Timings m_timings;
};

class CurvatureMapBakerFactory : public AbstractMapBakerFactory
{
public:
    AbstractMapBaker* create() const override { return new CurvatureMapBaker(); }
};

} // namespace Ond::Baking
