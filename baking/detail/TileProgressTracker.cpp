#include "baking/detail/TileProgressTracker.h"

#include "baking/AbstractBakingContext.h"

#include <algorithm>

namespace Ond::Baking {

void TileProgressTracker::reset(const BakeTiling& tiling, const Surfaces::SurfaceSPtr& surface,
                                AbstractBakingContext* context)
{
    m_surface = surface;
    m_context = context;
    m_blockWidth = tiling.outputBlockWidth;
    m_blockHeight = tiling.outputBlockHeight;
    m_blocksX = tiling.outputBlocksX;
    m_blocksY = tiling.outputBlocksY;
    m_tilesPerBlockX = m_blocksX ? std::max(1u, tiling.rasterTilesX / m_blocksX) : 1u;
    m_tilesPerBlockY = m_blocksY ? std::max(1u, tiling.rasterTilesY / m_blocksY) : 1u;
    m_counters.assign(size_t(m_blocksX) * m_blocksY, 0);
    m_progress = 0.0;
    m_finishedBlocks = 0;
}

void TileProgressTracker::tileDone(unsigned tileX, unsigned tileY)
{
    const unsigned blockX = tileX / m_tilesPerBlockX;
    const unsigned blockY = tileY / m_tilesPerBlockY;
    if (blockX >= m_blocksX || blockY >= m_blocksY)
        return;
    uint16_t& counter = m_counters[size_t(blockY) * m_blocksX + blockX];
    if (++counter != m_tilesPerBlockX * m_tilesPerBlockY)
        return;
    ++m_finishedBlocks;
    m_progress += 1.0 / (double(m_blocksX) * double(m_blocksY));
    if (!m_context)
        return;
    if (m_surface && !m_surface->isEmpty()) {
        // A view: the block's pixels stay in the result surface.
        Surfaces::SurfaceSPtr view(new Surfaces::Surface(*m_surface, blockX * m_blockWidth, blockY * m_blockHeight,
                                                         m_blockWidth, m_blockHeight));
        m_context->tileOutput(view, int(blockX), int(m_blocksY - blockY - 1), false);
    }
    m_context->progressValue(m_progress);
}

} // namespace Ond::Baking
