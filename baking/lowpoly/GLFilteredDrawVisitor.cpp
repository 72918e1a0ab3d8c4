#include "baking/lowpoly/GLFilteredDrawVisitor.h"

#include "baking/lowpoly/GLBakeParameters.h"
#include "baking/lowpoly/GLProgram.h"
#include "baking/lowpoly/SceneGL.h"

#include <Eigen/LU>
#include <GL/glew.h>

#include <algorithm>

namespace Ond::Baking {

GLFilteredDrawVisitor::GLFilteredDrawVisitor(GLProgram& program, uint32_t meshMask, uint32_t uvSet)
    : SceneVisitor(meshMask, uvSet), m_program(program)
{
}

const std::vector<uint32_t>& GLFilteredDrawVisitor::semantics()
{
    static const std::vector<uint32_t> list = {SemanticUv0, SemanticNormal, SemanticTangent, SemanticBitangent};
    return list;
}

bool GLFilteredDrawVisitor::visitMesh(const MeshItem& item)
{
    const SceneGraph::Mesh::Data& data = *item.data;
    const size_t n = data.getVertexCount();

    // Only the parts that pass the filter.
    m_indices.clear();
    for (const SceneGraph::SubMesh& sub : data.getSubMeshes()) {
        if (sub.primitiveType != SceneGraph::PrimitiveType::Triangles || sub.indicesPerPrimitive != 3 || !sub.indices
            || !passesMeshMask(selectionMaskFromRenderFlags(sub.renderFlags.value()), m_meshMask))
            continue;
        m_indices.insert(m_indices.end(), sub.indices->begin(), sub.indices->begin() + sub.indices->size() / 3 * 3);
    }
    if (m_indices.empty())
        return true;
    for (uint32_t& index : m_indices)
        if (index >= n)
            index = 0;

    // Planar: all UVs, then all normals, tangents, binormals.
    m_floats.assign(n * (2 + 3 * 3), 0.0f);
    float* out = m_floats.data();
    const SceneGraph::Vec2Buffer* uvs = data.getUvSet(m_uvSet);
    if (!uvs)
        uvs = data.getUvSet(0);
    if (uvs && uvs->size() >= n)
        std::copy_n(reinterpret_cast<const float*>(uvs->data()), n * 2, out);
    out += n * 2;
    for (const SceneGraph::Vec3Buffer* buffer : {data.getNormals(), data.getTangents(), data.getBinormals()}) {
        if (buffer && buffer->size() >= n)
            std::copy_n(reinterpret_cast<const float*>(buffer->data()), n * 3, out);
        out += n * 3;
    }

    GLuint vertexArray = 0, buffers[2] = {0, 0};
    glGenVertexArrays(1, &vertexArray);
    glGenBuffers(2, buffers);
    glBindVertexArray(vertexArray);
    glBindBuffer(GL_ARRAY_BUFFER, buffers[0]);
    glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(m_floats.size() * sizeof(float)), m_floats.data(), GL_STATIC_DRAW);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers[1]);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr(m_indices.size() * sizeof(uint32_t)), m_indices.data(),
                 GL_STATIC_DRAW);
    size_t offset = 0;
    for (uint32_t semantic : semantics()) {
        const GLint components = semantic == SemanticUv0 ? 2 : 3;
        glEnableVertexAttribArray(semantic);
        glVertexAttribPointer(semantic, components, GL_FLOAT, GL_FALSE, components * GLsizei(sizeof(float)),
                              reinterpret_cast<const void*>(offset));
        offset += n * size_t(components) * sizeof(float);
    }

    const Eigen::Matrix3f normalMatrix = item.transform.topLeftCorner<3, 3>().inverse().transpose();
    m_program.setMat3("normalMatrix", normalMatrix);
    glDrawElements(GL_TRIANGLES, GLsizei(m_indices.size()), GL_UNSIGNED_INT, nullptr);

    glBindVertexArray(0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glDeleteBuffers(2, buffers);
    glDeleteVertexArrays(1, &vertexArray);
    return true;
}

} // namespace Ond::Baking
