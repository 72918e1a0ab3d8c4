#include "baking/lowpoly/SceneGL.h"

#include "baking/lowpoly/GLFilteredDrawVisitor.h"
#include "baking/lowpoly/GLProgram.h"
#include "baking/lowpoly/GLTileTarget.h"
#include "baking/lowpoly/SceneVisitor.h"
#include "opengl/QGLManager.h"
#include "program/LogChannel.h"

#include <Eigen/LU>
#include <GL/glew.h>

#include <algorithm>
#include <array>
#include <memory>

namespace Ond::Baking {

namespace {

uint32_t componentCount(uint32_t semantic)
{
    return semantic == SemanticUv0 ? 2 : 3;
}

// Creates one MeshGL per mesh: its attribute layout and empty buffers.
class InitializeVisitor : public SceneVisitor
{
public:
    InitializeVisitor(uint32_t uvSet, std::vector<MeshGL>& meshes, uint64_t& vertexTotal, uint64_t& indexTotal)
        : SceneVisitor(0xFFFFFFFFu, uvSet), m_meshes(meshes), m_vertexTotal(vertexTotal), m_indexTotal(indexTotal)
    {
    }

    bool visitMesh(const MeshItem& item) override
    {
        MeshGL mesh;
        mesh.selectionMask = item.selectionMask;
        mesh.vertexCount = uint32_t(item.data->getVertexCount());
        mesh.vertexOffset = uint32_t(m_vertexTotal);
        mesh.indexOffset = uint32_t(m_indexTotal);
        mesh.transform = item.transform;
        mesh.normalMatrix = item.transform.topLeftCorner<3, 3>().inverse().transpose();
        uint32_t indexCount = 0;
        for (const SceneGraph::SubMesh& sub : item.data->getSubMeshes()) {
            if (sub.primitiveType != SceneGraph::PrimitiveType::Triangles || sub.indicesPerPrimitive != 3
                || !sub.indices)
                continue;
            const uint32_t count = uint32_t(sub.indices->size() / 3 * 3);
            mesh.ranges.push_back({indexCount, count, selectionMaskFromRenderFlags(sub.renderFlags.value())});
            indexCount += count;
        }
        mesh.indexCount = indexCount;
        uint64_t offset = 0;
        for (uint32_t semantic : SceneGL::uploadedSemantics()) {
            const uint32_t components = componentCount(semantic);
            mesh.attributes.push_back({semantic, components, offset, components * 4});
            offset += uint64_t(mesh.vertexCount) * components * 4;
        }
        glGenVertexArrays(1, &mesh.vertexArray);
        glGenBuffers(1, &mesh.vertexBuffer);
        glGenBuffers(1, &mesh.indexBuffer);
        m_vertexTotal += mesh.vertexCount;
        m_indexTotal += indexCount;
        m_meshes.push_back(std::move(mesh));
        return glGetError() == GL_NO_ERROR;
    }

private:
    std::vector<MeshGL>& m_meshes;
    uint64_t& m_vertexTotal;
    uint64_t& m_indexTotal;
};

// Walks the same meshes in the same order and uploads their data.
class FillVisitor : public SceneVisitor
{
public:
    FillVisitor(uint32_t uvSet, std::vector<MeshGL>& meshes) : SceneVisitor(0xFFFFFFFFu, uvSet), m_meshes(meshes) {}

