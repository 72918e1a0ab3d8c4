#pragma once
// A pure tile iterator: coordinates only, for tracers that draw the seeds
// themselves. Its order is the reference order of raster tiles: block by
// block, and row by row within a block.

#include "baking/detail/RasterizerBase.h"

namespace Ond::Baking {

class RasterizerNull : public RasterizerBase
{
public:
    void rasterize(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result,
                   RaytracerBase& raytracer) override;
};

} // namespace Ond::Baking
