#pragma once
// A surface cut into a grid of tiles that each fit one framebuffer. Tiles
// may overlap their neighbours so that filtering inside a tile sees the same
// texels as filtering in the whole map.

#include "image/Surface.h"

#include <array>
#include <vector>

namespace Ond::Baking {

class SurfaceTileGrid
{
public:
    SurfaceTileGrid() = default;
    // No rows unless the surface is set and no number is negative. The tile
    // size is clamped to the surface; a rest that does not fill a tile is
    // left out.
    SurfaceTileGrid(const Surfaces::SurfaceSPtr& surface, int tileWidth, int tileHeight, int overlapX = 0,
                    int overlapY = 0);

    const Surfaces::SurfaceSPtr& surface() const { return m_surface; }
    int tileWidth() const { return m_tileSize[0]; }
    int tileHeight() const { return m_tileSize[1]; }
    int overlapX() const { return m_overlap[0]; }
    int overlapY() const { return m_overlap[1]; }
    int columns() const { return m_rows.empty() ? 0 : int(m_rows.front().size()); }
    int rowCount() const { return int(m_rows.size()); }

    // A view into the surface; the grid keeps the surface alive.
    const Surfaces::SurfaceSPtr& tile(int column, int row) const { return m_rows[size_t(row)][size_t(column)]; }

    // Origin and size in texels of a tile, overlaps included.
    int tileX(int column) const;
    int tileY(int row) const;
    int tileSpanX(int column) const;
    int tileSpanY(int row) const;

    // x, y origin as a fraction of the map, then how many tiles fit in the
    // map in each axis.
    std::array<float, 4> window(int column, int row) const;

private:
    Surfaces::SurfaceSPtr m_surface;
    int m_tileSize[2] = {0, 0};
    int m_overlap[2] = {0, 0};
    std::vector<std::vector<Surfaces::SurfaceSPtr>> m_rows;
};

// Tile sizes and overlaps for an output of `outputSize` texels that reads a
// source map of `sourceSize` texels, so that both grids have the same number
// of tiles. One axis at a time.
struct SourceTiling
{
    int sourceTile = 0;
    int sourceOverlap = 0;
    int outputTile = 0;
    int outputOverlap = 0;
};
SourceTiling sourceTilingForAxis(int sourceSize, int outputSize, int overlapFlag, int limit = 1024);

// The side a source map is resampled to when it is no power of two: the
// nearer power of two, rounding up from one and a half.
int powerOfTwoSide(int side);

} // namespace Ond::Baking
