#pragma once
// Turns the UV layout of a mesh into an SVG text, one filled shape per UV
// island.

#include "baking/VectorialMapBaker.h"

#include "scene/graph/Scene.h"

namespace Ond::Baking {

class AbstractBakingContext;

class UV2SvgBaker : public VectorialMapBaker
{
public:
    QString label() const override;
    QString description() const override;
    std::string identifier() const override;

    // The whole-number offset of the UV square that is drawn.
    void setTile(int u, int v);
    int tileU() const { return m_tileU; }
    int tileV() const { return m_tileV; }

    // Writes the SVG text into data(). False when the scene has nothing to
    // draw; throws on failure.
    bool process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene);

private:
    int m_tileU = 0;
    int m_tileV = 0;
};

} // namespace Ond::Baking
