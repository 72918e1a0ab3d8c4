#pragma once
// The contract of the seed producers: rasterize walks the raster tiles in
// block order and hands each tile's seeds to the ray tracer.

#include "baking/detail/DetailBakeJob.h"

namespace Ond::Baking {

class RaytracerBase;

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
