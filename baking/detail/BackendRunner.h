#pragma once
// Runs one detail bake: tile geometry, choice of the backend pair, the
// timed init and compute phases, and the mapping of backend failures to an
// ErrorCode in the result. The backends are process-wide and outlive a bake
// so that the next bake on the same mesh reuses their scenes.

#include "baking/detail/DetailBakeJob.h"

#include <QString>

#include <functional>
#include <memory>

namespace Ond::Baking {

class RasterizerBase;
class RaytracerEmbree;

enum class RayBackend : int32_t { Embree = 0, Optix = 1, DXR = 2 };

QString backendName(int32_t backend);

// Kinds 5, 6, 8 and 13 may run on a graphics card; all others on Embree.
bool isGpuEligible(BakeJobKind kind);

// The choice rules. `dxrFullySupported` is the partial-support test, asked
// only when DXR would be taken without being forced.
RayBackend chooseBackend(const DetailBakeJob& job, bool dxrPresent, bool optixPresent,
                         const std::function<bool()>& dxrFullySupported);

// Availability, tested once per process. States: 0 unknown, 1 absent, 2
// present. OND_NO_DXR / OND_NO_OPTIX in the environment make them absent.
bool isDxrAvailable();
bool isOptixAvailable();
int dxrAvailabilityState();
int optixAvailabilityState();
// Forgets both results; for tests that change the environment.
void resetBackendAvailability();

// Fills result; a backend's ErrorCode lands in result.errorCode, any other
// exception passes through.
void runDetailBake(const DetailBakeJob& job, BakeResult& result);

// Destroys every backend singleton; the next bake builds from scratch.
void releaseBackends();

// The Embree backend singleton, made on first use.
RaytracerEmbree& embreeBackend();
bool hasEmbreeBackend();

// Replaces the OpenGL seed rasterizer with another (tests); null restores
// RasterizerGL.
void setRasterizerGLFactory(std::function<std::unique_ptr<RasterizerBase>()> factory);

} // namespace Ond::Baking
