#pragma once
// Place of an entity in the transform hierarchy. The hierarchy is an
// intrusive list of non-owning pointers; the entities themselves stay a flat
// list in the Scene. Each entity yields one global transform per instance
// transform (one if it has none) times one per global transform of its
// parent; both lists, with and without the geometric transform, are cached
// and invalidated over the subtree.

#include "scene/graph/EntityComponent.h"

#include <QString>

#include <Eigen/Core>

#include <functional>
#include <vector>

namespace Ond::SceneGraph {

using TransformList = std::vector<Eigen::Matrix4f>;

class LocationComponent : public EntityComponent
{
    Q_OBJECT

public:
    enum ParameterId { All = 0, Parent = 1, LocalTransform = 2, GeometricTransform = 3 };
    Q_ENUM(ParameterId)
    static QString parameterName(int id);

    explicit LocationComponent(const Eigen::Matrix4f& localTransform = Eigen::Matrix4f::Identity());
    // Detaches every child, then itself.
    ~LocationComponent() override;

    // --- Hierarchy
    // The new child goes to the head of the parent's child list. Refused
    // (false) if it would make a cycle.
    bool setParent(LocationComponent* parent);
    LocationComponent* getParent() const { return m_parent; }
    LocationComponent* getFirstChild() const { return m_firstChild; }
    LocationComponent* getNextSibling() const { return m_nextSibling; }
    LocationComponent* getPreviousSibling() const { return m_previousSibling; }
    std::vector<LocationComponent*> getChildren() const;
    // Stops at the first false and returns false then.
    bool forAllChildren(const std::function<bool(LocationComponent*)>& function) const;

    // --- Transforms
    const Eigen::Matrix4f& getLocalTransform() const { return m_localTransform; }
    const Eigen::Matrix4f& getGeometricTransform() const { return m_geometricTransform; }
    // An exactly equal matrix changes nothing and raises nothing.
    void setLocalTransform(const Eigen::Matrix4f& matrix);
    // Applies to this entity's geometry only, never to its children.
    void setGeometricTransform(const Eigen::Matrix4f& matrix);
    const TransformList& getInstanceTransforms() const { return m_instanceTransforms; }
    void setInstanceTransforms(TransformList transforms);

    const TransformList& getGlobalTransforms(bool withGeometric = true) const;
    // The first of getGlobalTransforms.
    Eigen::Matrix4f getGlobalTransform(bool withGeometric = true) const;
    // Clears both caches here and in the whole subtree.
    void invalidateGlobalTransform();
    bool isGlobalTransformCached(bool withGeometric) const;

    void copyFrom(const EntityComponent& other) override;

signals:
    void parameterChanged(Ond::SceneGraph::LocationComponent::ParameterId id);

private:
    void detach();
    bool isAncestorOrSelf(const LocationComponent* other) const;

    struct TransformCache
    {
        bool valid = false;
        TransformList matrices;
    };

    Eigen::Matrix4f m_localTransform;
    Eigen::Matrix4f m_geometricTransform;
    LocationComponent* m_parent = nullptr;
    LocationComponent* m_previousSibling = nullptr;
    LocationComponent* m_nextSibling = nullptr;
    LocationComponent* m_firstChild = nullptr;
    TransformList m_instanceTransforms;
    mutable TransformCache m_withGeometric;
    mutable TransformCache m_withoutGeometric;
};

} // namespace Ond::SceneGraph
