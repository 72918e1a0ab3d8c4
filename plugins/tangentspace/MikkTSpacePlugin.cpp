// "mikktspace": the MikkTSpace tangent frame as most engines and bakers use
// it. Corners are welded only when identical; the bitangent is rebuilt per
// fragment as sign * cross(normal, tangent) from the unnormalised
// interpolated vectors, the sign riding on the interpolated bitangent.

#include "plugins/tangentspace/MikkTSpaceCore.h"

namespace {

const char* const interpolation =
    "    vec3 rebuilt = cross(normal, tangent);\n"
    "    bitangent = (dot(rebuilt, bitangent) < 0.0 ? -1.0 : 1.0) * rebuilt;\n";

} // namespace

extern "C" {

TANGENT_SPACE_EXPORT int generateTangentSpace(const TangentSpaceContext* context, float angularThreshold)
{
    return Ond::TangentSpace::generate(context, angularThreshold, Ond::TangentSpace::CoreOptions{});
}

TANGENT_SPACE_EXPORT unsigned int getAPIVersion(void) { return TANGENT_SPACE_API_VERSION; }

TANGENT_SPACE_EXPORT const char* getLabel(void) { return "MikkTSpace"; }

TANGENT_SPACE_EXPORT const char* getDescription(void)
{
    return "MikkTSpace tangent frames, as used by most engines and bakers.";
}

TANGENT_SPACE_EXPORT const char* getTangentBasisInterpolation(void) { return interpolation; }

} // extern "C"
