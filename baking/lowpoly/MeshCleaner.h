#pragma once
// The working state of the mesh repair in front of DirectedEdgeStructure.
// clean() runs the steps in a fixed order: lamina faces, degenerate faces
// and isolated vertices, valences, the edge map with its duplicates,
// compaction, resolution of the duplicated edges, growth of the arrays,
// report, and the detaching of the edges that found no partner.

#include "baking/lowpoly/DirectedEdgeStructure.h"

#include <array>
#include <unordered_map>
#include <cstdint>
#include <vector>

namespace Ond::Baking {

class MeshCleaner
{
public:
    MeshCleaner(DirectedEdgeMap& edgeMap, const MeshArrays& mesh);

    void clean();

    // Step 8 of clean: shrinks the index list after removals and reports
    // what was removed and corrected since the last call.
    void reportAndReallocate();

    // Appends a copy of vertex v with all its attributes at nextVertex,
    // growing the arrays if the room reserved for copies is used up.
    uint32_t copyVertex(uint32_t v);
    // Reserves room for count more copies and raises the vertex count.
    void growVertices(uint32_t count);

    uint32_t getVertexCount() const { return *vertexCount; }
    uint32_t getFaceCount() const { return *faceCount; }
    std::vector<uint32_t>& getIndices() { return *indices; }

    // --- Working state, in the order of the steps that use it
    DirectedEdgeMap& edgeMap;
    uint32_t* vertexCount;
    uint32_t* faceCount;
    std::vector<Eigen::Vector4f>* positions;
    std::vector<uint32_t>* indices;
    std::vector<Eigen::Vector3f>* normals;
    std::vector<Eigen::Vector3f>* uvs;
    std::vector<Eigen::Vector2f>* tangents;
    uint32_t nextVertex = 0;
    uint32_t isolatedVertices = 0;
    uint32_t degenerateFaces = 0;
    std::vector<uint32_t> nonManifoldVertices;
    std::vector<std::array<uint32_t, 3>> isolatedEdges; // from, to, face
    // Edges detached together, as (from, to, face): the second and later
    // pairs of faces on one edge. The map holds one face per directed edge,
    // so each such pair moves to its own copies of the edge's vertices.
    std::vector<std::vector<std::array<uint32_t, 3>>> groupedEdges;
    std::vector<uint32_t> removedFaces;
    std::vector<std::array<uint32_t, 3>> duplicatedEdges; // from, to, face
    std::vector<uint32_t> vertexValence;

private:
    void removeLaminaFaces();
    void removeDegenerateFaces();
    void computeValences();
    void fillEdgeMap();
    void compact();
    void resolveDuplicatedEdges();
    void growForDetaching();
    void detachIsolatedEdges();
    void detachGroupedEdges();
    void report();

    Eigen::Vector3f faceNormal(uint32_t face) const;
    void renumberFace(uint32_t from, uint32_t to);
    // The number vertex v has in face by now, after earlier detaching.
    uint32_t currentVertex(uint32_t face, uint32_t v) const;
    // Moves the face from the vertices (from, to) of one of its edges to
    // (newFrom, newTo), re-keying its edges in the map; the edge itself is
    // entered under the new numbers.
    void moveEdge(uint32_t face, uint32_t from, uint32_t to, uint32_t newFrom, uint32_t newTo);

    std::unordered_map<uint32_t, std::vector<std::array<uint32_t, 2>>> copiesOf; // face: (old, new)

    uint32_t removedFaceCount = 0;
};

} // namespace Ond::Baking
