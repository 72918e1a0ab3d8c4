#pragma once
// UV tiles: the unit squares of UV space, numbered from zero. A tile's upper
// border belongs to it; zero is the exception at the lower border of tile 0,
// so a shell that fills the unit square exactly stays in tile (0, 0).

#include <Eigen/Core>

#include <cstdint>
#include <set>

namespace Ond::SceneGraph {

struct UvTile
{
    int32_t u = 0;
    int32_t v = 0;

    // 1001 + u + 10 v.
    int32_t udim() const { return 1001 + u + 10 * v; }

    bool operator==(const UvTile& o) const { return u == o.u && v == o.v; }
    bool operator!=(const UvTile& o) const { return !(*this == o); }
    // Row first, then column.
    bool operator<(const UvTile& o) const { return v != o.v ? v < o.v : u < o.u; }
};

using UvTileSet = std::set<UvTile>;

// 0.0 and 1.0 give 0, 1.5 and 2.0 give 1, -0.5 gives -1, -1.0 gives -2.
// A value that is not finite gives 0.
int32_t uvTileIndex(double x);

inline UvTile uvTileOf(const Eigen::Vector2f& p)
{
    return UvTile{uvTileIndex(p.x()), uvTileIndex(p.y())};
}

// Adds the tiles of p and q and of every tile border the segment crosses,
// on both sides of the border. Tiles the segment only passes over between
// two borders of the same kind are found through the other kind's crossings.
void walkUvEdge(UvTileSet& tiles, const Eigen::Vector2f& p, const Eigen::Vector2f& q);

} // namespace Ond::SceneGraph
