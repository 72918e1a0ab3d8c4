#include "scene/graph/SubMesh.h"

namespace Ond::SceneGraph {

SubMesh::SubMesh(IndexBufferUPtr indexBuffer, PrimitiveType type, size_t perPrimitive,
                 MaterialDefinitionSPtr materialDefinition, BitField<int> flags)
    : indices(std::move(indexBuffer)),
      primitiveType(type),
      indicesPerPrimitive(perPrimitive),
      material(std::move(materialDefinition)),
      renderFlags(flags)
{
    updatePrimitiveCount();
}

SubMesh SubMesh::clone() const
{
    SubMesh copy;
    copy.indices = cloneBuffer(indices);
    copy.primitiveType = primitiveType;
    copy.primitiveCount = primitiveCount;
    copy.indicesPerPrimitive = indicesPerPrimitive;
    copy.material = material;
    copy.renderFlags = renderFlags;
    return copy;
}

void SubMesh::updatePrimitiveCount()
{
    primitiveCount = (indices && indicesPerPrimitive != 0) ? indices->size() / indicesPerPrimitive : 0;
}

} // namespace Ond::SceneGraph
