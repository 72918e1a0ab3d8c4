#pragma once
// One index list of a mesh with its material and render flags. Move-only:
// the index buffer is owned outright.

#include "scene/graph/BinaryBuffer.h"
#include "scene/graph/BitField.h"
#include "scene/graph/MaterialDefinition.h"
#include "scene/graph/PrimitiveType.h"

#include <cstddef>
#include <memory>

namespace Ond::SceneGraph {

struct SubMesh
{
    SubMesh() = default;
    // primitiveCount follows from the index count; 0 without indices.
    SubMesh(IndexBufferUPtr indexBuffer, PrimitiveType type, size_t perPrimitive,
            MaterialDefinitionSPtr materialDefinition, BitField<int> flags = DefaultRenderFlags);

    SubMesh(SubMesh&&) = default;
    SubMesh& operator=(SubMesh&&) = default;
    SubMesh(const SubMesh&) = delete;
    SubMesh& operator=(const SubMesh&) = delete;

    // Deep copy of the indices; the material is shared.
    SubMesh clone() const;

    // Recomputes primitiveCount from the index buffer and the stride.
    void updatePrimitiveCount();

    IndexBufferUPtr indices;
    PrimitiveType primitiveType = PrimitiveType::Triangles;
    size_t primitiveCount = 0;
    size_t indicesPerPrimitive = 3;
    MaterialDefinitionSPtr material;
    BitField<int> renderFlags = DefaultRenderFlags;
};

} // namespace Ond::SceneGraph
