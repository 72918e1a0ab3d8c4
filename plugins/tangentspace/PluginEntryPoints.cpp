#include "plugins/tangentspace/PluginDescription.h"

using Ond::TangentSpace::pluginDescription;

extern "C" {

TANGENT_SPACE_EXPORT int generateTangentSpace(const TangentSpaceContext* context, float angularThreshold)
{
    return Ond::TangentSpace::generate(context, angularThreshold, pluginDescription().options);
}

TANGENT_SPACE_EXPORT unsigned int getAPIVersion(void) { return TANGENT_SPACE_API_VERSION; }

TANGENT_SPACE_EXPORT const char* getLabel(void) { return pluginDescription().label; }

TANGENT_SPACE_EXPORT const char* getDescription(void) { return pluginDescription().description; }

TANGENT_SPACE_EXPORT const char* getTangentBasisInterpolation(void)
{
    return tangentBasisSource(pluginDescription().interpolationFile).data();
}

} // extern "C"
