#include "baking/lowpoly/SceneVisitor.h"

#include "baking/lowpoly/GLBakeParameters.h"
#include "scene/graph/MeshDisplayComponent.h"

namespace Ond::Baking {

bool SceneVisitor::walk(const SceneGraph::Scene& scene)
{
    return scene.forAllEntities([this](const SceneGraph::Entity::SPtr& entity) {
        if (!entity->isEnabled())
            return true;
        const SceneGraph::MeshDisplayComponent* display = entity->getMeshDisplay();
        if (!display || !display->getMesh())
            return true;
        MeshItem item;
        item.data = display->getMesh()->getData();
        if (!item.data || item.data->getVertexCount() == 0)
            return true;
        item.entity = entity.get();
        item.transform = display->getGlobalTransform();
        for (const SceneGraph::SubMesh& sub : item.data->getSubMeshes())
            item.selectionMask |= selectionMaskFromRenderFlags(sub.renderFlags.value());
        if (!passesMeshMask(item.selectionMask, m_meshMask))
            return true;
        return visitMesh(item);
    });
}

bool BBoxVisitor::visitMesh(const MeshItem& item)
{
    const SceneGraph::Vec3Buffer* positions = item.data->getPositions();
    const Eigen::Matrix3f linear = item.transform.topLeftCorner<3, 3>();
    const Eigen::Vector3f translation = item.transform.topRightCorner<3, 1>();
    for (const Eigen::Vector3f& p : *positions) {
        const Eigen::Vector3f world = linear * p + translation;
        minimum = minimum.cwiseMin(world);
        maximum = maximum.cwiseMax(world);
    }
    return true;
}

} // namespace Ond::Baking
