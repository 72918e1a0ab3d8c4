#pragma once
// Parameter records of the kinds that cast secondary rays around each
// primary hit (ambient occlusion, bent normals, thickness, curvature by
// surface fit). Distances are in scene units, already scaled by the driver.

#include "image/IGenericSampler.h"

#include <cstdint>
#include <memory>

namespace Ond::Baking {

enum class SampleDistribution : int32_t { Uniform = 0, Cosine = 1 };

// A world-space normal map of the low mesh and its coverage (the w channel
// of the position pass), both sampled in the low mesh's UV space. Only set
// when the low mesh stands in for the high one.
struct DetailNormals
{
    std::shared_ptr<const Surfaces::IGenericSampler> normals;
    std::shared_ptr<const Surfaces::IGenericSampler> positions;
    unsigned width = 0;
    unsigned height = 0;
};

struct AOParams
{
    int32_t distribution = 1;
    float spreadAngle = 180.0f;
    int32_t sampleCount = 64;
    float minDistance = 0.0f;
    float maxDistance = 1.0f;
    uint32_t cullMode = 0;            // 0 never, 1 always, 2 by mesh name
    const DetailNormals* detailNormals = nullptr;
    int32_t attenuation = 0;          // 0 none, 1 smooth, 2 linear
    bool groundPlane = false;
    float groundY = 0.0f;
};

struct BentNormalsParams
{
    int32_t distribution = 1;
    float spreadAngle = 180.0f;
    int32_t sampleCount = 64;
    float minDistance = 0.0f;
    float maxDistance = 1.0f;
    uint32_t cullMode = 0;
};

// Same fields as bent normals; back faces are never culled.
using ThicknessParams = BentNormalsParams;

struct Curvature1Params
{
    int32_t distribution = 0;
    float spreadAngle = 90.0f;
    int32_t sampleCount = 64;
    float minDistance = 0.0f;
    float maxDistance = 0.0f;
    uint32_t cullMode = 0;
    const DetailNormals* detailNormals = nullptr;
    float radius = 1.0f;
};

} // namespace Ond::Baking
