#include "scene/obj/ObjReindexer.h"

namespace Ond::SceneLoad {

ObjReindexer::ObjReindexer(const ObjParseResult& result, size_t triangleCount, bool positionKeyed)
    : m_result(result)
    , m_withColors(result.colors.size() > 1)
    , m_positionKeyed(positionKeyed)
    , m_triangleCount(triangleCount)
{
    const QStringList& names = !result.objects.isEmpty() ? result.objects : result.groups;
    if (names.isEmpty()) {
        m_meshes.resize(1);
    } else {
        m_meshes.resize(static_cast<size_t>(names.size()));
        for (qsizetype i = 0; i < names.size(); ++i)
            m_meshes[static_cast<size_t>(i)].name = names[i];
    }

    m_positionKeyed = m_positionKeyed && m_meshes.size() == 1 && !result.hasTexcoords;
    m_heads.assign(result.positions.size(), 0u);
    if (!m_positionKeyed)
        m_entries.reserve(result.positions.size());
    m_entries.push_back(Entry{});

    if (m_meshes.size() == 1) {
        // The usual single mesh gets about as many vertices as the file has.
        const size_t expected = result.positions.size();
        ObjMesh& mesh = m_meshes.front();
        mesh.positions.reserve(expected);
        if (result.hasNormals)
            mesh.normals.reserve(expected);
        if (result.hasTexcoords)
            mesh.texcoords.reserve(expected);
        if (m_withColors)
            mesh.colors.reserve(expected);
    }
}

void ObjReindexer::applyRecord(const ObjGroupRecord& record)
{
    if (!m_result.objects.isEmpty()) {
        if (record.objectId != ObjGroupRecord::NoId32) {
            m_mesh = record.objectId;
            m_objectId = record.objectId;
        }
        if (record.groupId != ObjGroupRecord::NoId16)
            m_groupId = record.groupId;
    } else if (record.groupId != ObjGroupRecord::NoId16) {
        m_mesh = record.groupId;
        m_groupId = record.groupId;
    }
    if (record.materialId != ObjGroupRecord::NoId16)
        m_materialId = record.materialId;
    m_subMesh = nullptr;
}

void ObjReindexer::selectSubMesh()
{
    const auto key = std::make_tuple(m_materialId, m_groupId, m_objectId);
    auto found = m_subMeshes.find(key);
    if (found == m_subMeshes.end()) {
        ObjMesh& mesh = m_meshes[m_mesh];
        ObjSubMesh subMesh;
        // The first submesh of a lone mesh usually takes every triangle;
        // pages reserved but never written cost no memory.
        if (m_meshes.size() == 1 && m_subMeshes.empty())
            subMesh.indices.reserve(m_triangleCount * 3);
        if (m_groupId != ObjGroupRecord::NoId16)
            subMesh.group = m_result.groups[m_groupId];
        if (m_materialId != ObjGroupRecord::NoId16)
            subMesh.material = m_result.materials[m_materialId];
        mesh.subMeshes.push_back(std::move(subMesh));
        found = m_subMeshes.emplace(key, std::make_pair(m_mesh, static_cast<uint32_t>(mesh.subMeshes.size() - 1))).first;
    }
    m_subMesh = &m_meshes[found->second.first].subMeshes[found->second.second];
    m_mesh = found->second.first;
}

uint32_t ObjReindexer::vertexIndex(const ObjFaceVertex& corner)
{
    uint32_t& head = m_heads[static_cast<size_t>(corner.position)];
    if (m_positionKeyed) {
        // Sculpts: no chain to walk and no entry per vertex, in the order
        // the chains would have given.
        if (head != 0)
            return head - 1;
        const uint32_t index = addVertex(corner);
        head = index + 1;
        return index;
    }
    for (uint32_t e = head; e != 0;) {
        const Entry& entry = m_entries[e];
        if (entry.texcoord == corner.texcoord && entry.normal == corner.normal
            && entry.smoothing == m_smoothing && entry.mesh == m_mesh)
            return entry.index;
        e = entry.next;
    }
    const uint32_t index = addVertex(corner);
    m_entries.push_back(Entry{corner.texcoord, corner.normal, m_smoothing, m_mesh, index, head});
    head = static_cast<uint32_t>(m_entries.size() - 1);
    return index;
}

uint32_t ObjReindexer::addVertex(const ObjFaceVertex& corner)
{
    ObjMesh& mesh = m_meshes[m_mesh];
    const uint32_t index = static_cast<uint32_t>(mesh.positions.size());
    mesh.positions.push_back(m_result.positions[static_cast<size_t>(corner.position)]);
    if (m_withColors)
        mesh.colors.push_back(m_result.colors[static_cast<size_t>(corner.position)]);
    if (m_result.hasNormals)
        mesh.normals.push_back(m_result.normals[static_cast<size_t>(corner.normal)]);
    if (m_result.hasTexcoords)
        mesh.texcoords.push_back(m_result.texcoords[static_cast<size_t>(corner.texcoord)]);
    return index;
}

void ObjReindexer::addBlock(const ObjParseJob& job)
{
    auto record = job.groupRecords.begin();
    const auto recordEnd = job.groupRecords.end();
    auto run = job.smoothingRuns.begin();
    const auto runEnd = job.smoothingRuns.end();

    const size_t faceCount = job.faces.size();
    for (size_t face = 0; face <= faceCount; ++face) {
        for (; record != recordEnd && record->firstFace == face; ++record)
            applyRecord(*record);
        for (; run != runEnd && run->first == face; ++run)
            m_smoothing = run->second;
        if (face == faceCount)
            break;

        if (!m_subMesh)
            selectSubMesh();
        const ObjTriangle& triangle = job.faces[face];
        std::vector<uint32_t>& indices = m_subMesh->indices;
        for (const ObjFaceVertex& corner : triangle.corners)
            indices.push_back(vertexIndex(corner));
    }
}

} // namespace Ond::SceneLoad
