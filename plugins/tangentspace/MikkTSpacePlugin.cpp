// "mikktspace": the MikkTSpace tangent frame as most engines and bakers use
// it. Corners are welded only when identical; the bitangent is rebuilt per
// fragment as sign * cross(normal, tangent) from the unnormalised
// interpolated vectors, the sign riding on the interpolated bitangent.

#include "plugins/tangentspace/PluginDescription.h"

const Ond::TangentSpace::PluginDescription& Ond::TangentSpace::pluginDescription()
{
    static const PluginDescription description{
        "MikkTSpace", "MikkTSpace tangent frames, as used by most engines and bakers.", CoreOptions{},
        "rebuild_bitangent.glsl"};
    return description;
}
