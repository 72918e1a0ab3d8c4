#pragma once
// Draws the selected meshes of a scene without the GL scene cache: each
// mesh is uploaded, drawn and freed in turn. For passes that run once per
// bake and would gain nothing from keeping the buffers.

#include "baking/lowpoly/SceneVisitor.h"

#include <vector>

namespace Ond::Baking {

class GLProgram;

class GLFilteredDrawVisitor : public SceneVisitor
{
public:
    // The program must be bound while the walk runs.
    GLFilteredDrawVisitor(GLProgram& program, uint32_t meshMask, uint32_t uvSet);
    bool visitMesh(const MeshItem& item) override;

    // in_uv0, in_normal, in_tangent, in_bitangent.
    static const std::vector<uint32_t>& semantics();

private:
    GLProgram& m_program;
    std::vector<float> m_floats;
    std::vector<uint32_t> m_indices;
};

} // namespace Ond::Baking
