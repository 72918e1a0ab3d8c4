#pragma once
// Turns per-corner OBJ indices into the single vertex index of a mesh: one
// output vertex per distinct (position, texture, normal, smoothing group) in
// each output mesh, and one submesh per (material, group, object).
//
// Two passes keep the peak down: the blocks yield the indices and a record
// per vertex of where its attributes are, while the parser frees their face
// lists; `finish` then gathers the attributes, freeing each array of the
// file as soon as its vertices have it.

#include "scene/obj/ObjParseJob.h"

#include <map>
#include <tuple>
#include <vector>

namespace Ond::SceneLoad {

class ObjReindexer
{
public:
    // `triangleCount`: all triangles of the file, to size a lone submesh once.
    // `positionKeyed`: every corner's normal index is its position index, and
    // there are no texture coordinates, smoothing groups or second mesh, so a
    // position alone names a vertex (normals computed by the reader).
    ObjReindexer(const ObjParseResult& result, size_t triangleCount, bool positionKeyed = false);

    // Blocks must come in file order; the names state carries from one to the next.
    void addBlock(const ObjParseJob& job);

    // The meshes, with their vertex attributes taken from `result`, whose
    // attribute arrays are emptied on the way.
    std::vector<ObjMesh> finish(ObjParseResult& result);

private:
    // Vertices already made for one position index are chained from
    // m_heads[position]: no hashing, no allocation per lookup, and the
    // chains are short since a position rarely splits more than a few times.
    // Entries are in the order the vertices were made.
    struct Entry
    {
        int32_t position;
        int32_t texcoord;
        int32_t normal;
        int32_t smoothing;
        uint32_t mesh;
        uint32_t index;
        uint32_t next; // 0 ends the chain; entry 0 is a dummy
    };

    void applyRecord(const ObjGroupRecord& record);
    void selectSubMesh();
    uint32_t vertexIndex(const ObjFaceVertex& corner);
    void addKeyedFaces(const ObjTriangle* faces, size_t count);
    template <typename T, typename Source>
    void gather(std::vector<T> ObjMesh::*target, std::vector<T>& attribute, Source source);

    const bool m_withColors;
    const bool m_hasNormals;
    const bool m_hasTexcoords;
    bool m_positionKeyed;
    const size_t m_triangleCount;
    const QStringList& m_groups;
    const QStringList& m_materials;
    const bool m_byObjects;
    std::vector<ObjMesh> m_meshes;
    std::vector<uint32_t> m_vertexCounts; // per mesh
    // Per position: the head of its chain, or when position-keyed its
    // vertex index + 1 (0: none yet).
    std::vector<uint32_t> m_heads;
    std::vector<Entry> m_entries;
    std::vector<int32_t> m_keyedPositions; // per vertex, when position-keyed
    std::map<std::tuple<uint16_t, uint16_t, uint32_t>, std::pair<uint32_t, uint32_t>> m_subMeshes;

    uint32_t m_mesh = 0;
    uint16_t m_materialId = ObjGroupRecord::NoId16;
    uint16_t m_groupId = ObjGroupRecord::NoId16;
    uint32_t m_objectId = ObjGroupRecord::NoId32;
    int32_t m_smoothing = 0;
    ObjSubMesh* m_subMesh = nullptr; // null until the first face after a name change
};

} // namespace Ond::SceneLoad
