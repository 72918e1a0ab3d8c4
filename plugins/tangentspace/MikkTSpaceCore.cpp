#include "plugins/tangentspace/MikkTSpaceCore.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <unordered_map>
#include <vector>

// The steps, in the order of the published description of MikkTSpace:
//  1. weld corners with identical position, normal and texture coordinate;
//  2. set triangles with two coincident corners aside as degenerate;
//  3. per triangle, the directions of growing s and t (the first order
//     derivatives of position by texture coordinate) and the orientation of
//     its UV image;
//  4. link triangles across shared edges of welded vertices;
//  5. per vertex, group the triangles that reach each other across edges
//     and share the UV orientation, so that mirrored UV islands and seams
//     keep separate frames;
//  6. per group, average the derivatives projected onto the vertex's
//     tangent plane, weighted by the triangle's angle at the vertex;
//  7. degenerate triangles borrow the frame of a good corner on the same
//     vertex.

namespace Ond::TangentSpace {

namespace {

struct Vec3
{
    float x = 0.0f, y = 0.0f, z = 0.0f;
};

inline Vec3 operator+(Vec3 a, Vec3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vec3 operator-(Vec3 a, Vec3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Vec3 operator*(float s, Vec3 a) { return {s * a.x, s * a.y, s * a.z}; }
inline float dot(Vec3 a, Vec3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline float length(Vec3 a) { return std::sqrt(dot(a, a)); }
inline bool notZero(float v) { return std::fabs(v) > FLT_MIN; }
inline bool notZero(Vec3 a) { return notZero(a.x) || notZero(a.y) || notZero(a.z); }
inline bool operator==(Vec3 a, Vec3 b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

inline Vec3 normalized(Vec3 a)
{
    const float len = length(a);
    return notZero(len) ? (1.0f / len) * a : a;
}

// The part of v in the plane normal to n, unit length when not zero.
inline Vec3 tangentPart(Vec3 v, Vec3 n) { return normalized(v - dot(n, v) * n); }

enum TriangleFlag : unsigned
{
    Degenerate = 1u,
    GroupWithAny = 2u, // no usable UV derivatives: joins whatever group reaches it
    OrientPreserving = 4u,
};

struct Triangle
{
    int face = 0;      // the caller's face number
    int vertex[3]{};   // welded vertex of each corner
    int neighbour[3]{-1, -1, -1}; // across the edge from corner i to corner i + 1
    int group[3]{-1, -1, -1};
    Vec3 os, ot;       // unit directions of growing s and t
    float magS = 0.0f, magT = 0.0f;
    unsigned flags = 0;
};

struct Group
{
    int vertex = 0;
    bool orientPreserving = false;
    // Its triangles are groupTriangles[begin, end): a group is complete
    // before the next one starts, so all of them share one array.
    size_t begin = 0, end = 0;
};

struct Frame
{
    Vec3 os{1.0f, 0.0f, 0.0f};
    Vec3 ot{0.0f, 1.0f, 0.0f};
    float magS = 1.0f, magT = 1.0f;
    bool orientPreserving = true;
};

struct Corners
{
    std::vector<Vec3> position, normal;
    std::vector<float> u, v;
};

Corners readCorners(const TangentSpaceContext* context, int faceCount)
{
    const TangentSpaceCallbacks& cb = *context->callbacks;
    Corners c;
    const size_t n = size_t(faceCount) * 3;
    c.position.resize(n);
    c.normal.resize(n);
    c.u.resize(n);
    c.v.resize(n);
    for (int f = 0; f < faceCount; ++f) {
        for (int i = 0; i < 3; ++i) {
            const size_t k = size_t(f) * 3 + i;
            float p[3] = {0, 0, 0}, nr[3] = {0, 0, 0}, t[2] = {0, 0};
            cb.getPosition(context, p, f, i);
            cb.getNormal(context, nr, f, i);
            cb.getTexCoord(context, t, f, i);
            c.position[k] = {p[0], p[1], p[2]};
            c.normal[k] = {nr[0], nr[1], nr[2]};
            c.u[k] = t[0];
            c.v[k] = t[1];
        }
    }
    return c;
}

// Exact weld: an open-addressing hash on the bit patterns, with -0 folded
// onto +0 so that the comparison is the one of float equality. Each corner
// maps to the first corner with the same values.
std::vector<int> weldExact(const Corners& c)
{
    auto bitsOf = [](float f) {
        f += 0.0f;
        uint32_t b;
        std::memcpy(&b, &f, 4);
        return b;
    };
    const size_t n = c.position.size();
    std::vector<uint32_t> keys(n * 8);
    for (size_t k = 0; k < n; ++k) {
        uint32_t* key = &keys[k * 8];
        const Vec3 p = c.position[k], nr = c.normal[k];
        key[0] = bitsOf(p.x);
        key[1] = bitsOf(p.y);
        key[2] = bitsOf(p.z);
        key[3] = bitsOf(nr.x);
        key[4] = bitsOf(nr.y);
        key[5] = bitsOf(nr.z);
        key[6] = bitsOf(c.u[k]);
        key[7] = bitsOf(c.v[k]);
    }
    size_t capacity = 16;
    while (capacity < n * 2)
        capacity *= 2;
    std::vector<int> table(capacity, -1);
    std::vector<int> vertexOf(n);
    for (size_t k = 0; k < n; ++k) {
        const uint32_t* key = &keys[k * 8];
        uint64_t h = 1469598103934665603ull;
        for (int i = 0; i < 8; ++i)
            h = (h ^ key[i]) * 1099511628211ull;
        // Whole-number coordinates leave the low bits of the words at zero:
        // mix them up before the table takes the low bits.
        h ^= h >> 31;
        h *= 0x7fb5d329728ea185ull;
        h ^= h >> 27;
        h *= 0x81dadef4bc2dd44dull;
        h ^= h >> 33;
        size_t slot = size_t(h) & (capacity - 1);
        while (true) {
            const int other = table[slot];
            if (other < 0) {
                table[slot] = int(k);
                vertexOf[k] = int(k);
                break;
            }
            if (std::memcmp(&keys[size_t(other) * 8], key, 32) == 0) {
                vertexOf[k] = other;
                break;
            }
            slot = (slot + 1) & (capacity - 1);
        }
    }
    return vertexOf;
}

// Weld within tolerances. Representatives are kept in cells of twice the
// position tolerance; a corner looks for one in its cell and, where it lies
// near a cell border, in the neighbouring cells. The first corner that
// finds none becomes a representative itself.
std::vector<int> weldNear(const Corners& c, const CoreOptions& o)
{
    const size_t n = c.position.size();
    const float cell = std::max(o.positionTolerance * 2.0f, 1e-30f);
    auto cellOf = [cell](float x) { return int64_t(std::floor(x / cell)); };
    auto keyOf = [](int64_t x, int64_t y, int64_t z) {
        return (uint64_t(x) * 73856093u) ^ (uint64_t(y) * 19349663u) ^ (uint64_t(z) * 83492791u);
    };
    auto near = [](Vec3 a, Vec3 b, float tol) {
        return std::fabs(a.x - b.x) <= tol && std::fabs(a.y - b.y) <= tol && std::fabs(a.z - b.z) <= tol;
    };
    std::unordered_map<uint64_t, std::vector<int>> cells;
    cells.reserve(n);
    std::vector<int> vertexOf(n, -1);
    for (size_t k = 0; k < n; ++k) {
        const Vec3 p = c.position[k];
        const int64_t cx = cellOf(p.x), cy = cellOf(p.y), cz = cellOf(p.z);
        // Neighbour cells only on the sides the tolerance reaches into.
        auto span = [&](float x, int64_t ci, int64_t& lo, int64_t& hi) {
            lo = cellOf(x - o.positionTolerance) < ci ? ci - 1 : ci;
            hi = cellOf(x + o.positionTolerance) > ci ? ci + 1 : ci;
        };
        int64_t x0, x1, y0, y1, z0, z1;
        span(p.x, cx, x0, x1);
        span(p.y, cy, y0, y1);
        span(p.z, cz, z0, z1);
        int found = -1;
        for (int64_t x = x0; x <= x1 && found < 0; ++x)
            for (int64_t y = y0; y <= y1 && found < 0; ++y)
                for (int64_t z = z0; z <= z1 && found < 0; ++z) {
                    auto it = cells.find(keyOf(x, y, z));
                    if (it == cells.end())
                        continue;
                    for (int r : it->second) {
                        if (near(c.position[r], p, o.positionTolerance)
                            && near(c.normal[r], c.normal[k], o.normalTolerance)
                            && std::fabs(c.u[r] - c.u[k]) <= o.texCoordTolerance
                            && std::fabs(c.v[r] - c.v[k]) <= o.texCoordTolerance) {
                            found = r;
                            break;
                        }
                    }
                }
        if (found < 0) {
            found = int(k);
            cells[keyOf(cx, cy, cz)].push_back(found);
        }
        vertexOf[k] = found;
    }
    return vertexOf;
}

class Generator
{
public:
    Generator(Corners corners, std::vector<int> vertexOf, float thresholdCos)
        : c(std::move(corners)), vertexOf(std::move(vertexOf)), thresholdCos(thresholdCos)
    {
    }

    std::vector<Frame> run()
    {
        const int faceCount = int(c.position.size() / 3);
        splitDegenerates(faceCount);
        for (Triangle& t : tris)
            initTriangle(t);
        linkNeighbours();
        buildGroups();
        std::vector<Frame> frames(size_t(faceCount) * 3);
        evaluateGroups(frames);
        coverDegenerates(frames);
        return frames;
    }

private:
    Vec3 pos(int vertex) const { return c.position[vertex]; }
    Vec3 nrm(int vertex) const { return c.normal[vertex]; }

    static int cornerOf(const Triangle& t, int vertex)
    {
        int i = 0;
        while (i < 3 && t.vertex[i] != vertex)
            ++i;
        return i;
    }

    // Good triangles first, in input order, then the degenerate ones.
    void splitDegenerates(int faceCount)
    {
        tris.reserve(faceCount);
        groupTriangles.reserve(size_t(faceCount) * 3);
        for (int f = 0; f < faceCount; ++f) {
            Triangle t;
            t.face = f;
            for (int i = 0; i < 3; ++i)
                t.vertex[i] = vertexOf[size_t(f) * 3 + i];
            const Vec3 p0 = pos(t.vertex[0]), p1 = pos(t.vertex[1]), p2 = pos(t.vertex[2]);
            if (p0 == p1 || p0 == p2 || p1 == p2) {
                t.flags = Degenerate;
                degenerates.push_back(t);
            } else {
                tris.push_back(t);
            }
        }
    }

    void initTriangle(Triangle& t) const
    {
        t.flags |= GroupWithAny; // until its derivatives prove usable
        const int a = t.vertex[0], b = t.vertex[1], d = t.vertex[2];
        const float s21 = c.u[b] - c.u[a], t21 = c.v[b] - c.v[a];
        const float s31 = c.u[d] - c.u[a], t31 = c.v[d] - c.v[a];
        const Vec3 d1 = pos(b) - pos(a), d2 = pos(d) - pos(a);
        const float signedAreaUV = s21 * t31 - t21 * s31;
        Vec3 os = t31 * d1 - t21 * d2;
        Vec3 ot = s21 * d2 - s31 * d1;
        if (signedAreaUV > 0.0f)
            t.flags |= OrientPreserving;
        if (notZero(signedAreaUV)) {
            const float absArea = std::fabs(signedAreaUV);
            const float lenS = length(os), lenT = length(ot);
            const float sign = (t.flags & OrientPreserving) ? 1.0f : -1.0f;
            if (notZero(lenS))
                os = (sign / lenS) * os;
            if (notZero(lenT))
                ot = (sign / lenT) * ot;
            t.magS = lenS / absArea;
            t.magT = lenT / absArea;
            if (notZero(t.magS) && notZero(t.magT))
                t.flags &= ~unsigned(GroupWithAny);
        }
        t.os = os;
        t.ot = ot;
    }

    // Each edge (a, b) pairs with the first free reverse edge (b, a), in the
    // order of (from, to, triangle).
    void linkNeighbours()
    {
        struct Edge
        {
            int from, to, tri, side;
        };
        std::vector<Edge> edges;
        edges.reserve(tris.size() * 3);
        for (int t = 0; t < int(tris.size()); ++t)
            for (int i = 0; i < 3; ++i)
                edges.push_back({tris[t].vertex[i], tris[t].vertex[(i + 1) % 3], t, i});
        auto less = [](const Edge& x, const Edge& y) {
            if (x.from != y.from)
                return x.from < y.from;
            if (x.to != y.to)
                return x.to < y.to;
            return x.tri < y.tri;
        };
        std::sort(edges.begin(), edges.end(), less);
        for (const Edge& e : edges) {
            if (tris[e.tri].neighbour[e.side] >= 0)
                continue;
            auto it = std::lower_bound(edges.begin(), edges.end(), Edge{e.to, e.from, -1, 0}, less);
            for (; it != edges.end() && it->from == e.to && it->to == e.from; ++it) {
                if (it->tri != e.tri && tris[it->tri].neighbour[it->side] < 0) {
                    tris[e.tri].neighbour[e.side] = it->tri;
                    tris[it->tri].neighbour[it->side] = e.tri;
                    break;
                }
            }
        }
    }

    void buildGroups()
    {
        for (int t = 0; t < int(tris.size()); ++t) {
            for (int i = 0; i < 3; ++i) {
                Triangle& tri = tris[t];
                if ((tri.flags & GroupWithAny) || tri.group[i] >= 0)
                    continue;
                const int g = int(groups.size());
                groupTriangles.push_back(t);
                groups.push_back({tri.vertex[i], (tri.flags & OrientPreserving) != 0, groupTriangles.size() - 1, 0});
                tri.group[i] = g;
                const int left = tri.neighbour[i], right = tri.neighbour[i > 0 ? i - 1 : 2];
                if (left >= 0)
                    assign(left, g);
                if (right >= 0)
                    assign(right, g);
                groups[g].end = groupTriangles.size();
            }
        }
    }

    // Spreads group g over the fan of its vertex, across shared edges, as
    // long as the triangles agree on the UV orientation.
    void assign(int t, int g)
    {
        Triangle& tri = tris[t];
        Group& group = groups[g];
        const int i = cornerOf(tri, group.vertex);
        if (i > 2 || tri.group[i] == g)
            return;
        if (tri.group[i] >= 0)
            return;
        if ((tri.flags & GroupWithAny) && tri.group[0] < 0 && tri.group[1] < 0 && tri.group[2] < 0) {
            // The first group to reach it decides its orientation.
            tri.flags &= ~unsigned(OrientPreserving);
            if (group.orientPreserving)
                tri.flags |= OrientPreserving;
        }
        if (((tri.flags & OrientPreserving) != 0) != group.orientPreserving)
            return;
        groupTriangles.push_back(t);
        tri.group[i] = g;
        const int left = tri.neighbour[i], right = tri.neighbour[i > 0 ? i - 1 : 2];
        if (left >= 0)
            assign(left, g);
        if (right >= 0)
            assign(right, g);
    }

    void evaluateGroups(std::vector<Frame>& frames)
    {
        std::vector<Vec3> os, ot;
        std::vector<int> members;
        // Subgroups of one group, their members one after another.
        std::vector<int> subMembers;
        std::vector<size_t> subStart;
        std::vector<Frame> subFrames;
        for (int g = 0; g < int(groups.size()); ++g) {
            const Group& group = groups[g];
            const int* triangles = groupTriangles.data() + group.begin;
            const size_t count = group.end - group.begin;
            const Vec3 n = nrm(group.vertex);
            os.resize(count);
            ot.resize(count);
            for (size_t k = 0; k < count; ++k) {
                const Triangle& t = tris[triangles[k]];
                os[k] = tangentPart(t.os, n);
                ot[k] = tangentPart(t.ot, n);
            }
            subMembers.clear();
            subStart.assign(1, 0);
            subFrames.clear();
            for (size_t k = 0; k < count; ++k) {
                const Triangle& t = tris[triangles[k]];
                members.clear();
                for (size_t j = 0; j < count; ++j) {
                    const Triangle& other = tris[triangles[j]];
                    const bool any = ((t.flags | other.flags) & GroupWithAny) != 0;
                    const bool sameFace = t.face == other.face;
                    if (any || sameFace || (dot(os[k], os[j]) > thresholdCos && dot(ot[k], ot[j]) > thresholdCos))
                        members.push_back(triangles[j]);
                }
                std::sort(members.begin(), members.end());
                size_t s = 0;
                while (s < subFrames.size()
                       && !(subStart[s + 1] - subStart[s] == members.size()
                            && std::equal(members.begin(), members.end(), subMembers.begin() + subStart[s])))
                    ++s;
                if (s == subFrames.size()) {
                    subMembers.insert(subMembers.end(), members.begin(), members.end());
                    subStart.push_back(subMembers.size());
                    subFrames.push_back(evaluate(members, group.vertex));
                }
                Frame frame = subFrames[s];
                frame.orientPreserving = group.orientPreserving;
                frames[size_t(t.face) * 3 + cornerOf(t, group.vertex)] = frame;
            }
        }
    }

    // Angle-weighted mean of the members' derivatives in the tangent plane
    // of the vertex.
    Frame evaluate(const std::vector<int>& members, int vertex) const
    {
        Frame f;
        f.os = f.ot = Vec3{};
        f.magS = f.magT = 0.0f;
        float angleSum = 0.0f;
        for (int m : members) {
            const Triangle& t = tris[m];
            if (t.flags & GroupWithAny)
                continue;
            const int i = cornerOf(t, vertex);
            const Vec3 n = nrm(t.vertex[i]);
            const Vec3 os = tangentPart(t.os, n), ot = tangentPart(t.ot, n);
            const Vec3 p0 = pos(t.vertex[i > 0 ? i - 1 : 2]);
            const Vec3 p1 = pos(t.vertex[i]);
            const Vec3 p2 = pos(t.vertex[i < 2 ? i + 1 : 0]);
            const Vec3 e1 = tangentPart(p0 - p1, n), e2 = tangentPart(p2 - p1, n);
            const float cosine = std::clamp(dot(e1, e2), -1.0f, 1.0f);
            const float angle = std::acos(cosine);
            f.os = f.os + angle * os;
            f.ot = f.ot + angle * ot;
            f.magS += angle * t.magS;
            f.magT += angle * t.magT;
            angleSum += angle;
        }
        f.os = normalized(f.os);
        f.ot = normalized(f.ot);
        if (angleSum > 0.0f) {
            f.magS /= angleSum;
            f.magT /= angleSum;
        }
        return f;
    }

    void coverDegenerates(std::vector<Frame>& frames) const
    {
        if (degenerates.empty())
            return;
        std::unordered_map<int, size_t> goodCorner;
        for (const Triangle& t : tris)
            for (int i = 0; i < 3; ++i)
                goodCorner.emplace(t.vertex[i], size_t(t.face) * 3 + i);
        for (const Triangle& d : degenerates) {
            for (int i = 0; i < 3; ++i) {
                auto it = goodCorner.find(d.vertex[i]);
                if (it != goodCorner.end())
                    frames[size_t(d.face) * 3 + i] = frames[it->second];
            }
        }
    }

    Corners c;
    std::vector<int> vertexOf;
    float thresholdCos;
    std::vector<Triangle> tris;
    std::vector<Triangle> degenerates;
    std::vector<Group> groups;
    std::vector<int> groupTriangles;
};

} // namespace

int generate(const TangentSpaceContext* context, float angularThreshold, const CoreOptions& options)
{
    if (!context || !context->callbacks)
        return 0;
    const TangentSpaceCallbacks& cb = *context->callbacks;
    if (!cb.getFaceCount || !cb.getPosition || !cb.getNormal || !cb.getTexCoord || !cb.setTangent)
        return 0;
    const int faceCount = cb.getFaceCount(context);
    if (faceCount <= 0)
        return 0;

    Corners corners = readCorners(context, faceCount);
    const bool exact = options.positionTolerance <= 0.0f && options.normalTolerance <= 0.0f
                       && options.texCoordTolerance <= 0.0f;
    std::vector<int> vertexOf = exact ? weldExact(corners) : weldNear(corners, options);
    const float thresholdCos = float(std::cos(double(angularThreshold) * 3.14159265358979323846 / 180.0));

    Generator generator(std::move(corners), std::move(vertexOf), thresholdCos);
    const std::vector<Frame> frames = generator.run();
    for (int f = 0; f < faceCount; ++f) {
        for (int i = 0; i < 3; ++i) {
            const Frame& frame = frames[size_t(f) * 3 + i];
            const float tangent[3] = {frame.os.x, frame.os.y, frame.os.z};
            cb.setTangent(context, tangent, frame.orientPreserving ? 1.0f : -1.0f, f, i);
        }
    }
    return 1;
}

} // namespace Ond::TangentSpace
