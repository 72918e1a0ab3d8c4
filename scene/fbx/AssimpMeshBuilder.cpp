#include "scene/fbx/AssimpMeshBuilder.h"

#include "scene/graph/MaterialDefinition.h"

#include <assimp/material.h>
#include <assimp/mesh.h>
#include <assimp/scene.h>

#include <Eigen/Geometry>

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

namespace Ond::SceneLoad {

using namespace Ond::SceneGraph;

namespace {

constexpr uint32_t Unset = std::numeric_limits<uint32_t>::max();

struct Layout
{
    bool normals = false;
    bool tangents = false;
    bool colors = false;
    std::vector<unsigned> uvChannels;
};

bool hasTriangles(const aiMesh& mesh)
{
    return mesh.mVertices && mesh.mNumVertices > 0 && mesh.mFaces && mesh.mNumFaces > 0
        && (mesh.mPrimitiveTypes & aiPrimitiveType_TRIANGLE);
}

inline uint64_t mixBits(uint64_t hash, const void* data, size_t bytes)
{
    const auto* words = static_cast<const uint32_t*>(data);
    for (size_t i = 0; i < bytes / 4; ++i) {
        hash ^= words[i];
        hash *= 0x9E3779B97F4A7C15ull;
        hash ^= hash >> 29;
    }
    return hash;
}

// The attributes one source vertex carries into the Mesh::Data, compared
// and hashed bit for bit.
class VertexView
{
public:
    VertexView(const aiMesh& mesh, const Layout& layout) : m_mesh(mesh), m_layout(layout) {}

    uint64_t hash(unsigned v) const
    {
        uint64_t h = mixBits(0x84222325cbf29ce4ull, &m_mesh.mVertices[v], sizeof(aiVector3D));
        if (m_layout.normals)
            h = mixBits(h, &m_mesh.mNormals[v], sizeof(aiVector3D));
        for (unsigned channel : m_layout.uvChannels)
            if (m_mesh.mTextureCoords[channel])
                h = mixBits(h, &m_mesh.mTextureCoords[channel][v], 2 * sizeof(float));
        return h;
    }

    bool equal(unsigned a, unsigned b) const
    {
        if (!same(m_mesh.mVertices, a, b) || (m_layout.normals && !same(m_mesh.mNormals, a, b)))
            return false;
        for (unsigned channel : m_layout.uvChannels) {
            const aiVector3D* uv = m_mesh.mTextureCoords[channel];
            if (uv && std::memcmp(&uv[a], &uv[b], 2 * sizeof(float)) != 0)
                return false;
        }
        if (m_layout.tangents && (!same(m_mesh.mTangents, a, b) || !same(m_mesh.mBitangents, a, b)))
            return false;
        if (m_layout.colors && m_mesh.mColors[0]
            && std::memcmp(&m_mesh.mColors[0][a], &m_mesh.mColors[0][b], sizeof(aiColor4D)) != 0)
            return false;
        return true;
    }

private:
    template <typename T>
    static bool same(const T* values, unsigned a, unsigned b)
    {
        return std::memcmp(&values[a], &values[b], sizeof(T)) == 0;
    }

    const aiMesh& m_mesh;
    const Layout& m_layout;
};

// Open-addressed set of source vertex indices, sized once per mesh.
class WeldTable
{
public:
    explicit WeldTable(size_t count)
    {
        size_t size = 16;
        while (size < count * 2)
            size <<= 1;
        m_slots.assign(size, Unset);
        m_mask = size - 1;
    }

