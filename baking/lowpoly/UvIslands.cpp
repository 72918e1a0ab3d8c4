#include "baking/lowpoly/UvIslands.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>

namespace Ond::Baking {

namespace {

struct EdgeRecord
{
    uint32_t lo;
    uint32_t hi;
    // +1 when the triangle runs from lo to hi, -1 the other way.
    int32_t sign;
    uint32_t triangle;
};

struct BorderEdge
{
    uint32_t island;
    uint32_t from;
    uint32_t to;
};

class DisjointSets
{
public:
    explicit DisjointSets(size_t count) : m_parent(count) { std::iota(m_parent.begin(), m_parent.end(), 0u); }
    uint32_t find(uint32_t a)
    {
        while (m_parent[a] != a) {
            m_parent[a] = m_parent[m_parent[a]];
            a = m_parent[a];
        }
        return a;
    }
    void unite(uint32_t a, uint32_t b)
    {
        a = find(a);
        b = find(b);
        // The smaller index as root keeps islands in triangle order.
        if (a < b)
            m_parent[b] = a;
        else if (b < a)
            m_parent[a] = b;
    }

private:
    std::vector<uint32_t> m_parent;
};

bool finite(const QPointF& p) { return std::isfinite(p.x()) && std::isfinite(p.y()); }

double cross(const QPointF& a, const QPointF& b, const QPointF& c)
{
    return (b.x() - a.x()) * (c.y() - a.y()) - (b.y() - a.y()) * (c.x() - a.x());
}

double boundsArea(const QPolygonF& loop)
{
    const QRectF r = loop.boundingRect();
    return r.width() * r.height();
}

} // namespace

std::vector<UvIsland> findUvIslands(const std::vector<QPointF>& corners)
{
    const size_t triangleCount = corners.size() / 3;
    std::vector<uint8_t> valid(triangleCount, 0);
    // Sorted by value, not through indices: the sort then reads memory in order.
    struct KeyedCorner
    {
        double x, y;
        uint32_t corner;
    };
    std::vector<KeyedCorner> used;
    used.reserve(corners.size());
    for (size_t t = 0; t < triangleCount; ++t) {
        const QPointF* p = &corners[3 * t];
        if (!finite(p[0]) || !finite(p[1]) || !finite(p[2]) || cross(p[0], p[1], p[2]) == 0.0)
            continue;
        valid[t] = 1;
        for (uint32_t k = 0; k < 3; ++k)
            used.push_back({p[k].x(), p[k].y(), uint32_t(3 * t + k)});
    }

    // Equal points are one point, so that triangles meet by position, not by index.
    std::sort(used.begin(), used.end(), [](const KeyedCorner& a, const KeyedCorner& b) {
        return a.x < b.x || (a.x == b.x && a.y < b.y);
    });
    std::vector<uint32_t> pointOf(corners.size(), 0);
    std::vector<QPointF> points;
    for (const KeyedCorner& c : used) {
        if (points.empty() || points.back().x() != c.x || points.back().y() != c.y)
            points.emplace_back(c.x, c.y);
        pointOf[c.corner] = uint32_t(points.size() - 1);
    }

    std::vector<EdgeRecord> edges;
    edges.reserve(used.size());
    for (size_t t = 0; t < triangleCount; ++t) {
        if (!valid[t])
            continue;
        uint32_t id[3] = {pointOf[3 * t], pointOf[3 * t + 1], pointOf[3 * t + 2]};
        if (cross(corners[3 * t], corners[3 * t + 1], corners[3 * t + 2]) < 0.0)
            std::swap(id[1], id[2]);
        for (int k = 0; k < 3; ++k) {
            const uint32_t a = id[k], b = id[(k + 1) % 3];
            edges.push_back({std::min(a, b), std::max(a, b), a < b ? 1 : -1, uint32_t(t)});
        }
    }
    std::sort(edges.begin(), edges.end(), [](const EdgeRecord& a, const EdgeRecord& b) {
        return a.lo < b.lo || (a.lo == b.lo && a.hi < b.hi);
    });

    // Triangles on one edge are one island; what the opposite directions
    // don't cancel is border.
    DisjointSets sets(triangleCount);
    struct Pending
    {
        uint32_t from, to, triangle;
    };
    std::vector<Pending> border;
    for (size_t i = 0; i < edges.size();) {
        size_t j = i;
        int32_t sum = 0;
        for (; j < edges.size() && edges[j].lo == edges[i].lo && edges[j].hi == edges[i].hi; ++j) {
            sets.unite(edges[i].triangle, edges[j].triangle);
            sum += edges[j].sign;
        }
        for (int32_t n = 0; n < std::abs(sum); ++n)
            border.push_back(sum > 0 ? Pending{edges[i].lo, edges[i].hi, edges[i].triangle}
                                     : Pending{edges[i].hi, edges[i].lo, edges[i].triangle});
        i = j;
    }

    std::vector<uint32_t> islandOfRoot(triangleCount, UINT32_MAX);
    uint32_t islandCount = 0;
    for (size_t t = 0; t < triangleCount; ++t)
        if (valid[t]) {
            uint32_t& island = islandOfRoot[sets.find(uint32_t(t))];
            if (island == UINT32_MAX)
                island = islandCount++;
        }

    std::vector<BorderEdge> chain;
    chain.reserve(border.size());
    for (const Pending& e : border)
        chain.push_back({islandOfRoot[sets.find(e.triangle)], e.from, e.to});
    const auto before = [](const BorderEdge& a, const BorderEdge& b) {
        return a.island < b.island || (a.island == b.island && (a.from < b.from || (a.from == b.from && a.to < b.to)));
    };
    std::sort(chain.begin(), chain.end(), before);

    // Every point has as many border edges in as out, so a walk that takes
    // any unused edge out of each point can only end where it began.
    std::vector<UvIsland> islands(islandCount);
    std::vector<uint8_t> taken(chain.size(), 0);
    // Per first edge of a point's run: the next edge of that run to try.
    std::vector<uint32_t> cursor(chain.size());
    std::iota(cursor.begin(), cursor.end(), 0u);
    const auto nextOut = [&](uint32_t island, uint32_t point) -> int64_t {
        const BorderEdge key{island, point, 0};
        const auto first = std::lower_bound(chain.begin(), chain.end(), key, before);
        const uint32_t run = uint32_t(first - chain.begin());
        uint32_t& at = cursor[run];
        while (at < chain.size() && chain[at].island == island && chain[at].from == point) {
            if (!taken[at])
                return at;
            ++at;
        }
        return -1;
    };
    for (size_t e = 0; e < chain.size(); ++e) {
        if (taken[e])
            continue;
        const uint32_t island = chain[e].island;
        const uint32_t start = chain[e].from;
        QPolygonF loop;
        loop.append(points[start]);
        int64_t edge = int64_t(e);
        while (edge >= 0) {
            taken[size_t(edge)] = 1;
            const uint32_t to = chain[size_t(edge)].to;
            loop.append(points[to]);
            if (to == start)
                break;
            edge = nextOut(island, to);
        }
        islands[island].loops.push_back(std::move(loop));
    }
    for (UvIsland& island : islands) {
        if (island.loops.size() < 2)
            continue;
        std::vector<std::pair<double, size_t>> byArea;
        for (size_t i = 0; i < island.loops.size(); ++i)
            byArea.emplace_back(-boundsArea(island.loops[i]), i);
        std::stable_sort(byArea.begin(), byArea.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        std::vector<QPolygonF> sorted;
        sorted.reserve(byArea.size());
        for (const auto& entry : byArea)
            sorted.push_back(std::move(island.loops[entry.second]));
        island.loops = std::move(sorted);
    }
    return islands;
}

QPainterPath islandPath(const UvIsland& island)
{
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    for (const QPolygonF& loop : island.loops) {
        path.addPolygon(loop);
        path.closeSubpath();
    }
    return path;
}

} // namespace Ond::Baking