    bool visitMesh(const MeshItem& item) override
    {
        if (m_next >= m_meshes.size())
            return false;
        MeshGL& mesh = m_meshes[m_next++];
        const SceneGraph::Mesh::Data& data = *item.data;
        const size_t n = mesh.vertexCount;
        m_floats.assign(n * (2 + 3 * 4), 0.0f);
        float* out = m_floats.data();

        const SceneGraph::Vec2Buffer* uvs = data.getUvSet(m_uvSet);
        if (!uvs)
            uvs = data.getUvSet(0);
        if (uvs && uvs->size() >= n)
            std::copy_n(reinterpret_cast<const float*>(uvs->data()), n * 2, out);
        out += n * 2;
        for (const SceneGraph::Vec3Buffer* buffer :
             {data.getPositions(), data.getNormals(), data.getTangents(), data.getBinormals()}) {
            if (buffer && buffer->size() >= n)
                std::copy_n(reinterpret_cast<const float*>(buffer->data()), n * 3, out);
            out += n * 3;
        }

        m_indices.clear();
        m_indices.reserve(mesh.indexCount);
        for (const SceneGraph::SubMesh& sub : data.getSubMeshes()) {
            if (sub.primitiveType != SceneGraph::PrimitiveType::Triangles || sub.indicesPerPrimitive != 3
                || !sub.indices)
                continue;
            const size_t count = sub.indices->size() / 3 * 3;
            m_indices.insert(m_indices.end(), sub.indices->begin(), sub.indices->begin() + count);
        }
        for (uint32_t& index : m_indices)
            if (index >= n)
                index = 0; // a broken index must not read outside the buffer

        glBindVertexArray(mesh.vertexArray);
        glBindBuffer(GL_ARRAY_BUFFER, mesh.vertexBuffer);
        glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(m_floats.size() * sizeof(float)), m_floats.data(), GL_STATIC_DRAW);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, mesh.indexBuffer);
        glBufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr(m_indices.size() * sizeof(uint32_t)), m_indices.data(),
                     GL_STATIC_DRAW);
        for (const MeshGLAttribute& a : mesh.attributes) {
            glEnableVertexAttribArray(a.semantic);
            glVertexAttribPointer(a.semantic, GLint(a.components), GL_FLOAT, GL_FALSE, GLsizei(a.stride),
                                  reinterpret_cast<const void*>(uintptr_t(a.offset)));
        }
        glBindVertexArray(0);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        return glGetError() == GL_NO_ERROR;
    }

private:
    std::vector<MeshGL>& m_meshes;
    size_t m_next = 0;
    std::vector<float> m_floats;
    std::vector<uint32_t> m_indices;
};

uint64_t mix(uint64_t hash, uint64_t value)
{
    hash ^= value + 0x9E3779B97F4A7C15ull + (hash << 6) + (hash >> 2);
    return hash;
}

struct CacheSlot
{
    std::unique_ptr<SceneGL> scene;
    bool valid = false;
    // The context whose vertex arrays the slot holds: they exist only there.
    const void* owner = nullptr;
};

const void* currentContextIdentity()
{
    const auto* manager = OpenGLUtils::QGLManager::instance();
    return manager ? static_cast<const void*>(manager->contextData().first) : nullptr;
}

// Frees the slot's GL objects if they belong to the current context;
// otherwise they can only be forgotten.
void dropSlot(CacheSlot& entry, const void* current)
{
    if (entry.scene && entry.owner != current)
        entry.scene->forget();
    entry.scene.reset();
    entry.valid = false;
}

std::array<CacheSlot, 2>& cacheSlots()
{
    // Never destroyed: the buffers would outlive the context at exit.
    static auto* entries = new std::array<CacheSlot, 2>();
    return *entries;
}

} // namespace

SceneGL::SceneGL(const SceneGraph::Scene& scene, uint32_t uvSet) : m_uvSet(uvSet), m_sceneStamp(stampOf(scene))
{
    size_t count = 0;
    scene.forAllMeshes([&count](const SceneGraph::Mesh::SPtr&) {
        ++count;
        return true;
    });
    m_meshes.reserve(count);
    glGetError();
    InitializeVisitor initialize(uvSet, m_meshes, m_vertexTotal, m_indexTotal);
    bool ok = initialize.walk(scene);
    if (ok && !m_meshes.empty()) {
        FillVisitor fill(uvSet, m_meshes);
        ok = fill.walk(scene);
    }
    if (!ok) {
        Core::bakersChannel().error(QStringLiteral("Upload of the scene to OpenGL failed."));
        releaseAll();
    }
}

SceneGL::~SceneGL()
{
    releaseAll();
}

void SceneGL::forget()
{
    m_meshes.clear();
    m_vertexTotal = 0;
    m_indexTotal = 0;
}

void SceneGL::releaseAll()
{
    for (MeshGL& mesh : m_meshes) {
        glDeleteVertexArrays(1, &mesh.vertexArray);
        glDeleteBuffers(1, &mesh.vertexBuffer);
        glDeleteBuffers(1, &mesh.indexBuffer);
    }
    m_meshes.clear();
    m_vertexTotal = 0;
    m_indexTotal = 0;
}

