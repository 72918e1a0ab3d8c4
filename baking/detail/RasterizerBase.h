#pragma once
// The contract of the seed producers: rasterize walks the raster tiles in
// block order and hands each tile's seeds to the ray tracer.

#include "baking/detail/DetailBakeJob.h"

namespace Ond::Baking {

class RaytracerBase;

// The raster tiles in visiting order: block by block, so that an output
// block completes early, and row by row within a block.
class RasterTileOrder
{
public:
    explicit RasterTileOrder(const BakeTiling& tiling)
        : m_blocksX(tiling.outputBlocksX),
          m_perBlockX(m_blocksX ? tiling.rasterTilesX / m_blocksX : 0),
          m_perBlockY(tiling.outputBlocksY ? tiling.rasterTilesY / tiling.outputBlocksY : 0),
          m_count(m_perBlockX && m_perBlockY ? tiling.rasterTilesX * tiling.rasterTilesY : 0)
    {
    }

    // 0 when the tiling holds no tile.
    unsigned count() const { return m_count; }

    void tile(unsigned i, unsigned& tileX, unsigned& tileY) const
    {
        const unsigned block = i / (m_perBlockX * m_perBlockY);
        const unsigned within = i % (m_perBlockX * m_perBlockY);
        tileX = (block % m_blocksX) * m_perBlockX + within % m_perBlockX;
        tileY = (block / m_blocksX) * m_perBlockY + within / m_perBlockX;
    }

private:
    unsigned m_blocksX;
    unsigned m_perBlockX;
    unsigned m_perBlockY;
    unsigned m_count;
};

class RasterizerBase
{
public:
    virtual ~RasterizerBase() = default;
    virtual void init(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result);
    virtual void finish(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result);
    virtual void rasterize(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result,
                           RaytracerBase& raytracer) = 0;
};

inline void RasterizerBase::init(const DetailBakeJob&, const BakeTiling&, BakeResult&) {}
inline void RasterizerBase::finish(const DetailBakeJob&, const BakeTiling&, BakeResult&) {}

} // namespace Ond::Baking
