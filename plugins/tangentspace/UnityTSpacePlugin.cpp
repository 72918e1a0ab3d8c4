// "unitytspace": the same MikkTSpace frames per corner. It differs in the
// per-fragment code only: the engine orthonormalises the interpolated frame
// in the pixel shader before it rebuilds the bitangent, so the normal and
// the tangent are renormalised and the tangent made orthogonal to the
// normal first.

#include "plugins/tangentspace/PluginDescription.h"

const Ond::TangentSpace::PluginDescription& Ond::TangentSpace::pluginDescription()
{
    static const PluginDescription description{
        "Unity", "MikkTSpace tangent frames with the frame orthonormalised per fragment.", CoreOptions{},
        "orthonormalise_frame.glsl"};
    return description;
}
