#pragma once
// The contract of the ray tracing backends. init and finish frame one bake;
// traceTile takes one raster tile's seeds, copies what it needs and may
// return before the tile is finished; finish waits for all of it.

#include "baking/detail/DetailBakeJob.h"
#include "baking/detail/RayTile.h"

namespace Ond::Baking {

class RaytracerBase
{
public:
    virtual ~RaytracerBase() = default;
    virtual void init(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result);
    virtual void finish(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result);
    virtual void traceTile(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result,
                           const RayTile& rayTile) = 0;
};

inline void RaytracerBase::init(const DetailBakeJob&, const BakeTiling&, BakeResult&) {}
inline void RaytracerBase::finish(const DetailBakeJob&, const BakeTiling&, BakeResult&) {}

} // namespace Ond::Baking
