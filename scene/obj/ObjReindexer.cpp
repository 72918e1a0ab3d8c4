#include "scene/obj/ObjReindexer.h"

#include "program/ThreadLimit.h"
#include "scene/obj/ObjThreads.h"

#include <algorithm>

namespace Ond::SceneLoad {

ObjReindexer::ObjReindexer(const ObjParseResult& result, size_t triangleCount, bool positionKeyed)
    : m_withColors(result.colors.size() > 1)
    , m_hasNormals(result.hasNormals)
    , m_hasTexcoords(result.hasTexcoords)
    , m_positionKeyed(positionKeyed)
    , m_triangleCount(triangleCount)
    , m_groups(result.groups)
    , m_materials(result.materials)
    , m_byObjects(!result.objects.isEmpty())
{
    const QStringList& names = !result.objects.isEmpty() ? result.objects : result.groups;
    if (names.isEmpty()) {
        m_meshes.resize(1);
    } else {
        m_meshes.resize(static_cast<size_t>(names.size()));
        for (qsizetype i = 0; i < names.size(); ++i)
            m_meshes[static_cast<size_t>(i)].name = names[i];
    }
    m_vertexCounts.assign(m_meshes.size(), 0u);

    m_positionKeyed = m_positionKeyed && m_meshes.size() == 1 && !result.hasTexcoords;
    m_heads.assign(result.positions.size(), 0u);
    // About as many vertices as the file has positions; pages reserved but
    // never written cost no memory.
    if (m_positionKeyed)
        m_keyedPositions.reserve(result.positions.size());
    else
        m_entries.reserve(result.positions.size() + 1);
    m_entries.push_back(Entry{});
}

void ObjReindexer::applyRecord(const ObjGroupRecord& record)
{
    if (m_byObjects) {
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
        // The first submesh of a lone mesh usually takes every triangle.
        if (m_meshes.size() == 1 && m_subMeshes.empty())
            subMesh.indices.reserve(m_triangleCount * 3);
        if (m_groupId != ObjGroupRecord::NoId16)
            subMesh.group = m_groups[m_groupId];
        if (m_materialId != ObjGroupRecord::NoId16)
            subMesh.material = m_materials[m_materialId];
        mesh.subMeshes.push_back(std::move(subMesh));
        found = m_subMeshes.emplace(key, std::make_pair(m_mesh, static_cast<uint32_t>(mesh.subMeshes.size() - 1))).first;
    }
    m_subMesh = &m_meshes[found->second.first].subMeshes[found->second.second];
    m_mesh = found->second.first;
}

uint32_t ObjReindexer::vertexIndex(const ObjFaceVertex& corner)
{
    uint32_t& head = m_heads[static_cast<size_t>(corner.position)];
    for (uint32_t e = head; e != 0;) {
        const Entry& entry = m_entries[e];
        if (entry.texcoord == corner.texcoord && entry.normal == corner.normal
            && entry.smoothing == m_smoothing && entry.mesh == m_mesh)
            return entry.index;
        e = entry.next;
    }
    const uint32_t index = m_vertexCounts[m_mesh]++;
    m_entries.push_back(
        Entry{corner.position, corner.texcoord, corner.normal, m_smoothing, m_mesh, index, head});
    head = static_cast<uint32_t>(m_entries.size() - 1);
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
        if (m_positionKeyed) {
            // Up to the next change of names or smoothing, in one sweep.
            size_t end = faceCount;
            if (record != recordEnd)
                end = std::min<size_t>(end, record->firstFace);
            if (run != runEnd)
                end = std::min<size_t>(end, run->first);
            addKeyedFaces(job.faces.data() + face, end - face);
            face = end - 1;
            continue;
        }
        const ObjTriangle& triangle = job.faces[face];
        std::vector<uint32_t>& indices = m_subMesh->indices;
        for (const ObjFaceVertex& corner : triangle.corners)
            indices.push_back(vertexIndex(corner));
    }
}

void ObjReindexer::addKeyedFaces(const ObjTriangle* faces, size_t count)
{
    // Sculpts: no chain to walk and a quarter of the record per vertex, in
    // the order the chains would have given; no call and no capacity check
    // per corner, for there are tens of millions of them.
    std::vector<uint32_t>& indices = m_subMesh->indices;
    const size_t first = indices.size();
    indices.resize(first + count * 3);
    uint32_t* out = indices.data() + first;
    uint32_t* const heads = m_heads.data();
    uint32_t made = m_vertexCounts[0];
    for (size_t f = 0; f < count; ++f) {
        for (const ObjFaceVertex& corner : faces[f].corners) {
            uint32_t& head = heads[static_cast<size_t>(corner.position)];
            if (head == 0) {
                head = ++made;
                m_keyedPositions.push_back(corner.position);
            }
            *out++ = head - 1;
        }
    }
    m_vertexCounts[0] = made;
}

template <typename T, typename Source>
void ObjReindexer::gather(std::vector<T> ObjMesh::*target, std::vector<T>& attribute, Source source)
{
    for (size_t m = 0; m < m_meshes.size(); ++m)
        (m_meshes[m].*target).reserve(m_vertexCounts[m]);
    if (m_positionKeyed) {
        // One range per thread; each vertex is written once, so the threads
        // make what one loop would.
        std::vector<T>& out = m_meshes[0].*target;
        out.resize(m_keyedPositions.size());
        const size_t count = out.size();
        const size_t ranges = std::clamp<size_t>(count >> 20, 1, Ond::Core::threadCount());
        runOnThreads(ranges, [&](size_t r) {
            const size_t end = count * (r + 1) / ranges;
            for (size_t v = count * r / ranges; v < end; ++v)
                out[v] = attribute[static_cast<size_t>(m_keyedPositions[v])];
        });
    } else {
        for (size_t e = 1; e < m_entries.size(); ++e) {
            const Entry& entry = m_entries[e];
            (m_meshes[entry.mesh].*target).push_back(attribute[static_cast<size_t>(source(entry))]);
        }
    }
    std::vector<T>().swap(attribute);
}

std::vector<ObjMesh> ObjReindexer::finish(ObjParseResult& result)
{
    std::vector<uint32_t>().swap(m_heads);
    gather(&ObjMesh::positions, result.positions, [](const Entry& e) { return e.position; });
    if (m_withColors)
        gather(&ObjMesh::colors, result.colors, [](const Entry& e) { return e.position; });
    if (m_hasNormals) {
        // Position-keyed normals are indexed by position.
        gather(&ObjMesh::normals, result.normals, [](const Entry& e) { return e.normal; });
    }
    if (m_hasTexcoords)
        gather(&ObjMesh::texcoords, result.texcoords, [](const Entry& e) { return e.texcoord; });
    std::vector<Entry>().swap(m_entries);
    std::vector<int32_t>().swap(m_keyedPositions);
    return std::move(m_meshes);
}

} // namespace Ond::SceneLoad
