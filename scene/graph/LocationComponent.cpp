#include "scene/graph/LocationComponent.h"

#include <algorithm>

namespace Ond::SceneGraph {

QString LocationComponent::parameterName(int id)
{
    switch (id) {
    case All: return QStringLiteral("all");
    case Parent: return QStringLiteral("parent");
    case LocalTransform: return QStringLiteral("local_transform");
    case GeometricTransform: return QStringLiteral("geometric_transform");
    default: return QString();
    }
}

LocationComponent::LocationComponent(const Eigen::Matrix4f& localTransform)
    : m_localTransform(localTransform), m_geometricTransform(Eigen::Matrix4f::Identity())
{
}

LocationComponent::~LocationComponent()
{
    while (m_firstChild) {
        LocationComponent* child = m_firstChild;
        child->detach();
        child->invalidateGlobalTransform();
    }
    detach();
}

void LocationComponent::detach()
{
    if (!m_parent)
        return;
    if (m_previousSibling)
        m_previousSibling->m_nextSibling = m_nextSibling;
    else
        m_parent->m_firstChild = m_nextSibling;
    if (m_nextSibling)
        m_nextSibling->m_previousSibling = m_previousSibling;
    m_parent = nullptr;
    m_previousSibling = nullptr;
    m_nextSibling = nullptr;
}

bool LocationComponent::isAncestorOrSelf(const LocationComponent* other) const
{
    for (const LocationComponent* p = other; p; p = p->m_parent) {
        if (p == this)
            return true;
    }
    return false;
}

bool LocationComponent::setParent(LocationComponent* parent)
{
    if (parent == m_parent)
        return true;
    // A parent inside our own subtree would make the hierarchy a loop.
    if (parent && isAncestorOrSelf(parent))
        return false;
    detach();
    if (parent) {
        m_parent = parent;
        m_nextSibling = parent->m_firstChild;
        if (m_nextSibling)
            m_nextSibling->m_previousSibling = this;
        parent->m_firstChild = this;
    }
    invalidateGlobalTransform();
    emit parameterChanged(Parent);
    return true;
}

std::vector<LocationComponent*> LocationComponent::getChildren() const
{
    std::vector<LocationComponent*> children;
    for (LocationComponent* c = m_firstChild; c; c = c->m_nextSibling)
        children.push_back(c);
    return children;
}

bool LocationComponent::forAllChildren(const std::function<bool(LocationComponent*)>& function) const
{
    for (LocationComponent* c = m_firstChild; c;) {
        LocationComponent* next = c->m_nextSibling;
        if (!function(c))
            return false;
        c = next;
    }
    return true;
}

void LocationComponent::setLocalTransform(const Eigen::Matrix4f& matrix)
{
    if (matrix == m_localTransform)
        return;
    m_localTransform = matrix;
    invalidateGlobalTransform();
    emit parameterChanged(LocalTransform);
}

void LocationComponent::setGeometricTransform(const Eigen::Matrix4f& matrix)
{
    if (matrix == m_geometricTransform)
        return;
    m_geometricTransform = matrix;
    invalidateGlobalTransform();
    emit parameterChanged(GeometricTransform);
}

void LocationComponent::setInstanceTransforms(TransformList transforms)
{
    m_instanceTransforms = std::move(transforms);
    invalidateGlobalTransform();
}

const TransformList& LocationComponent::getGlobalTransforms(bool withGeometric) const
{
    TransformCache& cache = withGeometric ? m_withGeometric : m_withoutGeometric;
    if (cache.valid)
        return cache.matrices;
    cache.matrices.clear();
    cache.valid = true;

    const Eigen::Matrix4f& L = m_localTransform;
    const Eigen::Matrix4f& G = m_geometricTransform;
    TransformList& out = cache.matrices;

    if (!m_parent) {
        if (m_instanceTransforms.empty()) {
            out.push_back(withGeometric ? Eigen::Matrix4f(L * G) : L);
        } else {
            out.reserve(m_instanceTransforms.size());
            for (const auto& I : m_instanceTransforms)
                out.push_back(withGeometric ? Eigen::Matrix4f(L * I * G) : Eigen::Matrix4f(L * I));
        }
        return out;
    }

    // The parent's list never carries its geometric transform.
    const TransformList& parents = m_parent->getGlobalTransforms(false);
    out.reserve(parents.size() * std::max<size_t>(1, m_instanceTransforms.size()));
    if (m_instanceTransforms.empty()) {
        for (const auto& P : parents)
            out.push_back(withGeometric ? Eigen::Matrix4f(P * L * G) : Eigen::Matrix4f(P * L));
    } else {
        for (const auto& I : m_instanceTransforms) {
            const Eigen::Matrix4f LI = L * I;
            for (const auto& P : parents)
                out.push_back(withGeometric ? Eigen::Matrix4f(P * LI * G) : Eigen::Matrix4f(P * LI));
        }
    }
    return out;
}

Eigen::Matrix4f LocationComponent::getGlobalTransform(bool withGeometric) const
{
    const TransformList& list = getGlobalTransforms(withGeometric);
    return list.empty() ? Eigen::Matrix4f::Identity() : list.front();
}

void LocationComponent::invalidateGlobalTransform()
{
    m_withGeometric.valid = false;
    m_withoutGeometric.valid = false;
    for (LocationComponent* c = m_firstChild; c; c = c->m_nextSibling)
        c->invalidateGlobalTransform();
}

bool LocationComponent::isGlobalTransformCached(bool withGeometric) const
{
    return withGeometric ? m_withGeometric.valid : m_withoutGeometric.valid;
}

void LocationComponent::copyFrom(const EntityComponent& other)
{
    const auto* location = dynamic_cast<const LocationComponent*>(&other);
    if (!location || location == this)
        return;
    setLocalTransform(location->m_localTransform);
    setGeometricTransform(location->m_geometricTransform);
    setInstanceTransforms(location->m_instanceTransforms);
}

} // namespace Ond::SceneGraph
