#pragma once
// A linked GLSL program with its uniform setters, and the process-wide cache
// that compiles each pair of texts once. Attribute locations are bound by
// name before linking, to the mesh semantic ids that SceneGL uploads.

#include <Eigen/Core>

#include <map>
#include <memory>
#include <string>

namespace Ond::Baking {

// One shader stage compiled; 0 when it fails, after the compiler's text is
// logged on the bakers' channel.
unsigned compileShader(unsigned stage, const std::string& text);
// Whether the program linked; when not, the linker's text is logged and the
// program deleted.
bool linkSucceeded(unsigned program);

class GLProgram
{
public:
    // Compiles and links; on failure logs the compiler's text on the
    // bakers' channel and isValid() is false.
    GLProgram(const std::string& vertexText, const std::string& fragmentText);
    ~GLProgram();
    GLProgram(const GLProgram&) = delete;
    GLProgram& operator=(const GLProgram&) = delete;

    bool isValid() const { return m_id != 0; }
    unsigned id() const { return m_id; }
    void bind() const;
    static void release();

    // -1 when the program has no such active uniform; cached by name.
    int uniformLocation(const std::string& name);
    bool hasUniform(const std::string& name) { return uniformLocation(name) >= 0; }
    // Setters ignore uniforms the program does not have.
    void setInt(const std::string& name, int value);
    void setFloat(const std::string& name, float value);
    void setVec2(const std::string& name, float x, float y);
    void setVec3(const std::string& name, const Eigen::Vector3f& value);
    void setVec4(const std::string& name, float x, float y, float z, float w);
    void setMat3(const std::string& name, const Eigen::Matrix3f& value);
    void setMat4(const std::string& name, const Eigen::Matrix4f& value);

    // Name to location of the vertex attributes the draws feed.
    static const std::map<std::string, int>& attributeBindings();

private:
    unsigned m_id = 0;
    std::map<std::string, int> m_uniforms;
};

using GLProgramSPtr = std::shared_ptr<GLProgram>;

// Programs by their texts. Lives as long as the process and belongs to the
// GL context of the bakes. A pair that failed to build is not kept: the
// failure may come from the moment (no current context), not the text.
class GLProgramCache
{
public:
    static GLProgramCache& instance();
    // Null when the texts do not build.
    GLProgramSPtr program(const std::string& vertexText, const std::string& fragmentText);
    size_t size() const { return m_programs.size(); }

private:
    std::map<std::string, GLProgramSPtr> m_programs;
};

} // namespace Ond::Baking
