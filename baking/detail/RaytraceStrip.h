#pragma once
// The unit of work of the Embree backend: 16 sample rows of one raster
// tile. One instantiation per kernel; the kernel is called per hit and adds
// to the texel's accumulator, the strip closes the texels.
//
// A kernel (Traits) provides:
//   static constexpr TexelClose close;   how a texel is closed
//   static constexpr bool reduces;       whether the bake keeps a value range
//   Traits(const DetailBakeJob&, const EmbreeScene&);   built once per bake
//   void hit(const PrimaryHit&, float* accumulator) const;   thread-safe

#include "baking/detail/EmbreeScene.h"
#include "baking/detail/MinMaxPair.h"

#include "image/Surface.h"

#include <cmath>
#include <cstdint>

namespace Ond::Baking {

enum class TexelClose { Color, Direction, Mask };

// One primary hit as the kernels see it.
struct PrimaryHit
{
    const float* origin;     // the seed's surface point (x, y, z, coverage)
    const float* direction;  // the seed's direction D; the ray ran along -D
    float rayOrigin[3];      // O + D * maxHeight
    float t;                 // distance along -D from rayOrigin, in units of |D|
    float u, v;              // barycentrics of vertices 1 and 2
    unsigned primID;
    float ng[3];             // Embree's unnormalised geometric normal
    unsigned sampleX, sampleY;  // position in the supersampled map
    const EmbreeScene* scene;
};

// What one strip needs from its slot; copied by value into each strip job.
struct StripInput
{
    const float* origins = nullptr;
    const float* directions = nullptr;
    const uint32_t* ids = nullptr;
    Surfaces::Surface* target = nullptr;
    const EmbreeScene* scene = nullptr;
    unsigned tileX = 0, tileY = 0;
    unsigned tileWidth = 0, tileHeight = 0;
    unsigned stripHeight = 16;
    unsigned subSamples = 1;
    float maxHeight = 0.0f;
    float tfar = 0.0f;
    uint32_t cullMode = 0;
    bool filterById = false;
};

// Closes one texel from its accumulator and hit count; writes rgba.
template <TexelClose Close>
inline void closeTexel(const float* acc, unsigned hits, unsigned samples, float* out)
{
    if constexpr (Close == TexelClose::Mask) {
        const float value = float(hits) / float(samples);
        out[0] = out[1] = out[2] = value;
        out[3] = 1.0f;
        return;
    } else {
        if (hits == 0) {
            out[0] = out[1] = out[2] = out[3] = 0.0f;
            return;
        }
        const float inv = 1.0f / float(hits);
        float r = acc[0] * inv, g = acc[1] * inv, b = acc[2] * inv;
        if constexpr (Close == TexelClose::Direction) {
            const float len2 = r * r + g * g + b * b;
            if (!(len2 > 1e-8f)) {
                out[0] = out[1] = out[2] = out[3] = 0.0f;
                return;
            }
            const float invLen = 1.0f / std::sqrt(len2);
            r = r * invLen * 0.5f + 0.5f;
            g = g * invLen * 0.5f + 0.5f;
            b = b * invLen * 0.5f + 0.5f;
        }
        out[0] = r;
        out[1] = g;
        out[2] = b;
        out[3] = 1.0f;
    }
}

template <typename Traits>
struct RaytraceStrip
{
    const Traits* traits;
    StripInput in;

    MinMaxPair operator()(unsigned firstSampleRow) const
    {
        MinMaxPair range;
        const unsigned s = in.subSamples;
        const unsigned texelsPerRow = in.tileWidth / s;
        const unsigned texelX0 = in.tileX * texelsPerRow;
        const unsigned texelY0 = in.tileY * (in.tileHeight / s);
        const unsigned lastSampleRow = std::min(firstSampleRow + in.stripHeight, in.tileHeight);
        const unsigned samples = s * s;
        HitContext context(in.cullMode, in.filterById);
        RTCRayHit rh;

        for (unsigned sampleRow = firstSampleRow; sampleRow < lastSampleRow; sampleRow += s) {
            const unsigned texelRow = sampleRow / s;
            float* out = in.target->pixel<float>(texelX0, texelY0 + texelRow);
            std::fill(out, out + size_t(texelsPerRow) * 4, 0.0f);
            for (unsigned tx = 0; tx < texelsPerRow; ++tx, out += 4) {
                float acc[4] = {0.0f, 0.0f, 0.0f, 0.0f};
                unsigned hits = 0;
                for (unsigned sy = 0; sy < s; ++sy) {
                    const unsigned y = sampleRow + sy;
                    for (unsigned sx = 0; sx < s; ++sx) {
                        const unsigned x = tx * s + sx;
                        const size_t index = size_t(y) * in.tileWidth + x;
                        const float* o = in.origins + index * 4;
                        if (o[3] == 0.0f)
                            continue;
                        const float* d = in.directions + index * 4;
                        setPrimaryRay(rh, o, d, in.maxHeight, in.tfar, in.ids ? in.ids[index] : 0u);
                        in.scene->intersect(context, rh);
                        if (rh.ray.tfar == in.tfar)
                            continue;
                        PrimaryHit hit{o,
                                       d,
                                       {rh.ray.org_x, rh.ray.org_y, rh.ray.org_z},
                                       rh.ray.tfar,
                                       rh.hit.u,
                                       rh.hit.v,
                                       rh.hit.primID,
                                       {rh.hit.Ng_x, rh.hit.Ng_y, rh.hit.Ng_z},
                                       in.tileX * in.tileWidth + x,
                                       in.tileY * in.tileHeight + y,
                                       in.scene};
                        traits->hit(hit, acc);
                        ++hits;
                    }
                }
                closeTexel<Traits::close>(acc, hits, samples, out);
                range.add(out[0]);
            }
        }
        return range;
    }
};

} // namespace Ond::Baking
