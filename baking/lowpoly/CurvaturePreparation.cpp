#include "baking/lowpoly/CurvaturePreparation.h"

#include "baking/lowpoly/GLBakeParameters.h"

#include <Eigen/Geometry>
#include <Eigen/LU>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numeric>

namespace Ond::Baking {

bool CollectMeshDataVisitor::visitMesh(const MeshItem& item)
{
    const SceneGraph::Mesh::Data& data = *item.data;
    const SceneGraph::Vec3Buffer* positions = data.getPositions();
    if (!positions)
        return true;
    const size_t n = positions->size();
    const SceneGraph::Vec3Buffer* normals = data.getNormals();
    const SceneGraph::Vec2Buffer* uvs = data.getUvSet(m_uvSet);
    if (!uvs)
        uvs = data.getUvSet(0);

    const WorldTransform world(item.transform);
    const uint32_t base = uint32_t(mesh.vertices.size());
    mesh.vertices.resize(mesh.vertices.size() + n);
    CurvatureVertex* out = mesh.vertices.data() + base;
    for (size_t i = 0; i < n; ++i) {
        out[i].position = world.position((*positions)[i]);
        out[i].normal = normals && normals->size() == n ? world.normal((*normals)[i]) : Eigen::Vector3f::Zero();
        out[i].uv = uvs && uvs->size() == n ? (*uvs)[i] : Eigen::Vector2f::Zero();
    }

    size_t indexCount = 0;
    for (const SceneGraph::SubMesh& sub : data.getSubMeshes())
        indexCount += sub.indices ? sub.indices->size() : 0;
    mesh.triangles.reserve(mesh.triangles.size() + indexCount);
    for (const SceneGraph::SubMesh& sub : data.getSubMeshes()) {
        if (sub.primitiveType != SceneGraph::PrimitiveType::Triangles || sub.indicesPerPrimitive != 3 || !sub.indices
            || !passesMeshMask(selectionMaskFromRenderFlags(sub.renderFlags.value()), m_meshMask))
            continue;
        const size_t count = sub.indices->size() / 3 * 3;
        for (size_t i = 0; i < count; ++i) {
            const uint32_t index = (*sub.indices)[i];
            mesh.triangles.push_back(base + (index < n ? index : 0));
        }
        if (count > 0)
            empty = false;
    }
    return true;
}

int packedLog2Width(uint64_t groups, uint64_t entries)
{
    const uint64_t m = std::max<uint64_t>(2 * groups, entries);
    int bits = 0;
    while (bits < 63 && (uint64_t(1) << bits) < m)
        ++bits;
    return std::clamp(bits / 2, 6, 12);
}

float curvatureScale(const CurvatureMesh& mesh)
{
    if (mesh.vertices.empty())
        return 1.0f;
    Eigen::Vector3f lo = mesh.vertices.front().position;
    Eigen::Vector3f hi = lo;
    for (const CurvatureVertex& v : mesh.vertices) {
        lo = lo.cwiseMin(v.position);
        hi = hi.cwiseMax(v.position);
    }
    const Eigen::Vector3f extent = hi - lo;
    float largest = extent.x();
    if (extent.y() > largest)
        largest = extent.y();
    if (extent.z() > largest)
        largest = extent.z();
    return largest > 0.0f ? 200.0f / largest : 1.0f;
}

namespace {

constexpr uint32_t none = 0xFFFFFFFFu;

// Bits of a coordinate with both zeros the same: welding is by value.
uint32_t coordinateBits(float v)
{
    if (v == 0.0f)
        v = 0.0f;
    uint32_t bits;
    std::memcpy(&bits, &v, 4);
    return bits;
}

struct Weld
{
    std::vector<uint32_t> representative; // first vertex at the same place
    std::vector<uint32_t> next;           // next vertex at the same place
    std::vector<uint32_t> group;          // normal group of each vertex
    std::vector<uint32_t> groupFirst;     // first vertex of each group
};

Weld weldAndGroup(const CurvatureMesh& mesh)
{
    const uint32_t n = uint32_t(mesh.vertices.size());
    Weld weld;
    weld.representative.resize(n);
    weld.next.assign(n, none);
    weld.group.resize(n);

    // Sorting by position keeps equal places together in vertex order: the
    // first of a run is the first vertex there.
    std::vector<std::array<uint32_t, 4>> keys(n);
    for (uint32_t v = 0; v < n; ++v) {
        const Eigen::Vector3f& p = mesh.vertices[v].position;
        keys[v] = {coordinateBits(p.x()), coordinateBits(p.y()), coordinateBits(p.z()), v};
    }
    std::sort(keys.begin(), keys.end());
    for (uint32_t i = 0; i < n;) {
        uint32_t j = i + 1;
        while (j < n && keys[j][0] == keys[i][0] && keys[j][1] == keys[i][1] && keys[j][2] == keys[i][2])
            ++j;
        const uint32_t first = keys[i][3];
        for (uint32_t k = i; k < j; ++k) {
            weld.representative[keys[k][3]] = first;
            if (k + 1 < j)
                weld.next[keys[k][3]] = keys[k + 1][3];
        }
        i = j;
    }

    for (uint32_t v = 0; v < n; ++v) {
        const Eigen::Vector3f& normal = mesh.vertices[v].normal;
        uint32_t found = none;
        for (uint32_t u = weld.representative[v]; u != v && u != none; u = weld.next[u]) {
            if (std::abs(normal.dot(mesh.vertices[u].normal) - 1.0f) < 0.001f) {
                found = weld.group[u];
                break;
            }
        }
        if (found == none) {
            found = uint32_t(weld.groupFirst.size());
            weld.groupFirst.push_back(v);
        }
        weld.group[v] = found;
    }
    return weld;
}

struct EdgeSide
{
    uint64_t key;
    uint32_t id; // triangle * 3 + corner: the edge from that corner to the next
};

} // namespace

CurvatureGpuData prepareCurvatureMesh(const CurvatureMesh& mesh, bool perVertex, bool seams, float scale)
{
    CurvatureGpuData out;
    const Weld weld = weldAndGroup(mesh);
    const uint32_t groups = uint32_t(weld.groupFirst.size());
    out.groupCount = groups;
    const auto& vertices = mesh.vertices;
    const auto& tri = mesh.triangles;

    // Sides of the same edge side by side, in walk order within an edge.
    const uint32_t sideCount = uint32_t(tri.size());
    std::vector<EdgeSide> sides(sideCount);
    for (uint32_t id = 0; id < sideCount; ++id) {
        const uint32_t a = weld.representative[tri[id]];
        const uint32_t b = weld.representative[tri[id - id % 3 + (id % 3 + 1) % 3]];
        sides[id] = {(uint64_t(std::min(a, b)) << 32) | std::max(a, b), id};
    }
    std::sort(sides.begin(), sides.end(), [](const EdgeSide& l, const EdgeSide& r) {
        return l.key != r.key ? l.key < r.key : l.id < r.id;
    });

    std::vector<std::pair<uint32_t, uint32_t>> links; // directed, group to group
    auto link = [&](uint32_t g0, uint32_t g1) {
        links.emplace_back(g0, g1);
        links.emplace_back(g1, g0);
    };
    auto endsOf = [&](uint32_t id) {
        return std::pair<uint32_t, uint32_t>(tri[id], tri[id - id % 3 + (id % 3 + 1) % 3]);
    };
    auto appendLine = [&](const Eigen::Vector2f& uv0, float l0, const Eigen::Vector2f& uv1, float l1) {
        out.seamLines.insert(out.seamLines.end(), {uv0.x(), uv0.y(), l0, uv1.x(), uv1.y(), l1});
    };

    for (uint32_t i = 0; i < sideCount;) {
        uint32_t j = i + 1;
        while (j < sideCount && sides[j].key == sides[i].key)
            ++j;
        const auto [a, b] = endsOf(sides[i].id);
        const uint32_t ga = weld.group[a], gb = weld.group[b];
        if (perVertex)
            link(ga, gb);
        std::pair<uint32_t, uint32_t> linkedExtra(none, none);
        for (uint32_t k = i + 1; k < j; ++k) {
            auto [c, d] = endsOf(sides[k].id);
            // Match the ends by place: c lies where a does.
            if (weld.representative[c] != weld.representative[a])
                std::swap(c, d);
            const uint32_t gc = weld.group[c], gd = weld.group[d];
            if ((c == a && d == b) || (gc == ga && gd == gb))
                continue;
            if (perVertex) {
                const std::pair<uint32_t, uint32_t> pair(std::min(gc, gd), std::max(gc, gd));
                const std::pair<uint32_t, uint32_t> first(std::min(ga, gb), std::max(ga, gb));
                if (pair != first && pair != linkedExtra) {
                    link(gc, gd);
                    linkedExtra = pair;
                }
            }
            if (seams) {
                const Eigen::Vector3f edge = vertices[a].position - vertices[b].position;
                auto fold = [&](uint32_t first, uint32_t second) {
                    const Eigen::Vector3f& n0 = vertices[first].normal;
                    const Eigen::Vector3f& n1 = vertices[second].normal;
                    const float l = n0.dot(n1) - 1.0f;
                    return edge.dot(n0.cross(n1)) < 0.0f ? -l : l;
                };
                const float la = fold(a, c), lb = fold(b, d);
                appendLine(vertices[a].uv, la, vertices[b].uv, lb);
                if (vertices[a].uv != vertices[c].uv || vertices[b].uv != vertices[d].uv)
                    appendLine(vertices[c].uv, la, vertices[d].uv, lb);
            }
        }
        i = j;
    }
    out.entryCount = uint32_t(links.size());

    if (!perVertex)
        return out;

    // Neighbour lists in the order the links were made.
    std::vector<uint32_t> start(size_t(groups) + 1, 0);
    for (const auto& l : links)
        ++start[l.first + 1];
    std::partial_sum(start.begin(), start.end(), start.begin());
    std::vector<uint32_t> neighbours(links.size());
    {
        std::vector<uint32_t> fill(start.begin(), start.end() - 1);
        for (const auto& l : links)
            neighbours[fill[l.first]++] = l.second;
    }

    out.log2Width = packedLog2Width(groups, links.size());
    const int w = out.log2Width;
    out.vertexKeys.resize(vertices.size());
    for (size_t v = 0; v < vertices.size(); ++v)
        out.vertexKeys[v] = packedIndex(weld.group[v], w);

    out.posNrm.reserve(size_t(groups) * 8);
    out.connections.reserve(links.size());
    for (uint32_t g = 0; g < groups; ++g) {
        const CurvatureVertex& r = vertices[weld.groupFirst[g]];
        const Eigen::Vector3f p = r.position * scale;
        out.posNrm.insert(out.posNrm.end(), {p.x(), p.y(), p.z(), packedIndex(uint32_t(out.connections.size()), w),
                                             r.normal.x(), r.normal.y(), r.normal.z(),
                                             float(start[g + 1] - start[g])});
        // A neighbour at the very same place is left out, but the count
        // stands as it was: the group then reads on into the next list.
        for (uint32_t k = start[g]; k < start[g + 1]; ++k) {
            const uint32_t other = neighbours[k];
            if (vertices[weld.groupFirst[other]].position != r.position)
                out.connections.push_back(packedIndex(other, w));
        }
    }
    return out;
}

} // namespace Ond::Baking
