#pragma once
// The tangent frame around a unit normal in which the sample table is laid
// out, turned about the normal by the blue-noise angle of the sample, so
// that neighbouring texels look along different directions.

#include "baking/BlueNoiseTile.h"

#include <cmath>

namespace Ond::Baking {

struct SurfaceFrame
{
    float t[3];  // rotated tangent
    float b[3];  // rotated bitangent
    float n[3];  // the normal

    // Branch-free orthonormal basis; stable for every normal, including
    // those near -z, without a cross product or a normalisation.
    SurfaceFrame(const float* normal, float angle)
    {
        const float nx = normal[0], ny = normal[1], nz = normal[2];
        const float s = std::copysign(1.0f, nz);
        const float a = -1.0f / (s + nz);
        const float t0[3] = {1.0f + s * nx * nx * a, s * nx * ny * a, -s * nx};
        const float b0[3] = {nx * ny * a, s + ny * ny * a, -ny};
        const float cg = std::cos(angle), sg = std::sin(angle);
        for (int i = 0; i < 3; ++i) {
            t[i] = cg * t0[i] + sg * b0[i];
            b[i] = cg * b0[i] - sg * t0[i];
        }
        n[0] = nx;
        n[1] = ny;
        n[2] = nz;
    }

    SurfaceFrame(const float* normal, unsigned sampleX, unsigned sampleY)
        : SurfaceFrame(normal, BlueNoiseTile::angle(int(sampleX), int(sampleY)))
    {
    }

    // sx T' + sy B' + sz N
    void toWorld(const float* sample, float* out) const
    {
        for (int i = 0; i < 3; ++i)
            out[i] = sample[0] * t[i] + sample[1] * b[i] + sample[2] * n[i];
    }
};

} // namespace Ond::Baking
