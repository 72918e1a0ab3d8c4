#include "scene/processing/TangentSpacePlugin.h"

namespace Ond::SceneGraph::MeshProcessing {

namespace {

QString textOf(GetTextFunction function)
{
    const char* text = function ? function() : nullptr;
    return text ? QString::fromUtf8(text) : QString();
}

} // namespace

TangentSpacePlugin::TangentSpacePlugin(const QString& fileName) : QLibrary(fileName)
{
    if (!load())
        return;
    generateFunction = reinterpret_cast<GenerateTangentSpaceFunction>(resolve("generateTangentSpace"));
    auto versionFunction = reinterpret_cast<GetAPIVersionFunction>(resolve("getAPIVersion"));
    auto labelFunction = reinterpret_cast<GetTextFunction>(resolve("getLabel"));
    auto descriptionFunction = reinterpret_cast<GetTextFunction>(resolve("getDescription"));
    auto interpolationFunction = reinterpret_cast<GetTextFunction>(resolve("getTangentBasisInterpolation"));
    if (!generateFunction || !versionFunction || !labelFunction || !descriptionFunction || !interpolationFunction)
        return;
    apiVersion = versionFunction();
    if (!isSupportedVersion(apiVersion))
        return;
    label = textOf(labelFunction);
    description = textOf(descriptionFunction);
    tangentBasisInterpolation = textOf(interpolationFunction);
    valid = true;
}

// The library stays mapped until process end: threads of a finished
// request may still be unwinding through it, and unloading buys nothing.
TangentSpacePlugin::~TangentSpacePlugin() = default;

bool TangentSpacePlugin::generate(const TangentSpaceContext* context, float angularThreshold) const
{
    return valid && generateFunction(context, angularThreshold) != 0;
}

bool TangentSpacePlugin::isSupportedVersion(uint32_t version)
{
    return (version >> 16) == 1u && (version & 0xFFFFu) != 0u;
}

} // namespace Ond::SceneGraph::MeshProcessing
