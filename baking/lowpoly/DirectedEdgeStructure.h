#pragma once
// A half-edge view of a triangle mesh for walks over its surface. Building
// it first repairs the mesh (MeshCleaner): faces without area and repeated
// faces go, edges shared by more than two faces and vertices where several
// fans meet are split by appending copies of vertices. Vertices never move.

#include <Eigen/Core>

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace Ond::Baking {

constexpr uint32_t InvalidIndex = 0xFFFFFFFFu;

// A directed edge (from, to) as one key.
inline uint64_t directedEdgeKey(uint32_t from, uint32_t to)
{
    return (uint64_t(from) << 32) | uint64_t(to);
}

struct EdgeMapEntry
{
    uint32_t edge; // 3 * face + corner
    uint32_t face;
};

struct DirectedEdgeKeyHash
{
    size_t operator()(uint64_t key) const
    {
        key ^= key >> 33;
        key *= 0xff51afd7ed558ccdull;
        key ^= key >> 33;
        return size_t(key);
    }
};

using DirectedEdgeMap = std::unordered_map<uint64_t, EdgeMapEntry, DirectedEdgeKeyHash>;

// The caller's arrays, edited in place: positions (x, y, z, unused) and the
// optional attributes grow by the appended copies, the index list (three per
// face) loses removed faces, and both counters follow.
struct MeshArrays
{
    std::vector<Eigen::Vector4f>* positions = nullptr;
    uint32_t* vertexCount = nullptr;
    std::vector<uint32_t>* indices = nullptr;
    uint32_t* faceCount = nullptr;
    std::vector<Eigen::Vector3f>* normals = nullptr;
    std::vector<Eigen::Vector3f>* uvs = nullptr;
    std::vector<Eigen::Vector2f>* tangents = nullptr;
};

class MeshCleaner;

class DirectedEdgeStructure
{
public:
    struct Vertex
    {
        uint32_t index = 0;
        uint32_t edge = InvalidIndex; // one outgoing edge
    };
    struct Edge
    {
        uint32_t vertex = 0;              // where the edge starts
        uint32_t opposite = InvalidIndex; // InvalidIndex on a border
    };

    DirectedEdgeStructure() = default;
    virtual ~DirectedEdgeStructure();

    // Repairs the arrays and builds the structure over them. Every repair is
    // counted on the log channel "Mesh sanity check". A mesh that loses all
    // faces gives an empty structure.
    virtual void create(const MeshArrays& mesh);

    bool isEmpty() const { return edges.empty(); }
    const std::vector<Vertex>& getVertices() const { return vertices; }
    const std::vector<Edge>& getEdges() const { return edges; }
    const DirectedEdgeMap& getEdgeMap() const { return edgeMap; }

    // --- Navigation
    static uint32_t faceOf(uint32_t edge) { return edge / 3; }
    static uint32_t nextEdge(uint32_t edge) { return edge - edge % 3 + (edge % 3 + 1) % 3; }
    static uint32_t previousEdge(uint32_t edge) { return edge - edge % 3 + (edge % 3 + 2) % 3; }
    uint32_t fromVertex(uint32_t edge) const { return edges[edge].vertex; }
    uint32_t toVertex(uint32_t edge) const { return edges[nextEdge(edge)].vertex; }
    uint32_t opposite(uint32_t edge) const { return edges[edge].opposite; }

    // The outgoing edges of the fan of faces around the start edge's vertex
    // that the start edge belongs to, from one border to the other when the
    // fan is open.
    std::vector<uint32_t> fanOf(uint32_t startEdge) const;

private:
    void build(const MeshArrays& mesh);
    void fixVertices(MeshCleaner& cleaner);
    void fixFans(MeshCleaner& cleaner, const std::vector<uint32_t>& nonManifold);

    std::vector<Vertex> vertices;
    std::vector<Edge> edges;
    DirectedEdgeMap edgeMap;
};

} // namespace Ond::Baking
