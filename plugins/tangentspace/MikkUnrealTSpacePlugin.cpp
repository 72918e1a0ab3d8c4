// "mikkunrealtspace": MikkTSpace as run by engines that weld their vertices
// with tolerances before they build the frame. Corners whose positions and
// normals agree within 2e-5 and whose texture coordinates agree within
// 1/1024 count as one vertex, so that tiny export noise along a smooth
// surface doesn't split a tangent group. The per-fragment code is the plain
// MikkTSpace one.

#include "plugins/tangentspace/PluginDescription.h"

namespace {

Ond::TangentSpace::CoreOptions weldOptions()
{
    Ond::TangentSpace::CoreOptions o;
    o.positionTolerance = 2e-5f;
    o.normalTolerance = 2e-5f;
    o.texCoordTolerance = 1.0f / 1024.0f;
    return o;
}

} // namespace

const Ond::TangentSpace::PluginDescription& Ond::TangentSpace::pluginDescription()
{
    static const PluginDescription description{
        "MikkTSpace (welded)", "MikkTSpace tangent frames over vertices welded within small tolerances.",
        weldOptions(), "rebuild_bitangent.glsl"};
    return description;
}
