#include "baking/detail/EmbreeScene.h"

#include "program/ConsoleProgress.h"
#include "program/ThreadLimit.h"

#include "baking/detail/SecondaryRayParams.h"

#include <algorithm>
#include <string>

namespace Ond::Baking {

namespace {

void intersectFilter(const RTCFilterFunctionNArguments* args)
{
    const auto* data = static_cast<const uint32_t* const*>(args->geometryUserPtr);
    const uint32_t* ids = data[0];
    const uint32_t* culling = data[1];
    const auto* context = reinterpret_cast<const HitContext*>(args->context);
    for (unsigned i = 0; i < args->N; ++i) {
        if (args->valid[i] == 0)
            continue;
        const unsigned primID = RTCHitN_primID(args->hit, args->N, i);
        if (context->filterById && ids[primID] != RTCRayN_id(args->ray, args->N, i)) {
            args->valid[i] = 0;
            continue;
        }
        if (context->cullMode == HitContext::CullByTriangle && culling[primID] == 0)
            continue;
        if (context->cullMode != HitContext::CullAll && context->cullMode != HitContext::CullByTriangle)
            continue;
        const float d = RTCRayN_dir_x(args->ray, args->N, i) * RTCHitN_Ng_x(args->hit, args->N, i)
                        + RTCRayN_dir_y(args->ray, args->N, i) * RTCHitN_Ng_y(args->hit, args->N, i)
                        + RTCRayN_dir_z(args->ray, args->N, i) * RTCHitN_Ng_z(args->hit, args->N, i);
        if (d > 0.0f)
            args->valid[i] = 0;
    }
}

// Called by Embree's build threads; never cancels.
bool buildProgress(void*, double fraction)
{
    Core::ConsoleProgress::instance().setValue(fraction);
    return true;
}

} // namespace

EmbreeSceneKey EmbreeSceneKey::of(const DetailBakeJob& job)
{
    EmbreeSceneKey key;
    key.highScene = job.highScene.get();
    key.highSceneRevision = job.highScene ? job.highScene->getRevision() : 0;
    key.highUvSet = job.highUvSet;
    key.flags = job.flags;
    key.colorSource = job.colorSource;
    key.colorGenerator = job.colorGenerator;
    return key;
}

bool EmbreeSceneKey::operator==(const EmbreeSceneKey& o) const
{
    return highScene == o.highScene && highSceneRevision == o.highSceneRevision && highUvSet == o.highUvSet
           && flags == o.flags && colorSource == o.colorSource && colorGenerator == o.colorGenerator;
}

std::string EmbreeScene::deviceConfig()
{
    const unsigned limit = Core::threadLimit();
    return limit > 0 ? "threads=" + std::to_string(limit) : std::string();
}

RTCDevice EmbreeScene::device()
{
    // The thread limit is known by then: the device is made at the first bake.
    static RTCDevice device = rtcNewDevice(deviceConfig().c_str());
    return device;
}

double rayBudget(const DetailBakeJob& job)
{
    const double samples = double(job.width) * double(job.height) * double(job.subSamples) * double(job.subSamples);
    int32_t secondary = 0;
    switch (job.kind) {
    case BakeJobKind::AmbientOcclusion:
        secondary = job.params ? static_cast<const AOParams*>(job.params)->sampleCount : 0;
        break;
    case BakeJobKind::BentNormals:
    case BakeJobKind::Thickness:
        secondary = job.params ? static_cast<const BentNormalsParams*>(job.params)->sampleCount : 0;
        break;
    case BakeJobKind::Curvature1:
        secondary = job.params ? static_cast<const Curvature1Params*>(job.params)->sampleCount : 0;
        break;
    default:
        break;
    }
    return samples * (1.0 + double(std::max(secondary, 0)));
}

RTCBuildQuality buildQualityFor(double rays, size_t triangles)
{
    // bvh_quality_bench on 2 cores: the quick tree builds 2 to 3 times
    // faster and traces up to half as fast; the default one pays for its
    // longer build from about one ray per triangle on (0.9 to 1.5 measured
    // from 0.5 to 16 M triangles).
    constexpr double RaysPerTriangle = 1.0;
    return rays < RaysPerTriangle * double(triangles) ? RTC_BUILD_QUALITY_LOW : RTC_BUILD_QUALITY_MEDIUM;
}

RTCSceneFlags sceneFlagsFor(RTCBuildQuality quality)
{
    // The compact layout keeps vertex indices in the leaves instead of
    // copies of the vertices: on 16 M triangles the process peaks 0.7 GiB
    // lower and builds in half the time (most of a build is the kernel
    // clearing fresh pages), while rays run about a third slower. That is
    // the quick build's trade: few rays per triangle.
    int flags = RTC_SCENE_FLAG_ROBUST | RTC_SCENE_FLAG_CONTEXT_FILTER_FUNCTION;
    if (quality == RTC_BUILD_QUALITY_LOW)
        flags |= RTC_SCENE_FLAG_COMPACT;
    return RTCSceneFlags(flags);
}

EmbreeScene::EmbreeScene(std::shared_ptr<const GrabbedMesh> mesh, RTCBuildQuality quality)
    : m_mesh(std::move(mesh))
    , m_quality(quality)
{
    m_filterData.ids = m_mesh->ids.data();
    m_filterData.culling = m_mesh->culling.data();

    RTCDevice dev = device();
    if (!dev)
        throw ErrorCode::InternalError;
    m_scene = rtcNewScene(dev);
    if (!m_scene)
        throw ErrorCode::OutOfMemory;
    rtcSetSceneFlags(m_scene, sceneFlagsFor(quality));
    rtcSetSceneBuildQuality(m_scene, quality);

    if (m_mesh->triangleCount > 0) {
        RTCGeometry geometry = rtcNewGeometry(dev, RTC_GEOMETRY_TYPE_TRIANGLE);
        if (!geometry) {
            rtcReleaseScene(m_scene);
            m_scene = nullptr;
            throw ErrorCode::OutOfMemory;
        }
        rtcSetGeometryBuildQuality(geometry, quality);
        rtcSetGeometryTimeStepCount(geometry, 1);
        rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3,
                                   m_mesh->positions.data(), 0, 16, m_mesh->vertexCount);
        rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, m_mesh->indices.data(), 0,
                                   12, m_mesh->triangleCount);
        rtcSetGeometryUserData(geometry, &m_filterData);
        rtcSetGeometryIntersectFilterFunction(geometry, intersectFilter);
        rtcCommitGeometry(geometry);
        rtcAttachGeometry(m_scene, geometry);
        rtcReleaseGeometry(geometry);
    }
    if (Core::ConsoleProgress::instance().isEnabled())
        rtcSetSceneProgressMonitorFunction(m_scene, buildProgress, nullptr);
    rtcCommitScene(m_scene);
    if (rtcGetDeviceError(dev) == RTC_ERROR_OUT_OF_MEMORY) {
        rtcReleaseScene(m_scene);
        m_scene = nullptr;
        throw ErrorCode::OutOfMemory;
    }
}

EmbreeScene::~EmbreeScene()
{
    if (m_scene)
        rtcReleaseScene(m_scene);
}

} // namespace Ond::Baking
