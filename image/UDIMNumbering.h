#pragma once
// UDIM numbers of UV tiles: tile (u, v) is 1001 + u + 10 v, for the ten
// columns 0..9 and the rows from 0 up. Numbers below 1001 are no tile.

#include <QPoint>

#include <cstdint>
#include <optional>

namespace Vrn::Baking {

// None right of the ten columns, below row 0, or outside 16 bits.
std::optional<uint16_t> udimOfTile(int u, int v);

// The tile of a UDIM number; none below 1001.
std::optional<QPoint> tileOfUdim(int udim);

} // namespace Vrn::Baking
