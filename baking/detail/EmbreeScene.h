#pragma once
// The high mesh as an Embree scene, with the filter that applies mesh ids
// and back-face rules, and the key that tells when it must be rebuilt.

#include "baking/detail/DetailBakeJob.h"
#include "baking/detail/GrabbedMesh.h"

#include <embree3/rtcore.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace Ond::Baking {

// What the intersect filter reads beyond Embree's own context. The Embree
// context must stay the first member: the filter casts back to this type.
struct HitContext
{
    enum CullMode : uint32_t { CullNone = 0, CullAll = 1, CullByTriangle = 2 };

    RTCIntersectContext base;
    uint32_t cullMode = CullNone;
    uint8_t filterById = 0;

    HitContext(uint32_t cull, bool byId) : cullMode(cull), filterById(byId ? 1 : 0) { rtcInitIntersectContext(&base); }
};

// What decides whether a kept scene can serve another bake.
struct EmbreeSceneKey
{
    const void* highScene = nullptr;
    uint64_t highSceneRevision = 0;
    int32_t highUvSet = 0;
    uint32_t flags = 0;
    int32_t colorSource = 4;
    int32_t colorGenerator = 0;

    static EmbreeSceneKey of(const DetailBakeJob& job);
    bool operator==(const EmbreeSceneKey& o) const;
    bool operator!=(const EmbreeSceneKey& o) const { return !(*this == o); }
};

class EmbreeScene
{
public:
    // Builds over the mesh, which must outlive the scene: its buffers are
    // shared, not copied. Throws ErrorCode 1 when Embree cannot allocate.
    explicit EmbreeScene(std::shared_ptr<const GrabbedMesh> mesh,
                         RTCBuildQuality quality = RTC_BUILD_QUALITY_MEDIUM);
    ~EmbreeScene();
    EmbreeScene(const EmbreeScene&) = delete;
    EmbreeScene& operator=(const EmbreeScene&) = delete;

    RTCScene handle() const { return m_scene; }
    RTCBuildQuality buildQuality() const { return m_quality; }
    const GrabbedMesh& mesh() const { return *m_mesh; }

    // Closest hit; a hit is a tfar the call changed.
    void intersect(HitContext& context, RTCRayHit& rayHit) const { rtcIntersect1(m_scene, &context.base, &rayHit); }

    // Per-vertex curvature of the mesh, filled by the curvature kernel on
    // first use and kept with the scene; empty until then.
    std::vector<float>& vertexCurvature() const { return m_vertexCurvature; }

    // Created once for the process, with the thread limit of the run.
    static RTCDevice device();
    // The configuration text the device is made with.
    static std::string deviceConfig();

private:
    // Pointers handed to the filter as the geometry's user data.
    struct FilterData
    {
        const uint32_t* ids;
        const uint32_t* culling;
    };

    std::shared_ptr<const GrabbedMesh> m_mesh;
    FilterData m_filterData;
    RTCScene m_scene = nullptr;
    RTCBuildQuality m_quality = RTC_BUILD_QUALITY_MEDIUM;
    mutable std::vector<float> m_vertexCurvature;
};

// The scene flags a tree of that quality is built with.
RTCSceneFlags sceneFlagsFor(RTCBuildQuality quality);

// Rays the job casts: one per sample, and the secondary rays of each for
// the kinds that cast them.
double rayBudget(const DetailBakeJob& job);

// A tree's quality changes how fast rays run, never what they hit. A quick
// build pays where few rays per triangle follow (a normal map from a huge
// mesh); a better tree where many do (occlusion).
RTCBuildQuality buildQualityFor(double rays, size_t triangles);

// Embree takes no ray whose origin or direction lies beyond this or is not a
// number (its builds with assertions abort on one).
constexpr float RayCoordinateLimit = 1.844e18f;

inline bool isTraceable(const float* v)
{
    // Written so that NaN fails.
    return std::fabs(v[0]) <= RayCoordinateLimit && std::fabs(v[1]) <= RayCoordinateLimit
        && std::fabs(v[2]) <= RayCoordinateLimit;
}

// Fills a ray and clears its hit. A ray that can't be traced, from a reach
// or a mesh beyond float range, is disabled (tnear past tfar): it meets
// nothing and leaves tfar as given.
inline void setRay(RTCRayHit& rh, const float* origin, const float* direction, float tnear, float tfar, uint32_t id)
{
    static const float parked[3] = {0.0f, 0.0f, 1.0f};
    const bool traceable = isTraceable(origin) && isTraceable(direction) && tnear == tnear;
    if (!traceable) {
        origin = parked;
        direction = parked;
        tnear = std::numeric_limits<float>::infinity();
    } else if (tnear < 0.0f) {
        tnear = 0.0f; // nor does it take a ray that starts behind its origin
    }
    rh.ray.org_x = origin[0];
    rh.ray.org_y = origin[1];
    rh.ray.org_z = origin[2];
    rh.ray.dir_x = direction[0];
    rh.ray.dir_y = direction[1];
    rh.ray.dir_z = direction[2];
    rh.ray.tnear = tnear;
    rh.ray.tfar = tfar;
    rh.ray.time = 0.0f;
    // All bits: this Embree honours ray masks, and the geometry's default
    // mask is all ones, so a zero mask would meet nothing.
    rh.ray.mask = 0xFFFFFFFFu;
    rh.ray.id = id;
    rh.ray.flags = 0;
    rh.hit.geomID = RTC_INVALID_GEOMETRY_ID;
    rh.hit.primID = RTC_INVALID_GEOMETRY_ID;
    rh.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
}

// Fills a primary ray for a seed: from O + D * maxHeight along -D, reaching
// maxHeight + maxDepth past it.
inline void setPrimaryRay(RTCRayHit& rh, const float* o, const float* d, float maxHeight, float tfar, uint32_t id)
{
    const float origin[3] = {o[0] + d[0] * maxHeight, o[1] + d[1] * maxHeight, o[2] + d[2] * maxHeight};
    const float direction[3] = {-d[0], -d[1], -d[2]};
    setRay(rh, origin, direction, 0.0f, tfar, id);
}

} // namespace Ond::Baking
