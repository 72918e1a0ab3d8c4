#include "baking/lowpoly/GLComputeProgram.h"

#include "baking/lowpoly/GLProgram.h"
#include "baking/lowpoly/GLSLSource.h"

#include <GL/glew.h>

#include <map>
#include <mutex>

namespace Ond::Baking {

GLComputeProgram::GLComputeProgram(const std::string& text)
{
    const GLuint shader = compileShader(GL_COMPUTE_SHADER, text);
    if (!shader)
        return;
    const GLuint program = glCreateProgram();
    glAttachShader(program, shader);
    glLinkProgram(program);
    glDetachShader(program, shader);
    glDeleteShader(shader);
    if (linkSucceeded(program))
        m_id = program;
}

GLComputeProgram::~GLComputeProgram()
{
    if (m_id)
        glDeleteProgram(m_id);
}

void GLComputeProgram::bind() const
{
    glUseProgram(m_id);
}

int GLComputeProgram::uniformLocation(const char* name) const
{
    return m_id ? glGetUniformLocation(m_id, name) : -1;
}

std::string GLComputeProgram::text(std::string_view bodyFile, const std::string& defines)
{
    std::string result = "#version 430\n#define OND_SL_330 1\n#define OND_SL_430 1\n";
    result += defines;
    result += GLSLSource::file(bodyFile);
    return result;
}

std::shared_ptr<GLComputeProgram> GLComputeProgram::cached(const std::string& text)
{
    // Worker threads with shared contexts may ask at the same time.
    static std::mutex mutex;
    static std::map<std::string, std::shared_ptr<GLComputeProgram>> programs;
    std::lock_guard<std::mutex> lock(mutex);
    auto it = programs.find(text);
    if (it == programs.end()) {
        auto program = std::make_shared<GLComputeProgram>(text);
        it = programs.emplace(text, program->isValid() ? program : nullptr).first;
    }
    return it->second;
}

} // namespace Ond::Baking
