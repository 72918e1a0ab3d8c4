#include "baking/lowpoly/MeshCleaner.h"

#include "program/LogChannel.h"

#include <QCoreApplication>

#include <Eigen/Geometry>
#include <boost/container/small_vector.hpp>

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <unordered_set>

namespace Ond::Baking {

namespace {

Core::LogChannel& sanityChannel()
{
    static Core::LogChannel channel(QStringLiteral("Mesh sanity check"));
    return channel;
}

// "<before><count><after>", the two texts translated in context "baking".
void report(const char* before, size_t count, const char* after)
{
    sanityChannel().info(QCoreApplication::translate("baking", before) + QString::number(count)
                         + QCoreApplication::translate("baking", after));
}

struct Triple
{
    uint32_t a, b, c;
    bool operator==(const Triple& o) const { return a == o.a && b == o.b && c == o.c; }
};

struct TripleHash
{
    size_t operator()(const Triple& t) const { return size_t(t.a ^ t.b ^ t.c); }
};

bool closeTo(const Eigen::Vector4f& p, const Eigen::Vector4f& q)
{
    return std::fabs(p.x() - q.x()) <= 1e-5f && std::fabs(p.y() - q.y()) <= 1e-5f
           && std::fabs(p.z() - q.z()) <= 1e-5f;
}

template <typename T>
void growTo(std::vector<T>* values, size_t count)
{
    if (values && values->size() < count)
        values->resize(count, T::Zero());
}

} // namespace

MeshCleaner::MeshCleaner(DirectedEdgeMap& edgeMap, const MeshArrays& mesh)
    : edgeMap(edgeMap), vertexCount(mesh.vertexCount), faceCount(mesh.faceCount), positions(mesh.positions),
      indices(mesh.indices), normals(mesh.normals), uvs(mesh.uvs), tangents(mesh.tangents),
      nextVertex(*mesh.vertexCount)
{
}

void MeshCleaner::clean()
{
    if (*faceCount == 0)
        return;
    removeLaminaFaces();
    removeDegenerateFaces();
    computeValences();
    fillEdgeMap();
    compact();
    resolveDuplicatedEdges();
    growForDetaching();
    reportAndReallocate();
    detachIsolatedEdges();
    detachGroupedEdges();
    report();
    // Copies planned for vertices that an earlier detach had replaced
    // already are not needed.
    if (nextVertex < *vertexCount) {
        *vertexCount = nextVertex;
        positions->resize(nextVertex);
        for (auto* a : {normals, uvs})
            if (a && a->size() > nextVertex)
                a->resize(nextVertex);
        if (tangents && tangents->size() > nextVertex)
            tangents->resize(nextVertex);
        vertexValence.resize(nextVertex);
    }
}

void MeshCleaner::removeLaminaFaces()
{
    const std::vector<uint32_t>& idx = *indices;
    std::unordered_set<Triple, TripleHash> seen;
    seen.reserve(*faceCount);
    size_t laminae = 0;
    for (uint32_t f = 0; f < *faceCount; ++f) {
        const uint32_t* i = &idx[size_t(f) * 3];
        const int k = i[0] <= i[1] && i[0] <= i[2] ? 0 : (i[1] <= i[2] ? 1 : 2);
        const Triple t{i[k], i[(k + 1) % 3], i[(k + 2) % 3]};
        if (seen.count(t) || seen.count(Triple{t.a, t.c, t.b})) {
            removedFaces.push_back(f);
            ++laminae;
        } else {
            seen.insert(t);
        }
    }
    if (laminae)
        ::Ond::Baking::report("Detected and removed ", laminae, " lamina faces.");
}

void MeshCleaner::removeDegenerateFaces()
{
    const std::vector<uint32_t>& idx = *indices;
    const uint32_t vertices = *vertexCount;
    std::vector<bool> removed(*faceCount, false);
    for (uint32_t f : removedFaces)
        removed[f] = true;
    std::vector<boost::container::small_vector<uint32_t, 10>> facesOf(vertices);
    for (uint32_t f = 0; f < *faceCount; ++f) {
        if (removed[f])
            continue;
        const uint32_t a = idx[size_t(f) * 3], b = idx[size_t(f) * 3 + 1], c = idx[size_t(f) * 3 + 2];
        // An index beyond the vertices can't be used either.
        const bool invalid = a >= vertices || b >= vertices || c >= vertices;
        if (invalid || closeTo((*positions)[a], (*positions)[b]) || closeTo((*positions)[a], (*positions)[c])
            || closeTo((*positions)[b], (*positions)[c])) {
            removedFaces.push_back(f);
            ++degenerateFaces;
            continue;
        }
        facesOf[a].push_back(f);
        facesOf[b].push_back(f);
        facesOf[c].push_back(f);
    }
    vertexValence.assign(vertices, 0);
    for (uint32_t v = 0; v < vertices; ++v) {
        vertexValence[v] = uint32_t(facesOf[v].size());
        if (facesOf[v].empty())
            ++isolatedVertices;
    }
}

void MeshCleaner::computeValences()
{
    // Filled from the face lists of the previous step; sized here for the
    // copies that follow.
    vertexValence.resize(*vertexCount, 0);
}

void MeshCleaner::fillEdgeMap()
{
    const std::vector<uint32_t>& idx = *indices;
    std::vector<bool> removed(*faceCount, false);
    for (uint32_t f : removedFaces)
        removed[f] = true;
    edgeMap.reserve(size_t(*faceCount) * 3);
    for (uint32_t f = 0; f < *faceCount; ++f) {
        if (removed[f])
            continue;
        for (uint32_t i = 0; i < 3; ++i) {
            const uint32_t from = idx[size_t(f) * 3 + i], to = idx[size_t(f) * 3 + (i + 1) % 3];
            if (!edgeMap.emplace(directedEdgeKey(from, to), EdgeMapEntry{f * 3 + i, f}).second)
                duplicatedEdges.push_back({from, to, f});
        }
    }
}

void MeshCleaner::compact()
{
    if (removedFaces.empty())
        return;
    std::sort(removedFaces.begin(), removedFaces.end());
    removedFaces.erase(std::unique(removedFaces.begin(), removedFaces.end()), removedFaces.end());
    std::vector<uint32_t>& idx = *indices;
    for (auto it = removedFaces.rbegin(); it != removedFaces.rend(); ++it) {
        const uint32_t hole = *it, last = *faceCount - 1;
        if (hole != last) {
            std::copy_n(idx.begin() + size_t(last) * 3, 3, idx.begin() + size_t(hole) * 3);
            renumberFace(last, hole);
        }
        --*faceCount;
    }
    removedFaceCount += uint32_t(removedFaces.size());
    removedFaces.clear();
}

// Face `from` now stands at `to`: its edges follow it.
void MeshCleaner::renumberFace(uint32_t from, uint32_t to)
{
    const std::vector<uint32_t>& idx = *indices;
    for (uint32_t i = 0; i < 3; ++i) {
        auto it = edgeMap.find(directedEdgeKey(idx[size_t(to) * 3 + i], idx[size_t(to) * 3 + (i + 1) % 3]));
        if (it != edgeMap.end() && it->second.face == from)
            it->second = {to * 3 + i, to};
    }
    for (auto& e : duplicatedEdges)
        if (e[2] == from)
            e[2] = to;
    for (auto& e : isolatedEdges)
        if (e[2] == from)
            e[2] = to;
}

Eigen::Vector3f MeshCleaner::faceNormal(uint32_t face) const
{
    const std::vector<uint32_t>& idx = *indices;
    const Eigen::Vector3f a = (*positions)[idx[size_t(face) * 3]].head<3>();
    const Eigen::Vector3f b = (*positions)[idx[size_t(face) * 3 + 1]].head<3>();
    const Eigen::Vector3f c = (*positions)[idx[size_t(face) * 3 + 2]].head<3>();
    const Eigen::Vector3f n = (b - a).cross(c - a);
    const float len = n.norm();
    return len > 0.0f ? Eigen::Vector3f(n / len) : n;
}

void MeshCleaner::resolveDuplicatedEdges()
{
    const std::vector<uint32_t>& idx = *indices;
    auto slotOf = [&](uint32_t face, uint32_t from, uint32_t to) {
        for (uint32_t i = 0; i < 3; ++i)
            if (idx[size_t(face) * 3 + i] == from && idx[size_t(face) * 3 + (i + 1) % 3] == to)
                return i;
        return 0u;
    };
    // Every face on the directed edge (from, to), out of the map and the list.
    auto take = [&](uint32_t from, uint32_t to, std::vector<uint32_t>& faces) {
        auto it = edgeMap.find(directedEdgeKey(from, to));
        if (it != edgeMap.end()) {
            faces.push_back(it->second.face);
            edgeMap.erase(it);
        }
        auto rest = std::stable_partition(duplicatedEdges.begin(), duplicatedEdges.end(),
                                          [&](const auto& e) { return !(e[0] == from && e[1] == to); });
        for (auto e = rest; e != duplicatedEdges.end(); ++e)
            faces.push_back((*e)[2]);
        duplicatedEdges.erase(rest, duplicatedEdges.end());
        for (size_t k = 0; k < faces.size(); ++k) {
            --vertexValence[from];
            --vertexValence[to];
        }
    };
    auto keep = [&](uint32_t from, uint32_t to, uint32_t face) {
        edgeMap[directedEdgeKey(from, to)] = {face * 3 + slotOf(face, from, to), face};
        ++vertexValence[from];
        ++vertexValence[to];
    };

    std::vector<uint32_t> forward, backward;
    std::vector<Eigen::Vector3f> forwardNormals, backwardNormals;
    std::vector<bool> forwardUsed, backwardUsed;
    while (!duplicatedEdges.empty()) {
        const uint32_t a = duplicatedEdges.front()[0], b = duplicatedEdges.front()[1];
        forward.clear();
        backward.clear();
        take(a, b, forward);
        take(b, a, backward);

        if (backward.empty()) {
            keep(a, b, forward.front());
            for (size_t k = 1; k < forward.size(); ++k)
                isolatedEdges.push_back({a, b, forward[k]});
            continue;
        }
        // Pairs by agreement of the unit normals, best first, the first
        // pair on ties, until one side is used up.
        forwardNormals.clear();
        backwardNormals.clear();
        for (uint32_t f : forward)
            forwardNormals.push_back(faceNormal(f));
        for (uint32_t f : backward)
            backwardNormals.push_back(faceNormal(f));
        forwardUsed.assign(forward.size(), false);
        backwardUsed.assign(backward.size(), false);
        const size_t pairs = std::min(forward.size(), backward.size());
        for (size_t p = 0; p < pairs; ++p) {
            float best = -1.0f;
            size_t bi = forward.size(), bj = backward.size();
            for (size_t i = 0; i < forward.size(); ++i) {
                if (forwardUsed[i])
                    continue;
                for (size_t j = 0; j < backward.size(); ++j) {
                    if (backwardUsed[j])
                        continue;
                    const float d = forwardNormals[i].dot(backwardNormals[j]);
                    if (bi == forward.size() || d > best) {
                        best = d;
                        bi = i;
                        bj = j;
                    }
                }
            }
            forwardUsed[bi] = backwardUsed[bj] = true;
            if (p == 0) {
                keep(a, b, forward[bi]);
                keep(b, a, backward[bj]);
            } else {
                groupedEdges.push_back({{a, b, forward[bi]}, {b, a, backward[bj]}});
            }
        }
        for (size_t i = 0; i < forward.size(); ++i)
            if (!forwardUsed[i])
                isolatedEdges.push_back({a, b, forward[i]});
        for (size_t j = 0; j < backward.size(); ++j)
            if (!backwardUsed[j])
                isolatedEdges.push_back({b, a, backward[j]});
    }
}

void MeshCleaner::growForDetaching()
{
    size_t count = nonManifoldVertices.size() + 2 * isolatedEdges.size();
    for (const auto& group : groupedEdges) {
        std::vector<uint32_t> distinct;
        for (const auto& e : group) {
            distinct.push_back(e[0]);
            distinct.push_back(e[1]);
        }
        std::sort(distinct.begin(), distinct.end());
        count += size_t(std::unique(distinct.begin(), distinct.end()) - distinct.begin());
    }
    if (count)
        growVertices(uint32_t(count));
}

void MeshCleaner::growVertices(uint32_t count)
{
    const size_t total = size_t(*vertexCount) + count;
    growTo(positions, total);
    growTo(normals, total);
    growTo(uvs, total);
    growTo(tangents, total);
    vertexValence.resize(total, 0);
    *vertexCount = uint32_t(total);
}

uint32_t MeshCleaner::copyVertex(uint32_t v)
{
    if (nextVertex >= *vertexCount)
        growVertices(1);
    const uint32_t copy = nextVertex++;
    (*positions)[copy] = (*positions)[v];
    if (normals && v < normals->size())
        (*normals)[copy] = (*normals)[v];
    if (uvs && v < uvs->size())
        (*uvs)[copy] = (*uvs)[v];
    if (tangents && v < tangents->size())
        (*tangents)[copy] = (*tangents)[v];
    return copy;
}

void MeshCleaner::reportAndReallocate()
{
    if (removedFaceCount) {
        indices->resize(size_t(*faceCount) * 3);
        indices->shrink_to_fit();
        ::Ond::Baking::report("In total, ", removedFaceCount, " faces were removed while cleaning the mesh.");
        removedFaceCount = 0;
    }
    const size_t corrected = isolatedEdges.size() + groupedEdges.size();
    if (corrected)
        ::Ond::Baking::report("Detected and corrected ", corrected, " duplicated edges.");
}

uint32_t MeshCleaner::currentVertex(uint32_t face, uint32_t v) const
{
    auto it = copiesOf.find(face);
    if (it != copiesOf.end())
        for (const auto& c : it->second)
            if (c[0] == v)
                v = c[1];
    return v;
}

void MeshCleaner::moveEdge(uint32_t face, uint32_t from, uint32_t to, uint32_t newFrom, uint32_t newTo)
{
    uint32_t* corner = &(*indices)[size_t(face) * 3];
    bool mapped[3];
    for (uint32_t i = 0; i < 3; ++i) {
        auto it = edgeMap.find(directedEdgeKey(corner[i], corner[(i + 1) % 3]));
        mapped[i] = it != edgeMap.end() && it->second.face == face;
        if (mapped[i])
            edgeMap.erase(it);
        if (corner[i] == from && corner[(i + 1) % 3] == to)
            mapped[i] = true; // the moved edge itself
    }
    for (uint32_t i = 0; i < 3; ++i) {
        if (corner[i] == from)
            corner[i] = newFrom;
        else if (corner[i] == to)
            corner[i] = newTo;
    }
    for (uint32_t i = 0; i < 3; ++i)
        if (mapped[i])
            edgeMap[directedEdgeKey(corner[i], corner[(i + 1) % 3])] = {face * 3 + i, face};
    copiesOf[face].push_back({from, newFrom});
    copiesOf[face].push_back({to, newTo});
    ++vertexValence[newFrom];
    ++vertexValence[newTo];
}

void MeshCleaner::detachIsolatedEdges()
{
    for (const auto& entry : isolatedEdges) {
        const uint32_t face = entry[2];
        const uint32_t from = currentVertex(face, entry[0]), to = currentVertex(face, entry[1]);
        const uint32_t newFrom = copyVertex(from), newTo = copyVertex(to);
        moveEdge(face, from, to, newFrom, newTo);
    }
}

void MeshCleaner::detachGroupedEdges()
{
    std::vector<std::array<uint32_t, 2>> copies; // old, new within the group
    for (const auto& group : groupedEdges) {
        copies.clear();
        auto copyFor = [&](uint32_t v) {
            for (const auto& c : copies)
                if (c[0] == v)
                    return c[1];
            const uint32_t copy = copyVertex(v);
            copies.push_back({v, copy});
            return copy;
        };
        for (const auto& entry : group) {
            const uint32_t face = entry[2];
            const uint32_t from = currentVertex(face, entry[0]), to = currentVertex(face, entry[1]);
            const uint32_t newFrom = copyFor(from);
            const uint32_t newTo = copyFor(to);
            moveEdge(face, from, to, newFrom, newTo);
        }
    }
}

void MeshCleaner::report()
{
    if (isolatedVertices)
        ::Ond::Baking::report("Detected and removed ", isolatedVertices, " isolated vertices.");
    if (degenerateFaces)
        ::Ond::Baking::report("Detected and removed ", degenerateFaces, " faces (degenerate or duplicate).");
    if (!isolatedEdges.empty())
        ::Ond::Baking::report("Detected and removed ", isolatedEdges.size(), " isolated edges.");
    if (!groupedEdges.empty())
        ::Ond::Baking::report("Detected and removed ", groupedEdges.size(), " grouped edges.");
    // What follows reports only its own numbers.
    isolatedVertices = 0;
    degenerateFaces = 0;
    isolatedEdges.clear();
    groupedEdges.clear();
}

} // namespace Ond::Baking
