#pragma once
// What the secondary-ray kernels share: attribute interpolation on the
// grabbed mesh, the hit point of a primary hit, and one traced ray.

#include "baking/detail/RaytraceStrip.h"
#include "baking/detail/SampleTable.h"
#include "baking/detail/SecondaryRayParams.h"

#include <algorithm>

#include <cmath>

namespace Ond::Baking::SecondaryRay {

// w a0 + u a1 + v a2 over a per-vertex attribute of `stride` floats.
inline void interpolate(const GrabbedMesh& mesh, const float* attribute, unsigned stride, unsigned primID, float u,
                        float v, float* out)
{
    const uint32_t* tri = mesh.indices.data() + size_t(primID) * 3;
    const float w = 1.0f - u - v;
    const float* a0 = attribute + size_t(tri[0]) * stride;
    const float* a1 = attribute + size_t(tri[1]) * stride;
    const float* a2 = attribute + size_t(tri[2]) * stride;
    for (int c = 0; c < 3; ++c)
        out[c] = w * a0[c] + u * a1[c] + v * a2[c];
}

inline float dot(const float* a, const float* b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

// Normalised when it has a length; a zero vector stays zero.
inline void normalize(float* n)
{
    const float len2 = dot(n, n);
    if (len2 > 0.0f) {
        const float inv = 1.0f / std::sqrt(len2);
        n[0] *= inv;
        n[1] *= inv;
        n[2] *= inv;
    }
}

// The interpolated shading normal at a hit, normalised.
inline void shadingNormal(const GrabbedMesh& mesh, unsigned primID, float u, float v, float* out)
{
    interpolate(mesh, mesh.normals.data(), 3, primID, u, v, out);
    normalize(out);
}

// H = ray origin + t * ray direction; the primary ray ran along -D.
inline void hitPoint(const PrimaryHit& h, float* out)
{
    for (int c = 0; c < 3; ++c)
        out[c] = h.rayOrigin[c] - h.t * h.direction[c];
}

// Traces one ray; rh holds the hit afterwards. Returns the hit distance, or
// tfar unchanged when nothing was met.
inline float trace(const EmbreeScene& scene, HitContext& context, RTCRayHit& rh, const float* origin,
                   const float* direction, float tnear, float tfar, uint32_t id)
{
    setRay(rh, origin, direction, tnear, tfar, id);
    scene.intersect(context, rh);
    return rh.ray.tfar;
}

// The mesh id the secondary rays of a hit are filtered by.
inline uint32_t rayId(const PrimaryHit& h, bool filterById)
{
    return filterById ? h.scene->mesh().ids[h.primID] : 0u;
}

// The job's parameter record of type P, or P's defaults without one; the
// sample count held to 1..256.
template <typename P>
P paramsOf(const DetailBakeJob& job)
{
    P p = job.params ? *static_cast<const P*>(job.params) : P();
    p.sampleCount = std::clamp(p.sampleCount, 1, 256);
    return p;
}

// The directions a record's secondary rays are laid out along.
template <typename P>
SampleTable sampleTableOf(const P& p)
{
    return SampleTable(SampleDistribution(p.distribution), p.spreadAngle, unsigned(p.sampleCount));
}

} // namespace Ond::Baking::SecondaryRay
