#pragma once
// The MikkTSpace tangent frame, shared by the three plugins: each compiles
// this core into its own library and sets the few options below.

#include "plugins/tangentspace/TangentSpaceApi.h"

namespace Ond::TangentSpace {

struct CoreOptions
{
    // Corners are welded into one vertex when position, normal and texture
    // coordinate agree within these tolerances. All zero means exact
    // equality, which is what the reference algorithm does.
    float positionTolerance = 0.0f;
    float normalTolerance = 0.0f;
    float texCoordTolerance = 0.0f;
};

// Reads every corner of the context's triangles, computes one tangent and
// bitangent sign per corner and writes them through setTangent.
// angularThreshold is in degrees: tangents of faces around a vertex that
// differ by more are not averaged (180 averages all of them).
// Returns 0 when the context has no triangles or no callbacks.
int generate(const TangentSpaceContext* context, float angularThreshold, const CoreOptions& options);

} // namespace Ond::TangentSpace
