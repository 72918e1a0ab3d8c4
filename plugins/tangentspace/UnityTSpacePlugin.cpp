// "unitytspace": the same MikkTSpace frames per corner. It differs in the
// per-fragment code only: the engine orthonormalises the interpolated frame
// in the pixel shader before it rebuilds the bitangent, so the normal and
// the tangent are renormalised and the tangent made orthogonal to the
// normal first.

#include "plugins/tangentspace/MikkTSpaceCore.h"

namespace {

const char* const interpolation =
    "    if (dot(normal, normal) > 0.0)\n"
    "        normal = normalize(normal);\n"
    "    vec3 ortho = tangent - dot(tangent, normal) * normal;\n"
    "    if (dot(ortho, ortho) > 0.0)\n"
    "        tangent = normalize(ortho);\n"
    "    vec3 rebuilt = cross(normal, tangent);\n"
    "    bitangent = (dot(rebuilt, bitangent) < 0.0 ? -1.0 : 1.0) * rebuilt;\n";

} // namespace

extern "C" {

TANGENT_SPACE_EXPORT int generateTangentSpace(const TangentSpaceContext* context, float angularThreshold)
{
    return Ond::TangentSpace::generate(context, angularThreshold, Ond::TangentSpace::CoreOptions{});
}

TANGENT_SPACE_EXPORT unsigned int getAPIVersion(void) { return TANGENT_SPACE_API_VERSION; }

TANGENT_SPACE_EXPORT const char* getLabel(void) { return "Unity"; }

TANGENT_SPACE_EXPORT const char* getDescription(void)
{
    return "MikkTSpace tangent frames with the frame orthonormalised per fragment.";
}

TANGENT_SPACE_EXPORT const char* getTangentBasisInterpolation(void) { return interpolation; }

} // extern "C"
