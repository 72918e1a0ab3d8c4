#pragma once
// The OpenGL function layer (GLEW underneath). Call initialize() once with a
// current context before any GL call.

namespace Ond::OglUtils {

// Loads the GL entry points for the current context. False when no context
// is current or the loader fails.
bool initialize();

// The context's version as major * 100 + minor * 10: 3.3 reads 330.
int glVersionNumber();

// True when the current context offers compute shaders (4.3 or later).
bool hasComputeShaders();

} // namespace Ond::OglUtils
