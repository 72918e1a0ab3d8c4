#include "baking/lowpoly/GLComputeProgram.h"

#include "baking/lowpoly/GLSLSource.h"
#include "program/LogChannel.h"

#include <GL/glew.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <vector>

namespace Ond::Baking {

namespace {

QString infoLog(GLuint object, bool isProgram)
{
    GLint length = 0;
    if (isProgram)
        glGetProgramiv(object, GL_INFO_LOG_LENGTH, &length);
    else
        glGetShaderiv(object, GL_INFO_LOG_LENGTH, &length);
    std::vector<char> text(size_t(std::max(length, 1)), '\0');
    if (isProgram)
        glGetProgramInfoLog(object, length, nullptr, text.data());
    else
        glGetShaderInfoLog(object, length, nullptr, text.data());
    return QString::fromUtf8(text.data());
}

} // namespace

GLComputeProgram::GLComputeProgram(const std::string& text)
{
    const GLuint shader = glCreateShader(GL_COMPUTE_SHADER);
    const char* source = text.c_str();
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    GLint ok = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
    if (ok != GL_TRUE) {
        Core::bakersChannel().error(QStringLiteral("Shader compilation failed: %1").arg(infoLog(shader, false)));
        glDeleteShader(shader);
        return;
    }
    const GLuint program = glCreateProgram();
    glAttachShader(program, shader);
    glLinkProgram(program);
    glDetachShader(program, shader);
    glDeleteShader(shader);
    glGetProgramiv(program, GL_LINK_STATUS, &ok);
    if (ok != GL_TRUE) {
        Core::bakersChannel().error(QStringLiteral("Shader link failed: %1").arg(infoLog(program, true)));
        glDeleteProgram(program);
        return;
    }
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
