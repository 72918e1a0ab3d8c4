#include "baking/detail/RasterizerNull.h"

#include "baking/AbstractBakingContext.h"
#include "baking/detail/RaytracerBase.h"

namespace Ond::Baking {

void RasterizerNull::rasterize(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result,
                               RaytracerBase& raytracer)
{
    const RasterTileOrder order(tiling);
    for (unsigned i = 0; i < order.count(); ++i) {
        if (job.context && job.context->isCancelled())
            return;
        RayTile tile;
        order.tile(i, tile.tileX, tile.tileY);
        raytracer.traceTile(job, tiling, result, tile);
    }
}

} // namespace Ond::Baking
