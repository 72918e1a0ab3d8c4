#pragma once
// Materials as the scene graph sees them: a colour and a label. A file's own
// materials are UserMaterialDefinitions carrying the name from the file; the
// generated kinds without parameters are shared singletons.

#include <QString>

#include <Eigen/Core>

#include <memory>

namespace Ond::SceneGraph {

class MaterialDefinition
{
public:
    MaterialDefinition();
    virtual ~MaterialDefinition();

    // Opaque white.
    static const Eigen::Vector4f& defaultColor();

    Eigen::Vector4f color;
    QString label;
};

class UserMaterialDefinition : public MaterialDefinition
{
public:
    UserMaterialDefinition() = default;
    // The name in the source file; it is also the first label.
    explicit UserMaterialDefinition(const QString& materialName);

    QString name;
};

class UniformColorMaterialDefinition : public MaterialDefinition
{
public:
    explicit UniformColorMaterialDefinition(const Eigen::Vector4f& uniform);

    Eigen::Vector4f uniformColor;
};

class VertexColorMaterialDefinition : public MaterialDefinition
{
public:
    static std::shared_ptr<VertexColorMaterialDefinition> instance();
};

class WireframeMaterialDefinition : public MaterialDefinition
{
public:
    static std::shared_ptr<WireframeMaterialDefinition> instance();
};

class BasisMaterialDefinition : public MaterialDefinition
{
public:
    static std::shared_ptr<BasisMaterialDefinition> instance();
};

using MaterialDefinitionSPtr = std::shared_ptr<MaterialDefinition>;

} // namespace Ond::SceneGraph
