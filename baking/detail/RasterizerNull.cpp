#include "baking/detail/RasterizerNull.h"

#include "baking/AbstractBakingContext.h"
#include "baking/detail/RaytracerBase.h"

namespace Ond::Baking {

void RasterizerNull::rasterize(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result,
                               RaytracerBase& raytracer)
{
    const unsigned nx = tiling.rasterTilesX;
    const unsigned ny = tiling.rasterTilesY;
    const unsigned bx = tiling.outputBlocksX;
    const unsigned by = tiling.outputBlocksY;
    if (nx == 0 || ny == 0 || bx == 0 || by == 0)
        return;
    const unsigned cx = nx / bx;
    const unsigned cy = ny / by;
    for (unsigned i = 0; i < nx * ny; ++i) {
        if (job.context && job.context->isCancelled())
            return;
        const unsigned block = i / (cx * cy);
        const unsigned within = i % (cx * cy);
        RayTile tile;
        tile.tileX = (block % bx) * cx + within % cx;
        tile.tileY = (block / bx) * cy + within / cx;
        raytracer.traceTile(job, tiling, result, tile);
    }
}

} // namespace Ond::Baking
