// "mikkunrealtspace": MikkTSpace as run by engines that weld their vertices
// with tolerances before they build the frame. Corners whose positions and
// normals agree within 2e-5 and whose texture coordinates agree within
// 1/1024 count as one vertex, so that tiny export noise along a smooth
// surface doesn't split a tangent group. The per-fragment code is the plain
// MikkTSpace one.

#include "plugins/tangentspace/MikkTSpaceCore.h"

namespace {

const char* const interpolation =
    "    vec3 rebuilt = cross(normal, tangent);\n"
    "    bitangent = (dot(rebuilt, bitangent) < 0.0 ? -1.0 : 1.0) * rebuilt;\n";

Ond::TangentSpace::CoreOptions weldOptions()
{
    Ond::TangentSpace::CoreOptions o;
    o.positionTolerance = 2e-5f;
    o.normalTolerance = 2e-5f;
    o.texCoordTolerance = 1.0f / 1024.0f;
    return o;
}

} // namespace

extern "C" {

TANGENT_SPACE_EXPORT int generateTangentSpace(const TangentSpaceContext* context, float angularThreshold)
{
    return Ond::TangentSpace::generate(context, angularThreshold, weldOptions());
}

TANGENT_SPACE_EXPORT unsigned int getAPIVersion(void) { return TANGENT_SPACE_API_VERSION; }

TANGENT_SPACE_EXPORT const char* getLabel(void) { return "MikkTSpace (welded)"; }

TANGENT_SPACE_EXPORT const char* getDescription(void)
{
    return "MikkTSpace tangent frames over vertices welded within small tolerances.";
}

TANGENT_SPACE_EXPORT const char* getTangentBasisInterpolation(void) { return interpolation; }

} // extern "C"
