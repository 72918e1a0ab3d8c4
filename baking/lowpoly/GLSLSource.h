#pragma once
// Composition of the GLSL texts of the low-poly passes. The bodies live in
// .glsl files compiled into the program; each text gets a preamble of macros
// so that one body reads the same under every shading language version.

#include <string>
#include <string_view>

namespace Ond::Baking::GLSLSource {

enum class Stage { Vertex, Fragment };

// A shader file of baking/lowpoly/shaders by base name; empty if unknown.
std::string_view file(std::string_view baseName);

// "#version 330" (or 430) followed by the macro preamble of the stage.
std::string preamble(Stage stage, int version = 330);

// Preamble plus the named body.
std::string vertexText(std::string_view bodyFile, int version = 330);
std::string fragmentText(std::string_view bodyFile, int version = 330);

// Fragment preamble, then interpolateTangent wrapped around `perFragmentCode`
// when that is not empty, then the body.
std::string fragmentTextWithTangent(std::string_view bodyFile, const std::string& perFragmentCode);

// The vertex text of a pass without mesh: corners from gl_VertexID.
std::string fullscreenVertexText();

// The code the current tangent-space plugin gives for the per-fragment
// frame; empty without plugin or code.
std::string perFragmentCode();

} // namespace Ond::Baking::GLSLSource
