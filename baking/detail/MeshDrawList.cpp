#include "baking/detail/MeshDrawList.h"

#include "baking/detail/MeshNameId.h"
#include "baking/detail/SmoothedNormals.h"
#include "baking/lowpoly/GLProgram.h"
#include "baking/lowpoly/SceneGL.h"
#include "opengl/QGLManager.h"
#include "program/LogChannel.h"
#include "scene/graph/Entity.h"
#include "scene/graph/Mesh.h"
#include "scene/graph/MeshDisplayComponent.h"

#include <Eigen/LU>
#include <GL/glew.h>

#include <algorithm>

namespace Ond::Baking {

using namespace SceneGraph;

MeshDrawList::~MeshDrawList()
{
    release();
}

MeshDrawList::Key MeshDrawList::keyOf(const Scene& scene, int32_t uvSet, uint32_t flags)
{
    const auto* manager = OpenGLUtils::QGLManager::instance();
    const void* context = manager ? static_cast<const void*>(manager->contextData().first) : nullptr;
    return {SceneGL::stampOf(scene), uvSet, flags, context};
}

void MeshDrawList::forget()
{
    m_records.clear();
    release();
}

void MeshDrawList::release()
{
    for (Record& record : m_records) {
        glDeleteVertexArrays(1, &record.vertexArray);
        glDeleteBuffers(1, &record.vertexBuffer);
        glDeleteBuffers(1, &record.indexBuffer);
    }
    m_records.clear();
    m_noPositions.clear();
    m_noNormals.clear();
    m_noUvs.clear();
    m_built = false;
}

void MeshDrawList::build(const Scene& scene, const Key& key, bool smoothNormals, bool normalsRequired)
{
    if (m_built && m_key.context != key.context)
        forget();
    release();
    std::vector<float> floats;
    std::vector<Eigen::Vector3f> smoothed;
    std::vector<uint32_t> indices;
    scene.forAllEntities([&](const Entity::SPtr& entity) {
        if (!entity->isEnabled())
            return true;
        const MeshDisplayComponent* display = entity->getMeshDisplay();
        if (!display || !display->getMesh())
            return true;
        const Mesh::DataSPtr data = display->getMesh()->getData();
        if (!data)
            return true;
        const QString& name = entity->getName();
        const size_t n = data->getVertexCount();
        const Vec3Buffer* normals = data->getNormals();
        const Vec2Buffer* uvs = data->getUvSet(size_t(std::max(key.uvSet, 0)));
        bool complete = true;
        if (n == 0) {
            m_noPositions << name;
            complete = false;
        }
        const bool hasNormals = normals && normals->size() >= n && !normals->empty();
        if (!hasNormals && normalsRequired) {
            m_noNormals << name;
            complete = false;
        }
        if (key.uvSet < 0 || !uvs || uvs->size() < n || uvs->empty()) {
            m_noUvs << QString(name);
            complete = false;
        }
        if (!complete)
            return true;

        indices.clear();
        for (const SubMesh& sub : data->getSubMeshes()) {
            if (sub.primitiveType != PrimitiveType::Triangles || sub.indicesPerPrimitive != 3 || !sub.indices)
                continue;
            const size_t count = sub.indices->size() / 3 * 3;
            indices.insert(indices.end(), sub.indices->begin(), sub.indices->begin() + count);
        }
        for (uint32_t& index : indices)
            if (index >= n)
                index = 0; // a broken index must not read outside the buffer
        if (indices.empty())
            return true;

        // Planar: positions, normals, UVs, then the smoothed normals.
        const Vec3Buffer& positions = *data->getPositions();
        floats.resize(n * (smoothNormals ? 11 : 8));
        std::copy_n(reinterpret_cast<const float*>(positions.data()), n * 3, floats.data());
        if (hasNormals)
            std::copy_n(reinterpret_cast<const float*>(normals->data()), n * 3, floats.data() + n * 3);
        else
            std::fill_n(floats.data() + n * 3, n * 3, 0.0f);
        std::copy_n(reinterpret_cast<const float*>(uvs->data()), n * 2, floats.data() + n * 6);
        if (smoothNormals) {
            smoothed.resize(n);
            computeSmoothedNormals(positions.data(), normals->data(), n, smoothed.data());
            std::copy_n(reinterpret_cast<const float*>(smoothed.data()), n * 3, floats.data() + n * 8);
        }

        Record record;
        record.model = display->getGlobalTransform();
        record.normalMatrix = record.model.topLeftCorner<3, 3>().inverse().transpose();
        record.meshId = meshNameId(name);
        record.indexCount = uint32_t(indices.size());
        glGenVertexArrays(1, &record.vertexArray);
        glGenBuffers(1, &record.vertexBuffer);
        glGenBuffers(1, &record.indexBuffer);
        glBindVertexArray(record.vertexArray);
        glBindBuffer(GL_ARRAY_BUFFER, record.vertexBuffer);
        glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(floats.size() * sizeof(float)), floats.data(), GL_STATIC_DRAW);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, record.indexBuffer);
        glBufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr(indices.size() * sizeof(uint32_t)), indices.data(),
                     GL_STATIC_DRAW);
        const auto attribute = [](unsigned location, int components, size_t offsetFloats) {
            glEnableVertexAttribArray(location);
            glVertexAttribPointer(location, components, GL_FLOAT, GL_FALSE, components * GLsizei(sizeof(float)),
                                  reinterpret_cast<const void*>(offsetFloats * sizeof(float)));
        };
        attribute(PositionLocation, 3, 0);
        attribute(NormalLocation, 3, n * 3);
        attribute(UvLocation, 2, n * 6);
        if (smoothNormals)
            attribute(SmoothNormalLocation, 3, n * 8);
        glBindVertexArray(0);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        m_records.push_back(record);
        return true;
    });
    m_key = key;
    m_built = true;
}

void MeshDrawList::reportMissing(const QString& meshLabel) const
{
    const auto line = [&meshLabel](const QString& attribute, const QStringList& names) {
        if (!names.isEmpty())
            Core::bakersChannel().warning(QStringLiteral("Could not find ") + attribute + QStringLiteral(" in ")
                                          + meshLabel + QStringLiteral("mesh : ") + names.join(QStringLiteral(", ")));
    };
    line(QStringLiteral("positions"), m_noPositions);
    line(QStringLiteral("normals"), m_noNormals);
    line(QStringLiteral("UV set ") + QString::number(m_key.uvSet), m_noUvs);
}

Eigen::Vector4f MeshDrawList::idColor(uint32_t id)
{
    constexpr float scale = 0.003921569f; // 1 / 255
    return {float(id & 0xFFu) * scale, float((id >> 8) & 0xFFu) * scale, float((id >> 16) & 0xFFu) * scale,
            float(id >> 24) * scale};
}

void MeshDrawList::draw(GLProgram& program, bool positionOnly) const
{
    for (const Record& record : m_records) {
        const Eigen::Vector4f color = idColor(record.meshId);
        program.setVec4("meshIdColor", color.x(), color.y(), color.z(), color.w());
        if (!positionOnly)
            program.setMat3("normalMatrix", record.normalMatrix);
        program.setMat4("model", record.model);
        glBindVertexArray(record.vertexArray);
        glDrawElements(GL_TRIANGLES, GLsizei(record.indexCount), GL_UNSIGNED_INT, nullptr);
    }
    glBindVertexArray(0);
}

} // namespace Ond::Baking
