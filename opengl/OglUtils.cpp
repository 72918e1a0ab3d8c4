#include "opengl/OglUtils.h"

#include <GL/glew.h>

namespace Ond::OglUtils {

bool initialize()
{
    glewExperimental = GL_TRUE;
    const GLenum result = glewInit();
    // Debian's GLEW is built for GLX: under EGL it reports "no GLX display"
    // after it has loaded every pointer, which is success for us.
    if (result == GLEW_OK || result == GLEW_ERROR_NO_GLX_DISPLAY) {
        glGetError(); // glewInit may leave an error behind in core profiles
        return glGetString(GL_VERSION) != nullptr;
    }
    return false;
}

int glVersionNumber()
{
    // GLEW_VERSION_x_y cannot be trusted with glewExperimental set.
    GLint major = 0, minor = 0;
    glGetIntegerv(GL_MAJOR_VERSION, &major);
    glGetIntegerv(GL_MINOR_VERSION, &minor);
    if (glGetError() != GL_NO_ERROR)
        return 0;
    return major * 100 + minor * 10;
}

bool hasComputeShaders()
{
    return glVersionNumber() >= 430;
}

} // namespace Ond::OglUtils
