#pragma once
// The "uvmap" baker as a raster map: it runs its inner UV-to-SVG baker and
// renders the SVG text into a surface.

#include "baking/AbstractMapBakerFactory.h"
#include "baking/lowpoly/LowPolyMapBaker.h"
#include "baking/lowpoly/UV2SvgBaker.h"

namespace Ond::Baking {

class ColorMapBaker : public LowPolyMapBaker
{
public:
    void init() override;
    QString label() const override;
    QString description() const override;
    std::string identifier() const override;
    Surfaces::SurfaceSPtr process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene) override;

    // The SVG text of the last run, for output in that format.
    const QByteArray& svgData() const { return m_svgBaker.data(); }
    const UV2SvgBaker& svgBaker() const { return m_svgBaker; }

private:
    UV2SvgBaker m_svgBaker;
};

class ColorMapBakerFactory : public AbstractMapBakerFactory
{
public:
    AbstractMapBaker* create() const override { return new ColorMapBaker(); }
};

} // namespace Ond::Baking
