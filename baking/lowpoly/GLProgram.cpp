#include "baking/lowpoly/GLProgram.h"

#include "program/LogChannel.h"

#include <GL/glew.h>

#include <algorithm>
#include <vector>

namespace Ond::Baking {

namespace {

std::string shaderLog(GLuint shader)
{
    GLint length = 0;
    glGetShaderiv(shader, GL_INFO_LOG_LENGTH, &length);
    std::vector<char> text(size_t(std::max(length, 1)), '\0');
    glGetShaderInfoLog(shader, length, nullptr, text.data());
    return text.data();
}

std::string programLog(GLuint program)
{
    GLint length = 0;
    glGetProgramiv(program, GL_INFO_LOG_LENGTH, &length);
    std::vector<char> text(size_t(std::max(length, 1)), '\0');
    glGetProgramInfoLog(program, length, nullptr, text.data());
    return text.data();
}

} // namespace

unsigned compileShader(unsigned stage, const std::string& text)
{
    const GLuint shader = glCreateShader(stage);
    const char* source = text.c_str();
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    GLint ok = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
    if (ok != GL_TRUE) {
        Core::bakersChannel().error(
            QStringLiteral("Shader compilation failed: %1").arg(QString::fromStdString(shaderLog(shader))));
        glDeleteShader(shader);
        return 0;
    }
    return shader;
}

bool linkSucceeded(unsigned program)
{
    GLint ok = GL_FALSE;
    glGetProgramiv(program, GL_LINK_STATUS, &ok);
    if (ok == GL_TRUE)
        return true;
    Core::bakersChannel().error(
        QStringLiteral("Shader link failed: %1").arg(QString::fromStdString(programLog(program))));
    glDeleteProgram(program);
    return false;
}

GLProgram::GLProgram(const std::string& vertexText, const std::string& fragmentText)
{
    const GLuint vertex = compileShader(GL_VERTEX_SHADER, vertexText);
    const GLuint fragment = vertex ? compileShader(GL_FRAGMENT_SHADER, fragmentText) : 0;
    if (!vertex || !fragment) {
        if (vertex)
            glDeleteShader(vertex);
        return;
    }
    const GLuint program = glCreateProgram();
    glAttachShader(program, vertex);
    glAttachShader(program, fragment);
    for (const auto& [name, location] : attributeBindings())
        glBindAttribLocation(program, GLuint(location), name.c_str());
    glBindFragDataLocation(program, 0, "ocolor0");
    glLinkProgram(program);
    glDetachShader(program, vertex);
    glDetachShader(program, fragment);
    glDeleteShader(vertex);
    glDeleteShader(fragment);
    if (linkSucceeded(program))
        m_id = program;
}

GLProgram::~GLProgram()
{
    if (m_id)
        glDeleteProgram(m_id);
}

void GLProgram::bind() const
{
    glUseProgram(m_id);
}

void GLProgram::release()
{
    glUseProgram(0);
}

int GLProgram::uniformLocation(const std::string& name)
{
    const auto it = m_uniforms.find(name);
    if (it != m_uniforms.end())
        return it->second;
    const int location = m_id ? glGetUniformLocation(m_id, name.c_str()) : -1;
    m_uniforms.emplace(name, location);
    return location;
}

void GLProgram::setInt(const std::string& name, int value)
{
    const int location = uniformLocation(name);
    if (location >= 0)
        glUniform1i(location, value);
}

void GLProgram::setFloat(const std::string& name, float value)
{
    const int location = uniformLocation(name);
    if (location >= 0)
        glUniform1f(location, value);
}

void GLProgram::setVec2(const std::string& name, float x, float y)
{
    const int location = uniformLocation(name);
    if (location >= 0)
        glUniform2f(location, x, y);
}

void GLProgram::setVec3(const std::string& name, const Eigen::Vector3f& value)
{
    const int location = uniformLocation(name);
    if (location >= 0)
        glUniform3f(location, value.x(), value.y(), value.z());
}

void GLProgram::setVec4(const std::string& name, float x, float y, float z, float w)
{
    const int location = uniformLocation(name);
    if (location >= 0)
        glUniform4f(location, x, y, z, w);
}

void GLProgram::setMat3(const std::string& name, const Eigen::Matrix3f& value)
{
    const int location = uniformLocation(name);
    if (location >= 0)
        glUniformMatrix3fv(location, 1, GL_FALSE, value.data()); // Eigen stores columns first
}

void GLProgram::setMat4(const std::string& name, const Eigen::Matrix4f& value)
{
    const int location = uniformLocation(name);
    if (location >= 0)
        glUniformMatrix4fv(location, 1, GL_FALSE, value.data());
}

const std::map<std::string, int>& GLProgram::attributeBindings()
{
    static const std::map<std::string, int> bindings = {
        {"in_position", 1}, {"in_normal", 2}, {"in_tangent", 3}, {"in_bitangent", 4}, {"in_uv0", 6},
    };
    return bindings;
}

GLProgramCache& GLProgramCache::instance()
{
    // Never destroyed: the programs would outlive the context at exit.
    static GLProgramCache* cache = new GLProgramCache();
    return *cache;
}

GLProgramSPtr GLProgramCache::program(const std::string& vertexText, const std::string& fragmentText)
{
    std::string key = vertexText;
    key += '\0';
    key += fragmentText;
    const auto it = m_programs.find(key);
    if (it != m_programs.end())
        return it->second;
    auto program = std::make_shared<GLProgram>(vertexText, fragmentText);
    if (!program->isValid())
        return nullptr;
    m_programs.emplace(std::move(key), program);
    return program;
}

} // namespace Ond::Baking
