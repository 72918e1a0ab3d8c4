#include "baking/lowpoly/DirectedEdgeStructure.h"

#include "baking/lowpoly/MeshCleaner.h"
#include "program/LogChannel.h"

#include <QCoreApplication>

#include <boost/container/small_vector.hpp>

#include <algorithm>

namespace Ond::Baking {

namespace {

void sanityReport(const char* before, size_t count, const char* after)
{
    static Core::LogChannel channel(QStringLiteral("Mesh sanity check"));
    channel.info(QCoreApplication::translate("baking", before) + QString::number(count)
                 + QCoreApplication::translate("baking", after));
}

} // namespace

DirectedEdgeStructure::~DirectedEdgeStructure() = default;

void DirectedEdgeStructure::create(const MeshArrays& mesh)
{
    vertices.clear();
    edges.clear();
    edgeMap.clear();
    if (!mesh.positions || !mesh.vertexCount || !mesh.indices || !mesh.faceCount)
        return;
    MeshCleaner cleaner(edgeMap, mesh);
    cleaner.clean();
    build(mesh);
    if (!edges.empty())
        fixVertices(cleaner);
}

void DirectedEdgeStructure::build(const MeshArrays& mesh)
{
    const uint32_t faceCount = *mesh.faceCount;
    if (faceCount == 0)
        return; // nothing usable is left: an empty structure
    const std::vector<uint32_t>& idx = *mesh.indices;
    vertices.resize(*mesh.vertexCount);
    for (uint32_t v = 0; v < vertices.size(); ++v)
        vertices[v].index = v;
    edges.resize(size_t(faceCount) * 3);
    for (uint32_t e = 0; e < edges.size(); ++e) {
        const uint32_t from = idx[e], to = idx[nextEdge(e)];
        edges[e].vertex = from;
        if (vertices[from].edge == InvalidIndex)
            vertices[from].edge = e;
        auto it = edgeMap.find(directedEdgeKey(to, from));
        edges[e].opposite = it != edgeMap.end() ? it->second.edge : InvalidIndex;
    }
}

std::vector<uint32_t> DirectedEdgeStructure::fanOf(uint32_t startEdge) const
{
    std::vector<uint32_t> fan{startEdge};
    const size_t limit = edges.size();
    // Forward: over the incoming edge of the face to the next face.
    uint32_t e = startEdge;
    bool open = false;
    while (fan.size() <= limit) {
        const uint32_t o = edges[previousEdge(e)].opposite;
        if (o == InvalidIndex) {
            open = true;
            break;
        }
        if (o == startEdge)
            return fan;
        e = o;
        fan.push_back(e);
    }
    if (!open)
        return fan;
    // Backward from the start to the other border.
    e = startEdge;
    while (fan.size() <= limit) {
        const uint32_t o = edges[e].opposite;
        if (o == InvalidIndex)
            break;
        e = nextEdge(o);
        if (e == startEdge)
            break;
        fan.push_back(e);
    }
    return fan;
}

void DirectedEdgeStructure::fixVertices(MeshCleaner& cleaner)
{
    // Faces around each vertex, against those one fan reaches.
    std::vector<uint32_t> faceCount(vertices.size(), 0);
    for (const Edge& e : edges)
        ++faceCount[e.vertex];
    std::vector<uint32_t> nonManifold;
    for (const Vertex& v : vertices) {
        if (v.edge == InvalidIndex)
            continue;
        if (fanOf(v.edge).size() != faceCount[v.index])
            nonManifold.push_back(v.index);
    }
    if (nonManifold.empty())
        return;
    cleaner.nonManifoldVertices = nonManifold;
    fixFans(cleaner, nonManifold);
    cleaner.reportAndReallocate();
    sanityReport("Detected and corrected ", nonManifold.size(), " non manifold vertices.");
}

void DirectedEdgeStructure::fixFans(MeshCleaner& cleaner, const std::vector<uint32_t>& nonManifold)
{
    // Outgoing edges of each vertex to split.
    std::vector<int32_t> slot(vertices.size(), -1);
    std::vector<boost::container::small_vector<uint32_t, 40>> outgoing(nonManifold.size());
    for (size_t k = 0; k < nonManifold.size(); ++k)
        slot[nonManifold[k]] = int32_t(k);
    for (uint32_t e = 0; e < edges.size(); ++e)
        if (slot[edges[e].vertex] >= 0)
            outgoing[size_t(slot[edges[e].vertex])].push_back(e);

    // Fans after the first (the one holding the vertex's own edge) move to a
    // copy of the vertex.
    struct Split
    {
        uint32_t vertex;
        std::vector<uint32_t> fan;
    };
    std::vector<Split> splits;
    std::vector<uint32_t> visited;
    for (size_t k = 0; k < nonManifold.size(); ++k) {
        const uint32_t v = nonManifold[k];
        visited.clear();
        auto seen = [&](uint32_t e) { return std::find(visited.begin(), visited.end(), e) != visited.end(); };
        std::vector<uint32_t> first = fanOf(vertices[v].edge);
        visited.insert(visited.end(), first.begin(), first.end());
        for (uint32_t e : outgoing[k]) {
            if (seen(e))
                continue;
            std::vector<uint32_t> fan = fanOf(e);
            visited.insert(visited.end(), fan.begin(), fan.end());
            splits.push_back({v, std::move(fan)});
        }
    }
    if (splits.empty())
        return;

    std::vector<uint32_t>& idx = cleaner.getIndices();
    cleaner.growVertices(uint32_t(splits.size()));
    for (const Split& s : splits) {
        const uint32_t copy = cleaner.copyVertex(s.vertex);
        for (uint32_t e : s.fan) {
            // The outgoing edge and the incoming one of the same face.
            const uint32_t in = previousEdge(e);
            auto out = edgeMap.find(directedEdgeKey(s.vertex, toVertex(e)));
            if (out != edgeMap.end() && out->second.edge == e) {
                edgeMap.erase(out);
                edgeMap[directedEdgeKey(copy, toVertex(e))] = {e, faceOf(e)};
            }
            auto inc = edgeMap.find(directedEdgeKey(fromVertex(in), s.vertex));
            if (inc != edgeMap.end() && inc->second.edge == in) {
                edgeMap.erase(inc);
                edgeMap[directedEdgeKey(fromVertex(in), copy)] = {in, faceOf(in)};
            }
        }
        for (uint32_t e : s.fan) {
            idx[e] = copy;
            edges[e].vertex = copy;
        }
        vertices.push_back({copy, s.fan.front()});
    }
    sanityReport("Detected and corrected ", splits.size(),
                 " incorrect neighborhoods. This is most likely due to parts of the mesh joined by a single vertex");
}

} // namespace Ond::Baking
