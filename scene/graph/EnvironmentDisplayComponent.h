#pragma once
// An environment dome. Only the info report reads it.

#include "scene/graph/DisplayComponent.h"

namespace Ond::SceneGraph {

class EnvironmentDisplayComponent : public DisplayComponent
{
    Q_OBJECT

public:
    enum ParameterId { All = 0, EnvironmentTexture = 1, PanoramaTexture = 2, DomeVisible = 3 };
    Q_ENUM(ParameterId)
    static QString parameterName(int id);

    EnvironmentDisplayComponent();

    const QString& getEnvironmentTexture() const { return m_environmentTexture; }
    void setEnvironmentTexture(const QString& path);
    const QString& getPanoramaTexture() const { return m_panoramaTexture; }
    void setPanoramaTexture(const QString& path);
    bool isDomeVisible() const { return m_domeVisible; }
    void setDomeVisible(bool visible);

    void copyFrom(const EntityComponent& other) override;
    // A dome has no extent: the empty box.
    const BoundingBox& getBoundingBox() const override;
    // Visitors only see meshes.
    void accept(ISceneVisitor& visitor) override;
    BitField<int> getRenderFlags() const override { return m_renderFlags; }
    void setRenderFlags(BitField<int> flags) override { m_renderFlags = flags; }

signals:
    void parameterChanged(Ond::SceneGraph::EnvironmentDisplayComponent::ParameterId id);

private:
    QString m_environmentTexture;
    QString m_panoramaTexture;
    bool m_domeVisible = false;
    BitField<int> m_renderFlags = DefaultRenderFlags;
};

} // namespace Ond::SceneGraph
