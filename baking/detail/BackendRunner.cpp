#include "baking/detail/BackendRunner.h"

#include "baking/AbstractBakingContext.h"
#include "baking/detail/RasterizerGL.h"
#include "baking/detail/RasterizerNull.h"
#include "baking/detail/RaytracerEmbree.h"
#include "program/LogChannel.h"

#include <QCoreApplication>

#include <chrono>
#include <cstring>

namespace Ond::Baking {

namespace {

enum Latch { Unknown = 0, Absent = 1, Present = 2 };

int g_dxrLatch = Unknown;
int g_optixLatch = Unknown;

std::unique_ptr<RasterizerBase> g_rasterizerGL;
std::unique_ptr<RasterizerBase> g_rasterizerNull;
std::unique_ptr<RaytracerEmbree> g_raytracerEmbree;
// The GPU tracers have no implementation on this platform; their slots are
// kept so that release covers all five.
std::unique_ptr<RaytracerBase> g_raytracerOptix;
std::unique_ptr<RaytracerBase> g_raytracerDXR;

std::function<std::unique_ptr<RasterizerBase>()>& rasterizerGLFactory()
{
    static std::function<std::unique_ptr<RasterizerBase>()> factory;
    return factory;
}

// The OpenGL rasterizer unless a test put another in its place.
std::unique_ptr<RasterizerBase> makeRasterizerGL()
{
    if (rasterizerGLFactory())
        return rasterizerGLFactory()();
    return std::make_unique<RasterizerGL>();
}

double secondsSince(std::chrono::steady_clock::time_point start)
{
    return double(std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - start)
                      .count())
           / 1e9;
}

// No Direct3D 12 outside Windows.
bool probeDxr() { return false; }
// The OptiX runtime is not part of this build.
bool probeOptix() { return false; }

} // namespace

QString backendName(int32_t backend)
{
    switch (backend) {
    case 0:
        return QStringLiteral("Embree");
    case 1:
        return QStringLiteral("Optix");
    case 2:
        return QStringLiteral("DXR");
    }
    return QStringLiteral("Unknown backend");
}

bool isGpuEligible(BakeJobKind kind)
{
    const int k = int(kind);
    return k >= 0 && k < 32 && ((0x2160u >> k) & 1u) != 0;
}

RayBackend chooseBackend(const DetailBakeJob& job, bool dxrPresent, bool optixPresent,
                         const std::function<bool()>& dxrFullySupported)
{
    const bool eligible = job.useGpu && isGpuEligible(job.kind);
    if (eligible && dxrPresent && !job.forceOptix) {
        if (job.forceDxr || !dxrFullySupported || dxrFullySupported())
            return RayBackend::DXR;
    }
    if (eligible && optixPresent)
        return RayBackend::Optix;
    return RayBackend::Embree;
}

bool isDxrAvailable()
{
    if (g_dxrLatch == Unknown)
        g_dxrLatch = (qEnvironmentVariableIsSet("OND_NO_DXR") || !probeDxr()) ? Absent : Present;
    return g_dxrLatch == Present;
}

bool isOptixAvailable()
{
    if (g_optixLatch == Unknown)
        g_optixLatch = (qEnvironmentVariableIsSet("OND_NO_OPTIX") || !probeOptix()) ? Absent : Present;
    return g_optixLatch == Present;
}

int dxrAvailabilityState() { return g_dxrLatch; }
int optixAvailabilityState() { return g_optixLatch; }

void resetBackendAvailability()
{
    g_dxrLatch = Unknown;
    g_optixLatch = Unknown;
}

RaytracerEmbree& embreeBackend()
{
    if (!g_raytracerEmbree)
        g_raytracerEmbree = std::make_unique<RaytracerEmbree>();
    return *g_raytracerEmbree;
}

bool hasEmbreeBackend() { return g_raytracerEmbree != nullptr; }

void setRasterizerGLFactory(std::function<std::unique_ptr<RasterizerBase>()> factory)
{
    rasterizerGLFactory() = std::move(factory);
    g_rasterizerGL.reset();
}

void releaseBackends()
{
    g_rasterizerGL.reset();
    g_rasterizerNull.reset();
    g_raytracerEmbree.reset();
    g_raytracerOptix.reset();
    g_raytracerDXR.reset();
}

void runDetailBake(const DetailBakeJob& job, BakeResult& result)
{
    const BakeTiling tiling = computeTiling(job);

    Surfaces::SurfaceDesc desc(job.width, job.height, Surfaces::PixelFormat::RGBA32F);
    result.surface = Surfaces::SurfaceSPtr(new Surfaces::Surface(desc, 64));
    for (uint32_t y = 0; y < job.height; ++y)
        std::memset(result.surface->row(y), 0, size_t(result.surface->rowBytes()));

    // A partial-support test would mark DXR absent for the run; there is no
    // adapter to test here.
    const RayBackend backend = chooseBackend(job, isDxrAvailable(), isOptixAvailable(), [] { return true; });

    RasterizerBase* rasterizer = nullptr;
    RaytracerBase* raytracer = nullptr;
    if (backend == RayBackend::Embree) {
        if (!g_rasterizerGL)
            g_rasterizerGL = makeRasterizerGL();
        rasterizer = g_rasterizerGL.get();
        raytracer = &embreeBackend();
    } else if (backend == RayBackend::DXR) {
        if (!g_rasterizerNull)
            g_rasterizerNull = std::make_unique<RasterizerNull>();
        rasterizer = g_rasterizerNull.get();
        raytracer = g_raytracerDXR.get();
    } else {
        if (!g_rasterizerGL)
            g_rasterizerGL = makeRasterizerGL();
        rasterizer = g_rasterizerGL.get();
        raytracer = g_raytracerOptix.get();
    }

    const int32_t number = int32_t(backend);
    Core::bakersChannel().info(QStringLiteral("Bake started using ")
                               + (number != 0 ? QStringLiteral("GPU") : QStringLiteral("CPU"))
                               + QStringLiteral(" backend (") + backendName(number) + QStringLiteral(")."));

    result.errorCode = ErrorCode::NoError;
    result.backend = number;
    result.rangeMin = 3.4028235e+38f;
    result.rangeMax = 0.0f;

    bool progressOpen = false;
    try {
        if (!rasterizer || !raytracer)
            throw ErrorCode::InternalError;
        const auto start = std::chrono::steady_clock::now();
        rasterizer->init(job, tiling, result);
        raytracer->init(job, tiling, result);
        result.initSeconds = secondsSince(start);

        const auto computeStart = std::chrono::steady_clock::now();
        if (job.context) {
            const QByteArray name = job.name.toUtf8();
            job.context->progressBegin(QCoreApplication::translate("Ond::Baking::DetailMapBaker", name.constData()));
            progressOpen = true;
        }
        rasterizer->rasterize(job, tiling, result, *raytracer);
        rasterizer->finish(job, tiling, result);
        raytracer->finish(job, tiling, result);
        result.computeSeconds = secondsSince(computeStart);
        if (progressOpen)
            job.context->progressEnd();
    } catch (ErrorCode code) {
        if (progressOpen)
            job.context->progressEnd();
        result.errorCode = code;
    }
}

} // namespace Ond::Baking
