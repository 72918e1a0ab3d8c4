#include "baking/detail/DetailBakeJob.h"

#include <algorithm>

namespace Ond::Baking {

BakeTiling computeTiling(const DetailBakeJob& job)
{
    BakeTiling t;
    const unsigned s = std::max(job.subSamples, 1u);
    t.tileWidth = std::min(job.width, 512u);
    t.tileHeight = std::min(job.height, 512u);
    if (t.tileWidth == 0 || t.tileHeight == 0)
        return t;
    t.rasterTilesX = s * job.width / t.tileWidth;
    t.rasterTilesY = s * job.height / t.tileHeight;
    t.outputBlockWidth = std::max(t.tileWidth / s, t.tileWidth);
    t.outputBlockHeight = std::max(t.tileHeight / s, t.tileHeight);
    t.outputBlocksX = job.width / t.outputBlockWidth;
    t.outputBlocksY = job.height / t.outputBlockHeight;
    return t;
}

} // namespace Ond::Baking
