#pragma once
// A linked GLSL compute program, and the texts it is built from: version 430
// with the version macros, the caller's defines, then a body from
// baking/lowpoly/shaders. Programs are built once per text.

#include <memory>
#include <string>
#include <string_view>

namespace Ond::Baking {

class GLComputeProgram
{
public:
    // Compiles and links; on failure logs the compiler's text on the bakers'
    // channel and isValid() is false.
    explicit GLComputeProgram(const std::string& text);
    ~GLComputeProgram();
    GLComputeProgram(const GLComputeProgram&) = delete;
    GLComputeProgram& operator=(const GLComputeProgram&) = delete;

    bool isValid() const { return m_id != 0; }
    unsigned id() const { return m_id; }
    void bind() const;
    // -1 when the program has no such active uniform.
    int uniformLocation(const char* name) const;

    static std::string text(std::string_view bodyFile, const std::string& defines);
    // The program of a text, built on first use; null when it does not build.
    // Belongs to the GL context (and its share group) of the bakes.
    static std::shared_ptr<GLComputeProgram> cached(const std::string& text);

private:
    unsigned m_id = 0;
};

} // namespace Ond::Baking
