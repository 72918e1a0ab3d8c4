#include "baking/lowpoly/SurfaceTileGrid.h"

#include <algorithm>
#include <cmath>

namespace Ond::Baking {

SurfaceTileGrid::SurfaceTileGrid(const Surfaces::SurfaceSPtr& surface, int tileWidth, int tileHeight, int overlapX,
                                 int overlapY)
    : m_surface(surface)
{
    if (!surface || surface->isEmpty() || tileWidth < 0 || tileHeight < 0 || overlapX < 0 || overlapY < 0)
        return;
    const int width = int(surface->width());
    const int height = int(surface->height());
    m_tileSize[0] = std::min(tileWidth, width);
    m_tileSize[1] = std::min(tileHeight, height);
    m_overlap[0] = overlapX;
    m_overlap[1] = overlapY;
    if (m_tileSize[0] == 0 || m_tileSize[1] == 0)
        return;
    const int cols = width / m_tileSize[0];
    const int rows = height / m_tileSize[1];
    m_rows.resize(size_t(rows));
    for (int r = 0; r < rows; ++r) {
        m_rows[size_t(r)].reserve(size_t(cols));
        for (int c = 0; c < cols; ++c) {
            // Computed here rather than through the accessors: columns() needs the rows.
            const int x = c * m_tileSize[0] - (c > 0 ? overlapX : 0);
            const int y = r * m_tileSize[1] - (r > 0 ? overlapY : 0);
            const int w = m_tileSize[0] + (c > 0 ? overlapX : 0) + (c < cols - 1 ? overlapX : 0);
            const int h = m_tileSize[1] + (r > 0 ? overlapY : 0) + (r < rows - 1 ? overlapY : 0);
            m_rows[size_t(r)].push_back(Surfaces::SurfaceSPtr::create(*surface, uint32_t(x), uint32_t(y),
                                                                       uint32_t(w), uint32_t(h)));
        }
    }
}

int SurfaceTileGrid::tileX(int column) const
{
    return column * m_tileSize[0] - (column > 0 ? m_overlap[0] : 0);
}

int SurfaceTileGrid::tileY(int row) const
{
    return row * m_tileSize[1] - (row > 0 ? m_overlap[1] : 0);
}

int SurfaceTileGrid::tileSpanX(int column) const
{
    return m_tileSize[0] + (column > 0 ? m_overlap[0] : 0) + (column < columns() - 1 ? m_overlap[0] : 0);
}

int SurfaceTileGrid::tileSpanY(int row) const
{
    return m_tileSize[1] + (row > 0 ? m_overlap[1] : 0) + (row < rowCount() - 1 ? m_overlap[1] : 0);
}

std::array<float, 4> SurfaceTileGrid::window(int column, int row) const
{
    if (!m_surface || m_rows.empty())
        return {0.0f, 0.0f, 1.0f, 1.0f};
    const float width = float(m_surface->width());
    const float height = float(m_surface->height());
    return {float(tileX(column)) / width, float(tileY(row)) / height, width / float(tileSpanX(column)),
            height / float(tileSpanY(row))};
}

SourceTiling sourceTilingForAxis(int sourceSize, int outputSize, int overlapFlag, int limit)
{
    SourceTiling t;
    const float q = float(sourceSize) / float(outputSize);
    if (q < 1.0f) {
        t.outputTile = std::min(limit, outputSize);
        t.sourceTile = int(std::roundf(float(t.outputTile) * q));
        t.sourceOverlap = overlapFlag;
        t.outputOverlap = int(std::roundf(float(overlapFlag) / q));
    } else {
        t.sourceTile = std::min(limit, sourceSize);
        t.outputTile = int(std::roundf(float(t.sourceTile) / q));
        t.sourceOverlap = int(std::roundf(float(overlapFlag) * q));
        t.outputOverlap = overlapFlag;
    }
    return t;
}

int powerOfTwoSide(int side)
{
    if (side <= 0)
        return side;
    int p = 1;
    while (p <= side / 2)
        p <<= 1;
    return p + ((p >> 1) & side) * 2;
}

} // namespace Ond::Baking
