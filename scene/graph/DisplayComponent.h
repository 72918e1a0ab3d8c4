#pragma once
// What an entity shows: a mesh or an environment.

#include "scene/graph/BitField.h"
#include "scene/graph/BoundingBox.h"
#include "scene/graph/EntityComponent.h"

#include <QString>

namespace Ond::SceneGraph {

class ISceneVisitor;

class DisplayComponent : public EntityComponent
{
    Q_OBJECT

public:
    enum ParameterId { All = 0, IsVisible = 1 };
    Q_ENUM(ParameterId)
    static QString parameterName(int id);

    DisplayComponent();

    bool isVisible() const { return m_isVisible; }
    void setVisible(bool visible);

    void copyFrom(const EntityComponent& other) override;
    // Box of the untransformed geometry.
    virtual const BoundingBox& getBoundingBox() const = 0;
    virtual void accept(ISceneVisitor& visitor) = 0;
    virtual BitField<int> getRenderFlags() const = 0;
    virtual void setRenderFlags(BitField<int> flags) = 0;

signals:
    void parameterChanged(Ond::SceneGraph::DisplayComponent::ParameterId id);

private:
    bool m_isVisible = true;
};

} // namespace Ond::SceneGraph
