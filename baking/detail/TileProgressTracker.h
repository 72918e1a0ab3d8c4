#pragma once
// Counts finished raster tiles per output block; a block whose tiles are all
// in goes to the context's partial-result output and moves the progress on.
// Touched only by the thread that feeds the ray tracer.

#include "baking/detail/DetailBakeJob.h"

#include <cstdint>
#include <vector>

namespace Ond::Baking {

class TileProgressTracker
{
public:
    void reset(const BakeTiling& tiling, const Surfaces::SurfaceSPtr& surface, AbstractBakingContext* context);
    void tileDone(unsigned tileX, unsigned tileY);

    double progress() const { return m_progress; }
    unsigned finishedBlocks() const { return m_finishedBlocks; }

private:
    Surfaces::SurfaceSPtr m_surface;
    AbstractBakingContext* m_context = nullptr;
    unsigned m_blockWidth = 0;
    unsigned m_blockHeight = 0;
    unsigned m_blocksX = 0;
    unsigned m_blocksY = 0;
    unsigned m_tilesPerBlockX = 1;
    unsigned m_tilesPerBlockY = 1;
    std::vector<uint16_t> m_counters;
    double m_progress = 0.0;
    unsigned m_finishedBlocks = 0;
};

} // namespace Ond::Baking
