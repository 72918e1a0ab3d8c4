#include "baking/lowpoly/Dilation.h"

#include "baking/lowpoly/GLComputeProgram.h"
#include "baking/lowpoly/GLProgram.h"
#include "baking/lowpoly/GLSLSource.h"
#include "opengl/OglUtils.h"

#include <GL/glew.h>

#include <utility>

namespace Ond::Baking {

namespace {

std::string imageDefines(unsigned internalFormat)
{
    // A 16-bit image stores k / 256 as the nearest k / 65535 step, which
    // reads back as another float: compare alphas in stored units there.
    std::string defines = internalFormat == GL_RGBA16
        ? "#define SRC_LAYOUT rgba16\n#define SRC_STEP_KEY(a) round((a) * 65535.0)\n"
        : "#define SRC_LAYOUT rgba32f\n#define SRC_STEP_KEY(a) (a)\n";
    defines += "#define SRC_IMAGE image2D\n#define SRC_VEC4 vec4\n#define SRC_ZERO 0.0\n#define SRC_MAX 1.0\n";
    return defines;
}

} // namespace

bool Dilation::canUseCompute(const Texture& texture)
{
    return OglUtils::hasComputeShaders()
        && (texture.format.internalFormat == GL_RGBA32F || texture.format.internalFormat == GL_RGBA16);
}

void Dilation::runCompute(Texture& texture, uint32_t width)
{
    const std::string defines = imageDefines(texture.format.internalFormat);
    const auto step = GLComputeProgram::cached(GLComputeProgram::text("dilation_step.comp.glsl", defines));
    const auto finish = GLComputeProgram::cached(GLComputeProgram::text("dilation_finish.comp.glsl", defines));
    if (!step || !finish)
        return;

    glBindImageTexture(0, texture.name, 0, GL_FALSE, 0, GL_READ_WRITE, texture.format.internalFormat);
    step->bind();
    glUniform1i(step->uniformLocation("usrc"), 0);
    const GLint stepLocation = step->uniformLocation("stepindex");
    const GLuint groupsX = (texture.width + 13) / 14;
    const GLuint groupsY = (texture.height + 13) / 14;
    for (uint32_t stepIndex = 0; stepIndex < width; ++stepIndex) {
        glUniform1ui(stepLocation, stepIndex);
        glMemoryBarrier(GL_SHADER_IMAGE_ACCESS_BARRIER_BIT);
        glDispatchCompute(groupsX, groupsY, 1);
    }

    finish->bind();
    glUniform1i(finish->uniformLocation("usrc"), 0);
    glMemoryBarrier(GL_SHADER_IMAGE_ACCESS_BARRIER_BIT | GL_TEXTURE_UPDATE_BARRIER_BIT);
    // Rounds down: texels past the last whole 16 x 16 block keep their
    // step-coded alpha.
    const GLuint finishX = texture.width >> 4;
    const GLuint finishY = texture.height >> 4;
    if (finishX && finishY)
        glDispatchCompute(finishX, finishY, 1);
    glFinish();
    glBindImageTexture(0, 0, 0, GL_FALSE, 0, GL_READ_WRITE, texture.format.internalFormat);
    glUseProgram(0);
}

void Dilation::runFragment(Texture& texture, uint32_t width, unsigned framebuffer)
{
    const auto program = GLProgramCache::instance().program(GLSLSource::vertexText("postprocess.vert.glsl"),
                                                            GLSLSource::fragmentText("dilation_step.frag.glsl"));
    if (!program)
        return;

    Texture other = texture.withSize(texture.width, texture.height);
    other.create();
    program->bind();
    program->setInt("base_tex", 0);
    program->setVec2("uv_size", 1.0f, 1.0f);
    program->setVec2("uv_step", 1.0f / float(texture.width), 1.0f / float(texture.height));
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glViewport(0, 0, GLsizei(texture.width), GLsizei(texture.height));
    glActiveTexture(GL_TEXTURE0);
    // Every read lands on a texel centre, where linear and nearest filtering
    // agree in exact arithmetic. Some drivers (Mesa's llvmpipe) weigh the
    // neighbour texel by a rounding residue there, and the division by the
    // summed alpha would turn that residue into a full texel of growth.
    GLuint sampler = 0;
    glGenSamplers(1, &sampler);
    glSamplerParameteri(sampler, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glSamplerParameteri(sampler, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glSamplerParameteri(sampler, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glSamplerParameteri(sampler, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glBindSampler(0, sampler);

    GLuint source = texture.name;
    GLuint target = other.name;
    for (uint32_t pass = 0; pass < width; ++pass) {
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, target, 0);
        glBindTexture(GL_TEXTURE_2D, source);
        glDrawArrays(GL_TRIANGLES, 0, 3);
        std::swap(source, target);
    }
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, 0, 0);
    glBindTexture(GL_TEXTURE_2D, 0);
    glBindSampler(0, 0);
    glDeleteSamplers(1, &sampler);
    if (source != texture.name)
        std::swap(texture.name, other.name);
    other.destroy();
    GLProgram::release();
    glFinish();
}

} // namespace Ond::Baking
