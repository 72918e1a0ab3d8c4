#include "scene/graph/MaterialDefinition.h"

namespace Ond::SceneGraph {

MaterialDefinition::MaterialDefinition() : color(defaultColor()) {}

MaterialDefinition::~MaterialDefinition() = default;

const Eigen::Vector4f& MaterialDefinition::defaultColor()
{
    static const Eigen::Vector4f white(1.0f, 1.0f, 1.0f, 1.0f);
    return white;
}

UserMaterialDefinition::UserMaterialDefinition(const QString& materialName) : name(materialName)
{
    label = materialName;
}

UniformColorMaterialDefinition::UniformColorMaterialDefinition(const Eigen::Vector4f& uniform)
    : uniformColor(uniform)
{
}

std::shared_ptr<VertexColorMaterialDefinition> VertexColorMaterialDefinition::instance()
{
    static const auto shared = std::make_shared<VertexColorMaterialDefinition>();
    return shared;
}

std::shared_ptr<WireframeMaterialDefinition> WireframeMaterialDefinition::instance()
{
    static const auto shared = std::make_shared<WireframeMaterialDefinition>();
    return shared;
}

std::shared_ptr<BasisMaterialDefinition> BasisMaterialDefinition::instance()
{
    static const auto shared = std::make_shared<BasisMaterialDefinition>();
    return shared;
}

} // namespace Ond::SceneGraph