    // The source vertex already stored with the same attributes, or Unset
    // after storing v.
    template <typename Equal>
    uint32_t findOrInsert(uint32_t v, uint64_t hash, const Equal& equal)
    {
        size_t slot = size_t(hash) & m_mask;
        while (m_slots[slot] != Unset) {
            if (equal(m_slots[slot], v))
                return m_slots[slot];
            slot = (slot + 1) & m_mask;
        }
        m_slots[slot] = v;
        return Unset;
    }

private:
    std::vector<uint32_t> m_slots;
    size_t m_mask = 0;
};

QString materialName(const aiScene& scene, const aiMesh& mesh)
{
    if (mesh.mMaterialIndex >= scene.mNumMaterials || !scene.mMaterials[mesh.mMaterialIndex])
        return QString();
    aiString name;
    if (scene.mMaterials[mesh.mMaterialIndex]->Get(AI_MATKEY_NAME, name) != aiReturn_SUCCESS)
        return QString();
    return QString::fromUtf8(name.C_Str(), int(name.length));
}

// Unit face normals summed per position value, so that vertices split by
// UV seams get the same normal, as the OBJ reader gives them.
std::vector<Eigen::Vector3f> computeNormals(const std::vector<Eigen::Vector3f>& positions,
                                            const std::vector<std::vector<uint32_t>>& indexLists)
{
    const size_t count = positions.size();
    std::vector<uint32_t> positionId(count);
    {
        WeldTable table(count);
        for (uint32_t v = 0; v < count; ++v) {
            const uint64_t h = mixBits(0x84222325cbf29ce4ull, positions[v].data(), sizeof(Eigen::Vector3f));
            const uint32_t found = table.findOrInsert(v, h, [&](uint32_t a, uint32_t b) {
                return std::memcmp(positions[a].data(), positions[b].data(), sizeof(Eigen::Vector3f)) == 0;
            });
            positionId[v] = found == Unset ? v : positionId[found];
        }
    }
    std::vector<Eigen::Vector3f> sums(count, Eigen::Vector3f::Zero());
    for (const auto& indices : indexLists) {
        for (size_t i = 0; i + 2 < indices.size(); i += 3) {
            const Eigen::Vector3f& a = positions[indices[i]];
            Eigen::Vector3f n = (positions[indices[i + 1]] - a).cross(positions[indices[i + 2]] - a);
            const float length = n.norm();
            if (length > 1e-7f)
                n /= length;
            for (int c = 0; c < 3; ++c)
                sums[positionId[indices[i + c]]] += n;
        }
    }
    std::vector<Eigen::Vector3f> normals(count);
    for (size_t v = 0; v < count; ++v) {
        Eigen::Vector3f n = sums[positionId[v]];
        const float length = n.norm();
        if (length > 1e-7f)
            n /= length;
        normals[v] = n;
    }
    return normals;
}

} // namespace

std::shared_ptr<Mesh::Data> buildMeshData(const aiScene& scene, const unsigned* meshIndices, unsigned meshCount,
                                          const SceneLoadOptions& options)
{
    std::vector<const aiMesh*> meshes;
    for (unsigned i = 0; i < meshCount; ++i) {
        if (meshIndices[i] < scene.mNumMeshes && scene.mMeshes[meshIndices[i]]
            && hasTriangles(*scene.mMeshes[meshIndices[i]]))
            meshes.push_back(scene.mMeshes[meshIndices[i]]);
    }
    if (meshes.empty())
        return nullptr;

    // An attribute is kept when every part has it (UV sets: any part; the
    // others get zeros), so the buffers cover all vertices.
    Layout layout;
    layout.normals = options.has(KeepNormals);
    layout.tangents = options.has(KeepTangents);
    layout.colors = options.has(KeepColors);
    for (const aiMesh* mesh : meshes) {
        layout.normals = layout.normals && mesh->mNormals;
        layout.tangents = layout.tangents && mesh->mTangents && mesh->mBitangents;
        layout.colors = layout.colors && mesh->mColors[0];
    }
    if (options.has(KeepUvSets)) {
        for (unsigned channel = 0; channel < AI_MAX_NUMBER_OF_TEXTURECOORDS; ++channel) {
            for (const aiMesh* mesh : meshes) {
                if (mesh->mTextureCoords[channel]) {
                    layout.uvChannels.push_back(channel);
                    break;
                }
            }
        }
    }

    size_t sourceVertices = 0;
    for (const aiMesh* mesh : meshes)
        sourceVertices += mesh->mNumVertices;
    std::vector<Eigen::Vector3f> positions, normals, tangents, binormals;
    std::vector<Eigen::Vector4f> colors;
    std::vector<std::vector<Eigen::Vector2f>> uvSets(layout.uvChannels.size());
    // Indexed files keep about their vertex count; per-corner ones (FBX)
    // weld to a fraction of it, so the reservation is capped.
    const size_t expected = std::min(sourceVertices, size_t(1) << 20);
    positions.reserve(expected);
    if (layout.normals)
        normals.reserve(expected);
    for (auto& set : uvSets)
        set.reserve(expected);
    std::vector<std::vector<uint32_t>> indexLists;
    std::vector<std::shared_ptr<MaterialDefinition>> materials;

    for (const aiMesh* mesh : meshes) {
        const VertexView view(*mesh, layout);
        WeldTable table(mesh->mNumVertices);
        std::vector<uint32_t> remap(mesh->mNumVertices, Unset);
        std::vector<uint32_t> indices;
        indices.reserve(size_t(mesh->mNumFaces) * 3);
        auto equal = [&](uint32_t a, uint32_t b) { return view.equal(a, b); };

        for (unsigned f = 0; f < mesh->mNumFaces; ++f) {
            const aiFace& face = mesh->mFaces[f];
            if (face.mNumIndices != 3 || !face.mIndices)
                continue;
            const unsigned* corner = face.mIndices;
            if (corner[0] >= mesh->mNumVertices || corner[1] >= mesh->mNumVertices
                || corner[2] >= mesh->mNumVertices)
                continue;
            for (int c = 0; c < 3; ++c) {
                const unsigned v = corner[c];
                if (remap[v] == Unset) {
                    const uint32_t twin = table.findOrInsert(v, view.hash(v), equal);
                    if (twin != Unset) {
                        remap[v] = remap[twin];
                    } else {
                        remap[v] = uint32_t(positions.size());
                        const aiVector3D& p = mesh->mVertices[v];
                        positions.emplace_back(p.x, p.y, p.z);
                        if (layout.normals)
                            normals.emplace_back(mesh->mNormals[v].x, mesh->mNormals[v].y, mesh->mNormals[v].z);
                        if (layout.tangents) {
                            tangents.emplace_back(mesh->mTangents[v].x, mesh->mTangents[v].y,
                                                  mesh->mTangents[v].z);
                            binormals.emplace_back(mesh->mBitangents[v].x, mesh->mBitangents[v].y,
                                                   mesh->mBitangents[v].z);
                        }
                        if (layout.colors) {
                            const aiColor4D& color = mesh->mColors[0][v];
                            colors.emplace_back(color.r, color.g, color.b, color.a);
                        }
                        for (size_t s = 0; s < layout.uvChannels.size(); ++s) {
                            const aiVector3D* uv = mesh->mTextureCoords[layout.uvChannels[s]];
                            if (uv)
                                uvSets[s].emplace_back(uv[v].x, uv[v].y);
                            else
                                uvSets[s].emplace_back(0.0f, 0.0f);
                        }
                    }
                }
                indices.push_back(remap[v]);
            }
        }
        if (indices.empty())
            continue;
        indexLists.push_back(std::move(indices));
        const QString name = materialName(scene, *mesh);
        auto material = std::make_shared<UserMaterialDefinition>(name);
        material->name = name;
        material->label = name;
        materials.push_back(std::move(material));
    }
    if (indexLists.empty())
        return nullptr;

    if (!layout.normals && options.has(ImporterComputesNormals))
        normals = computeNormals(positions, indexLists);

    std::vector<SubMesh> subMeshes;
    subMeshes.reserve(indexLists.size());
    for (size_t i = 0; i < indexLists.size(); ++i)
        subMeshes.emplace_back(makeBuffer(std::move(indexLists[i])), PrimitiveType::Triangles, 3,
                               std::move(materials[i]), DefaultRenderFlags);

    std::vector<Vec2BufferUPtr> uvBuffers;
    for (auto& set : uvSets)
        uvBuffers.push_back(makeBuffer(std::move(set)));
    auto orNull3 = [](std::vector<Eigen::Vector3f>& values) -> Vec3BufferUPtr {
        return values.empty() ? nullptr : makeBuffer(std::move(values));
    };
    Vec4BufferUPtr colorBuffer = colors.empty() ? nullptr : makeBuffer(std::move(colors));
    return std::make_shared<Mesh::Data>(makeBuffer(std::move(positions)), orNull3(normals), orNull3(tangents),
                                        orNull3(binormals), std::move(colorBuffer), std::move(uvBuffers),
                                        std::move(subMeshes), BoundingBox());
}

} // namespace Ond::SceneLoad
