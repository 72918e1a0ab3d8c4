#pragma once
// The one class behind the eleven "from mesh" bakers: a low-definition mesh,
// one or more high-definition meshes and an optional cage give one map. The
// kind selects the map and its property list.

#include "baking/AbstractMapBaker.h"

#include "scene/graph/Scene.h"

#include <cstdint>

namespace Ond::Baking {

class AbstractBakingContext;

class DetailMapBaker : public AbstractMapBaker
{
public:
    enum Kind : std::int32_t {
        Height = 0,
        Normal = 1,
        Color = 2,
        AmbientOcclusion = 3,
        BentNormals = 4,
        Mask = 5,
        Thickness = 6,
        Texture = 7,
        Position = 8,
        Curvature = 9,
        Curvature1 = 10
    };
    static constexpr int KindCount = 11;

    explicit DetailMapBaker(Kind kind);

    Kind kind() const { return m_kind; }

    std::vector<std::string> ownPropertyIdentifiers() const override;
    QString label() const override;
    QString description() const override;
    std::string identifier() const override;
    bool isAvailable(QString* why) const override;
    // The name of the bake job in progress reports.
    virtual QString progressName() const;

    // Bakes the map; `cage` may be null. Throws on failure.
    Surfaces::SurfaceSPtr process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& low,
                                  const SceneGraph::SceneSPtr& high, const SceneGraph::SceneSPtr& cage);

private:
    Kind m_kind;
};

} // namespace Ond::Baking
