#include "baking/lowpoly/GLSLSource.h"

#include "scene/processing/TangentSpaceGenerator.h"

std::string_view lowPolyShaderSource(std::string_view name);

namespace Ond::Baking::GLSLSource {

std::string_view file(std::string_view baseName)
{
    return lowPolyShaderSource(baseName);
}

std::string preamble(Stage stage, int version)
{
    std::string text = "#version " + std::to_string(version) + "\n#define OND_SL_330 1\n";
    if (version >= 430)
        text += "#define OND_SL_430 1\n";
    text += stage == Stage::Vertex ? file("preamble.vert.glsl") : file("preamble.frag.glsl");
    return text;
}

std::string vertexText(std::string_view bodyFile, int version)
{
    return preamble(Stage::Vertex, version) + std::string(file(bodyFile));
}

std::string fragmentText(std::string_view bodyFile, int version)
{
    return preamble(Stage::Fragment, version) + std::string(file(bodyFile));
}

std::string fragmentTextWithTangent(std::string_view bodyFile, const std::string& perFragmentCode)
{
    std::string text = preamble(Stage::Fragment);
    if (!perFragmentCode.empty()) {
        text += "#define PER_FRAG_BINORMAL 1\n";
        text += "void interpolateTangent(inout vec3 normal, inout vec3 tangent, inout vec3 bitangent)\n{\n";
        text += perFragmentCode;
        text += "}\n";
    }
    text += file(bodyFile);
    return text;
}

std::string fullscreenVertexText()
{
    return vertexText("fullscreen.vert.glsl");
}

std::string perFragmentCode()
{
    const auto generator = SceneGraph::MeshProcessing::TangentSpaceGenerator::getDefault();
    if (!generator || !generator->getLibrary())
        return {};
    return generator->getLibrary()->getTangentBasisInterpolation().toStdString();
}

} // namespace Ond::Baking::GLSLSource