void SceneGL::draw(GLProgram& program, uint32_t mask) const
{
    for (const MeshGL& mesh : m_meshes) {
        if (!passesMeshMask(mesh.selectionMask, mask))
            continue;
        program.setMat3("normalMatrix", mesh.normalMatrix);
        program.setMat4("model", mesh.transform);
        glBindVertexArray(mesh.vertexArray);
        for (const MeshGLRange& range : mesh.ranges) {
            if (range.count == 0 || !passesMeshMask(range.selectionMask, mask))
                continue;
            glDrawElements(GL_TRIANGLES, GLsizei(range.count), GL_UNSIGNED_INT,
                           reinterpret_cast<const void*>(uintptr_t(range.firstIndex) * sizeof(uint32_t)));
        }
    }
    glBindVertexArray(0);
}

const std::vector<uint32_t>& SceneGL::uploadedSemantics()
{
    static const std::vector<uint32_t> semantics = {SemanticUv0, SemanticPosition, SemanticNormal, SemanticTangent,
                                                    SemanticBitangent};
    return semantics;
}

uint64_t SceneGL::stampOf(const SceneGraph::Scene& scene)
{
    uint64_t hash = mix(0, uint64_t(uintptr_t(&scene)));
    hash = mix(hash, scene.getRevision());
    scene.forAllEntities([&hash](const SceneGraph::Entity::SPtr& entity) {
        hash = mix(hash, uint64_t(uintptr_t(entity.get())));
        hash = mix(hash, entity->isEnabled() ? 1 : 0);
        return true;
    });
    scene.forAllMeshes([&hash](const SceneGraph::Mesh::SPtr& mesh) {
        const auto data = mesh->getData();
        hash = mix(hash, uint64_t(uintptr_t(data.get())));
        if (data) {
            hash = mix(hash, data->getRevision());
            for (const SceneGraph::SubMesh& sub : data->getSubMeshes())
                hash = mix(hash, uint32_t(sub.renderFlags.value()));
        }
        return true;
    });
    return hash;
}

namespace SceneGLCache {

const SceneGL& acquire(const SceneGraph::Scene& scene, uint32_t uvSet, int slot)
{
    CacheSlot& entry = cacheSlots()[slot == 1 ? 1 : 0];
    const void* current = currentContextIdentity();
    if (entry.valid && entry.scene && entry.owner == current && entry.scene->uvSet() == uvSet
        && entry.scene->sceneStamp() == SceneGL::stampOf(scene))
        return *entry.scene;
    dropSlot(entry, current);
    entry.scene = std::make_unique<SceneGL>(scene, uvSet);
    entry.valid = true;
    entry.owner = current;
    return *entry.scene;
}

void clear()
{
    const void* current = currentContextIdentity();
    for (CacheSlot& entry : cacheSlots())
        dropSlot(entry, current);
}

} // namespace SceneGLCache

void drawSceneTile(const GLBakeParameters& parameters, const SceneGraph::Scene& scene, GLProgram& program,
                   GLTileTarget& target, UvWindowForm form, const char* sourceWindowName, unsigned sourceTexture,
                   const char* samplerName, bool cached)
{
    target.bind();
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    const auto uv = form == UvWindowForm::Difference ? parameters.shaderUvWindow() : parameters.shaderUvWindowProduct();
    program.setVec4("uvWindow", uv[0], uv[1], uv[2], uv[3]);
    if (sourceWindowName) {
        const auto source = parameters.shaderSourceWindow();
        program.setVec4(sourceWindowName, source[0], source[1], source[2], source[3]);
    }
    if (sourceTexture && samplerName) {
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, sourceTexture);
        program.setInt(samplerName, 0);
    }
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glDisable(GL_BLEND);
    if (cached) {
        SceneGLCache::acquire(scene, parameters.uvSet, parameters.sceneCacheSlot).draw(program, parameters.meshMask);
    } else {
        GLFilteredDrawVisitor visitor(program, parameters.meshMask, parameters.uvSet);
        visitor.walk(scene);
    }
    if (sourceTexture)
        glBindTexture(GL_TEXTURE_2D, 0);
    GLTileTarget::release();
}

} // namespace Ond::Baking
