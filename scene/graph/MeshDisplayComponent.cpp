#include "scene/graph/MeshDisplayComponent.h"

#include "scene/graph/Entity.h"
#include "scene/graph/ISceneVisitor.h"

namespace Ond::SceneGraph {

QString MeshDisplayComponent::parameterName(int id)
{
    switch (id) {
    case All: return QStringLiteral("all");
    case SubdivisionMethod: return QStringLiteral("subdivision_method");
    case SubdivisionLength: return QStringLiteral("subdivision_length");
    case SubdivisionNumber: return QStringLiteral("subdivision_number");
    default: return QString();
    }
}

MeshDisplayComponent::MeshDisplayComponent(Mesh::SPtr mesh) : m_mesh(std::move(mesh)) {}

void MeshDisplayComponent::setMesh(Mesh::SPtr mesh)
{
    m_mesh = std::move(mesh);
}

void MeshDisplayComponent::setSubdivisionMethod(uint32_t method)
{
    if (m_subdivisionMethod == method)
        return;
    m_subdivisionMethod = method;
    emit parameterChanged(SubdivisionMethod);
}

void MeshDisplayComponent::setSubdivisionLength(float length)
{
    if (m_subdivisionLength == length)
        return;
    m_subdivisionLength = length;
    emit parameterChanged(SubdivisionLength);
}

void MeshDisplayComponent::setSubdivisionNumber(uint32_t number)
{
    if (m_subdivisionNumber == number)
        return;
    m_subdivisionNumber = number;
    emit parameterChanged(SubdivisionNumber);
}

Eigen::Matrix4f MeshDisplayComponent::getGlobalTransform() const
{
    const Entity* entity = getEntity();
    const LocationComponent* location = entity ? entity->getLocation() : nullptr;
    return location ? location->getGlobalTransform(true) : Eigen::Matrix4f::Identity();
}

const std::vector<Eigen::Matrix4f>& MeshDisplayComponent::getGlobalTransforms() const
{
    static const std::vector<Eigen::Matrix4f> none;
    const Entity* entity = getEntity();
    const LocationComponent* location = entity ? entity->getLocation() : nullptr;
    return location ? location->getGlobalTransforms(true) : none;
}

void MeshDisplayComponent::copyFrom(const EntityComponent& other)
{
    DisplayComponent::copyFrom(other);
    const auto* mesh = dynamic_cast<const MeshDisplayComponent*>(&other);
    if (!mesh)
        return;
    setSubdivisionMethod(mesh->m_subdivisionMethod);
    setSubdivisionLength(mesh->m_subdivisionLength);
    setSubdivisionNumber(mesh->m_subdivisionNumber);
}

const BoundingBox& MeshDisplayComponent::getBoundingBox() const
{
    if (!m_mesh)
        return BoundingBox::emptyBox();
    // The Data stays alive through the Mesh unless another thread swaps it;
    // scenes are not read while they are being processed.
    const auto data = m_mesh->getData();
    return data ? data->getBoundingBox() : BoundingBox::emptyBox();
}

void MeshDisplayComponent::accept(ISceneVisitor& visitor)
{
    visitor.visit(this);
}

BitField<int> MeshDisplayComponent::getRenderFlags() const
{
    const auto data = m_mesh ? m_mesh->getData() : nullptr;
    if (!data)
        return 0;
    int flags = 0;
    for (const auto& sub : data->getSubMeshes())
        flags |= sub.renderFlags.value();
    return flags;
}

void MeshDisplayComponent::setRenderFlags(BitField<int> flags)
{
    const auto data = m_mesh ? m_mesh->getData() : nullptr;
    if (!data)
        return;
    for (size_t i = 0; i < data->getSubMeshCount(); ++i)
        data->setSubMeshFlags(i, flags);
}

} // namespace Ond::SceneGraph
