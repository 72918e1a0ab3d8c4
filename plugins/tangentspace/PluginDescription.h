#pragma once
// What tells one tangent-space plugin from another. Each plugin library
// defines pluginDescription(); PluginEntryPoints.cpp turns it into the five
// exported entry points.

#include "plugins/tangentspace/MikkTSpaceCore.h"

#include <string_view>

namespace Ond::TangentSpace {

struct PluginDescription
{
    const char* label;
    const char* description;
    CoreOptions options;
    // Base name of the embedded GLSL that rebuilds the frame per fragment.
    const char* interpolationFile;
};

const PluginDescription& pluginDescription();

} // namespace Ond::TangentSpace

// The plugin's embedded GLSL files by base name (null-terminated).
std::string_view tangentBasisSource(std::string_view name);
