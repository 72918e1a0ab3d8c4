#include "scene/graph/UvTile.h"

#include <cmath>

namespace Ond::SceneGraph {

int32_t uvTileIndex(double x)
{
    if (!std::isfinite(x))
        return 0;
    // Far beyond any real layout; keeps the conversion defined.
    constexpr double limit = 1 << 30;
    if (x > limit)
        x = limit;
    else if (x < -limit)
        x = -limit;
    const auto t = int32_t(x); // truncates towards zero
    if (x < 0.0)
        return t - 1;
    if (x > 0.0 && t >= 1 && x == double(t))
        return t - 1;
    return t;
}

namespace {

inline int32_t signOf(int32_t d)
{
    return (d > 0) - (d < 0);
}

} // namespace

void walkUvEdge(UvTileSet& tiles, const Eigen::Vector2f& pf, const Eigen::Vector2f& qf)
{
    const double px = pf.x(), py = pf.y(), qx = qf.x(), qy = qf.y();
    const int32_t pu = uvTileIndex(px), pv = uvTileIndex(py);
    const int32_t qu = uvTileIndex(qx), qv = uvTileIndex(qy);

    // Vertical tile borders crossed on the way from p to q.
    const int32_t su = signOf(qu - pu);
    for (int32_t u = pu; u != qu; u += su) {
        const double x = su < 1 ? double(u) : double(u + su);
        const double dx = qx - px;
        if (dx == 0.0)
            break;
        const double t = (x - px) / dx;
        if (t < 0.0 || t > 1.0)
            continue;
        const int32_t r = uvTileIndex(py + t * (qy - py));
        tiles.insert(UvTile{u, r});
        tiles.insert(UvTile{u + su, r});
    }

    // Horizontal tile borders.
    const int32_t sv = signOf(qv - pv);
    for (int32_t v = pv; v != qv; v += sv) {
        const double y = sv < 1 ? double(v) : double(v + sv);
        const double dy = qy - py;
        if (dy == 0.0)
            break;
        const double t = (y - py) / dy;
        if (t < 0.0 || t > 1.0)
            continue;
        const int32_t c = uvTileIndex(px + t * (qx - px));
        tiles.insert(UvTile{c, v});
        tiles.insert(UvTile{c, v + sv});
    }

    tiles.insert(UvTile{pu, pv});
    tiles.insert(UvTile{qu, qv});
}

} // namespace Ond::SceneGraph
