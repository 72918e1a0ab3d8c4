#pragma once
// What every GL-using process sets before its application object exists:
// shared contexts and the default format (4.5 core, no depth, no stencil,
// no multisampling, double buffered, no vsync).

namespace Ond::OpenGLUtils {

void setDefaultGLAttributes();

} // namespace Ond::OpenGLUtils
