#include "scene/graph/Mesh.h"

#include "scene/graph/Revision.h"

#include <algorithm>

namespace Ond::SceneGraph {

// --- Mesh

Mesh::Mesh() : m_data(), m_name(std::make_shared<QString>()) {}

Mesh::Mesh(DataSPtr data, const QString& name) : m_data(std::move(data)), m_name(std::make_shared<QString>(name))
{
}

Mesh::~Mesh() = default;

Mesh::DataSPtr Mesh::getData() const
{
    return std::atomic_load(&m_data);
}

void Mesh::setData(DataSPtr data)
{
    std::atomic_store(&m_data, std::move(data));
}

QString Mesh::getName() const
{
    const auto name = std::atomic_load(&m_name);
    return name ? *name : QString();
}

void Mesh::setName(const QString& name)
{
    std::atomic_store(&m_name, std::make_shared<QString>(name));
}

// --- Mesh::Data

Mesh::Data::Data() : m_revision(nextRevision()) {}

Mesh::Data::Data(Vec3BufferUPtr positions, Vec3BufferUPtr normals, Vec3BufferUPtr tangents,
                 Vec3BufferUPtr binormals, Vec4BufferUPtr colors, std::vector<Vec2BufferUPtr> uvSets,
                 std::vector<SubMesh> subMeshes, const BoundingBox& boundingBox)
    : m_positions(std::move(positions)),
      m_normals(std::move(normals)),
      m_tangents(std::move(tangents)),
      m_binormals(std::move(binormals)),
      m_colors(std::move(colors)),
      m_uvSets(std::move(uvSets)),
      m_subMeshes(std::move(subMeshes)),
      m_revision(nextRevision()),
      m_boundingBox(boundingBox)
{
}

std::shared_ptr<Mesh::Data> Mesh::Data::clone() const
{
    std::vector<Vec2BufferUPtr> uvSets;
    uvSets.reserve(m_uvSets.size());
    for (const auto& uv : m_uvSets)
        uvSets.push_back(cloneBuffer(uv));
    std::vector<SubMesh> subMeshes;
    subMeshes.reserve(m_subMeshes.size());
    for (const auto& sub : m_subMeshes)
        subMeshes.push_back(sub.clone());
    auto copy = std::make_shared<Data>(cloneBuffer(m_positions), cloneBuffer(m_normals), cloneBuffer(m_tangents),
                                       cloneBuffer(m_binormals), cloneBuffer(m_colors), std::move(uvSets),
                                       std::move(subMeshes), m_boundingBox);
    copy->m_uvChannels = m_uvChannels;
    return copy;
}

const Vec2Buffer* Mesh::Data::getUvSet(size_t index) const
{
    return index < m_uvSets.size() ? m_uvSets[index].get() : nullptr;
}

Vec2Buffer* Mesh::Data::getUvSet(size_t index)
{
    return index < m_uvSets.size() ? m_uvSets[index].get() : nullptr;
}

void Mesh::Data::setBuffers(Vec3BufferUPtr positions, Vec3BufferUPtr normals, Vec3BufferUPtr tangents,
                            Vec3BufferUPtr binormals, Vec4BufferUPtr colors, std::vector<Vec2BufferUPtr> uvSets,
                            std::vector<SubMesh> subMeshes)
{
    m_positions = std::move(positions);
    m_normals = std::move(normals);
    m_tangents = std::move(tangents);
    m_binormals = std::move(binormals);
    m_colors = std::move(colors);
    m_uvSets = std::move(uvSets);
    m_subMeshes = std::move(subMeshes);
    // Channel ids point into the old list of UV sets.
    m_uvChannels.clear();
    m_revision = nextRevision();
}

void Mesh::Data::setNormals(Vec3BufferUPtr normals)
{
    m_normals = std::move(normals);
    m_revision = nextRevision();
}

void Mesh::Data::setTangents(Vec3BufferUPtr tangents, Vec3BufferUPtr binormals)
{
    m_tangents = std::move(tangents);
    m_binormals = std::move(binormals);
    m_revision = nextRevision();
}

void Mesh::Data::setColors(Vec4BufferUPtr colors)
{
    m_colors = std::move(colors);
    m_revision = nextRevision();
}

void Mesh::Data::addUvSet(Vec2BufferUPtr uvSet, const std::vector<int32_t>& channelIds)
{
    if (!uvSet || uvSet->size() == 0)
        return;
    m_uvSets.push_back(std::move(uvSet));
    const size_t index = m_uvSets.size() - 1;
    for (int32_t id : channelIds)
        m_uvChannels[id].push_back(index);
    m_revision = nextRevision();
}

std::vector<int32_t> Mesh::Data::getUvChannelIds() const
{
    std::vector<int32_t> ids;
    ids.reserve(m_uvChannels.size());
    for (const auto& entry : m_uvChannels)
        ids.push_back(entry.first);
    return ids; // std::map keeps them sorted
}

const SubMesh* Mesh::Data::getSubMesh(size_t index) const
{
    return index < m_subMeshes.size() ? &m_subMeshes[index] : nullptr;
}

SubMesh* Mesh::Data::getSubMesh(size_t index)
{
    return index < m_subMeshes.size() ? &m_subMeshes[index] : nullptr;
}

void Mesh::Data::setSubMeshes(std::vector<SubMesh> subMeshes)
{
    m_subMeshes = std::move(subMeshes);
    m_revision = nextRevision();
}

void Mesh::Data::addSubMesh(SubMesh subMesh)
{
    m_subMeshes.push_back(std::move(subMesh));
    m_revision = nextRevision();
}

BitField<int> Mesh::Data::getSubMeshFlags(size_t index) const
{
    static const BitField<int> none(0);
    return index < m_subMeshes.size() ? m_subMeshes[index].renderFlags : none;
}

void Mesh::Data::setSubMeshFlags(size_t index, BitField<int> flags)
{
    if (index >= m_subMeshes.size())
        return;
    m_subMeshes[index].renderFlags = flags;
    m_revision = nextRevision();
}

void Mesh::Data::setSubMeshColor(size_t index, const Eigen::Vector4f& color)
{
    if (index >= m_subMeshes.size() || !m_subMeshes[index].material)
        return;
    m_subMeshes[index].material->color = color;
    m_revision = nextRevision();
}

void Mesh::Data::setSubMeshLabel(size_t index, const QString& label)
{
    if (index >= m_subMeshes.size() || !m_subMeshes[index].material)
        return;
    m_subMeshes[index].material->label = label;
    m_revision = nextRevision();
}

void Mesh::Data::setSubMeshName(size_t index, const QString& name)
{
    if (index >= m_subMeshes.size())
        return;
    auto* user = dynamic_cast<UserMaterialDefinition*>(m_subMeshes[index].material.get());
    if (!user)
        return;
    user->name = name;
    m_revision = nextRevision();
}

int Mesh::Data::findSubMeshByMaterialName(const QString& name) const
{
    for (size_t i = 0; i < m_subMeshes.size(); ++i) {
        const auto* user = dynamic_cast<const UserMaterialDefinition*>(m_subMeshes[i].material.get());
        if (user && user->name == name)
            return int(i);
    }
    return -1;
}

bool Mesh::Data::forAllSubMeshes(const std::function<bool(SubMesh&)>& function)
{
    for (auto& sub : m_subMeshes) {
        if (!function(sub))
            return false;
    }
    return true;
}

bool Mesh::Data::forAllSubMeshes(const std::function<bool(const SubMesh&)>& function) const
{
    for (const auto& sub : m_subMeshes) {
        if (!function(sub))
            return false;
    }
    return true;
}

const BoundingBox& Mesh::Data::getBoundingBox() const
{
    if (!m_boundingBox.isEmpty() || !m_positions)
        return m_boundingBox;
    BoundingBox box;
    for (const auto& p : *m_positions)
        box.merge(p);
    m_boundingBox = box;
    return m_boundingBox;
}

void Mesh::Data::setBoundingBox(const BoundingBox& box)
{
    m_boundingBox = box;
    m_revision = nextRevision();
}

void Mesh::Data::resetBoundingBox()
{
    m_boundingBox.reset();
    m_revision = nextRevision();
}

void Mesh::Data::touch()
{
    m_revision = nextRevision();
}

bool Mesh::Data::collectUvTiles(UvTileSet& tiles, size_t uvSetIndex, const SubMesh* subMesh) const
{
    const Vec2Buffer* uv = getUvSet(uvSetIndex);
    if (!uv)
        return false;

    if (!subMesh) {
        for (const auto& p : *uv)
            tiles.insert(uvTileOf(p));
        return true;
    }

    const IndexBuffer* indices = subMesh->indices.get();
    const size_t stride = subMesh->indicesPerPrimitive;
    const size_t count = subMesh->primitiveCount;
    if (!indices || stride == 0 || count == 0)
        return true;

    const PrimitiveType type = subMesh->primitiveType;
    size_t needed = 0;
    if (isVertexWise(type))
        needed = 1;
    else if (isLineKind(type))
        needed = 2;
    else if (isTriangleKind(type))
        needed = 3;
    else if (isQuadKind(type))
        needed = 4;
    else
        return true;

    const size_t indexCount = indices->size();
    const size_t pointCount = uv->size();
    const uint32_t* idx = indices->data();
    const Eigen::Vector2f* points = uv->data();
    // Primitives that reach past the index buffer or the UV set are skipped:
    // the data is not trusted to be well formed.
    for (size_t i = 0; i < count; ++i) {
        const size_t base = i * stride;
        if (base + needed > indexCount)
            break;
        bool inRange = true;
        for (size_t k = 0; k < needed; ++k)
            inRange = inRange && idx[base + k] < pointCount;
        if (!inRange)
            continue;
        const Eigen::Vector2f& a = points[idx[base]];
        if (needed == 1) {
            tiles.insert(uvTileOf(a));
            continue;
        }
        const Eigen::Vector2f& b = points[idx[base + 1]];
        if (needed == 2) {
            walkUvEdge(tiles, a, b);
            continue;
        }
        const Eigen::Vector2f& c = points[idx[base + 2]];
        walkUvEdge(tiles, a, b);
        walkUvEdge(tiles, a, c);
        walkUvEdge(tiles, b, c);
        if (needed == 4) {
            const Eigen::Vector2f& d = points[idx[base + 3]];
            walkUvEdge(tiles, b, c);
            walkUvEdge(tiles, b, d);
            walkUvEdge(tiles, c, d);
        }
    }
    return true;
}

} // namespace Ond::SceneGraph
