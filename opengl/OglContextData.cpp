#include "opengl/OglContextData.h"

#include <GL/glew.h>

namespace Ond::OglUtils {

OglContextData::OglContextData()
    : m_target(GL_FRAMEBUFFER)
{
    glGenFramebuffers(1, &m_framebuffer);
}

OglContextData::~OglContextData()
{
    if (m_framebuffer) {
        glBindFramebuffer(m_target, 0);
        glDeleteFramebuffers(1, &m_framebuffer);
    }
}

void OglContextData::bindFramebuffer() const
{
    glBindFramebuffer(m_target, m_framebuffer);
}

void OglContextData::restoreState() const
{
    glUseProgram(0);
    glBindVertexArray(0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glGetError();
    bindFramebuffer();
}

} // namespace Ond::OglUtils
