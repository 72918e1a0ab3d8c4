#include "baking/lowpoly/SeAORenderer.h"

#include "baking/lowpoly/GLProgram.h"
#include "baking/lowpoly/GLSLSource.h"
#include "baking/lowpoly/GLTileTarget.h"
#include "baking/lowpoly/Texture.h"
#include "program/LogChannel.h"

#include <GL/glew.h>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace Ond::Baking {

namespace {

Core::LogChannel& seaoChannel()
{
    static Core::LogChannel channel(QStringLiteral("SEAO Gl Render"));
    return channel;
}

using Clock = std::chrono::steady_clock;

constexpr int elementsPerBand = 1 << 16;

int64_t microsecondsSince(Clock::time_point start)
{
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start).count();
}

GLuint makeTexture(GLint internalFormat, int width, int height, GLenum format, const float* data)
{
    const GLuint texture = bindNewTexture2D(GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glTexImage2D(GL_TEXTURE_2D, 0, internalFormat, width, height, 0, format, GL_FLOAT, data);
    glBindTexture(GL_TEXTURE_2D, 0);
    return texture;
}

void setFilter(GLuint texture, GLint filter)
{
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
}

void bindTexture(GLProgram& program, const char* sampler, int unit, GLuint texture)
{
    glActiveTexture(GLenum(GL_TEXTURE0 + unit));
    glBindTexture(GL_TEXTURE_2D, texture);
    program.setInt(sampler, unit);
}

GLProgramSPtr fullscreenProgram(const char* fragmentFile)
{
    return GLProgramCache::instance().program(GLSLSource::fullscreenVertexText(),
                                              GLSLSource::fragmentText(fragmentFile));
}

} // namespace

SeAOParameters SeAOParameters::forQuality(int quality)
{
    static const SeAOParameters table[4] = {{3, 5.0f}, {5, 8.0f}, {10, 16.0f}, {16, 24.0f}};
    return table[std::clamp(quality, 0, 3)];
}

float SeAOParameters::errbias() const
{
    return std::pow(10.0f, std::min(errorBias, 1.0f) * 9.0f - 9.0f);
}

SeAORenderer::SeAORenderer(const SeAO::Geometry& geometry, const SeAO::SurfaceElementTree& tree,
                           const SeAOParameters& parameters)
    : m_geometry(geometry)
    , m_parameters(parameters)
    , m_packed(SeAO::PackedTree::pack(geometry, tree))
    , m_element(fullscreenProgram("seao_element.frag.glsl"))
    , m_blend(fullscreenProgram("seao_blend.frag.glsl"))
    , m_texel(GLProgramCache::instance().program(GLSLSource::vertexText("seao_texel.vert.glsl"),
                                                 GLSLSource::fragmentText("seao_texel.frag.glsl")))
    , m_reduce(fullscreenProgram("seao_reduce.frag.glsl"))
    , m_resolve(fullscreenProgram("seao_resolve.frag.glsl"))
{
    if (!isValid())
        return;
    const int w = m_packed.layout.width;
    const int h = m_packed.layout.height;
    // vert, pos, nrm, ind, tri0, tri1
    m_tree[0] = makeTexture(GL_RGBA32F, w, h, GL_RGBA, m_packed.vertices.data());
    m_tree[1] = makeTexture(GL_RGBA32F, w, h, GL_RGBA, m_packed.positions.data());
    m_tree[2] = makeTexture(GL_RGBA32F, w, h, GL_RGBA, m_packed.normals.data());
    m_tree[3] = makeTexture(GL_RGBA32F, w, h, GL_RGBA, m_packed.links.data());
    m_tree[4] = makeTexture(GL_RGBA32F, w, h, GL_RGBA, m_packed.triangles0.data());
    m_tree[5] = makeTexture(GL_RGBA32F, w, h, GL_RGBA, m_packed.triangles1.data());
    // The textures hold the tree from here on.
    for (std::vector<float>* array : {&m_packed.vertices, &m_packed.positions, &m_packed.normals, &m_packed.links,
                                      &m_packed.triangles0, &m_packed.triangles1})
        std::vector<float>().swap(*array);
    for (GLuint& texture : m_occlusion)
        texture = makeTexture(GL_R32F, w, h, GL_RED, nullptr);
    glGenFramebuffers(1, &m_framebuffer);

    // Before any pass every element is fully visible.
    glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    for (GLuint texture : {m_occlusion[0], m_occlusion[2]}) {
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
        glViewport(0, 0, w, h);
        glClearColor(1.0f, 1.0f, 1.0f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
    }
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    m_occlusionResult = 2;

    glGenVertexArrays(1, &m_emptyArray);
    glGenVertexArrays(1, &m_vertexArray);
    glGenBuffers(2, m_buffers);
    glBindVertexArray(m_vertexArray);
    glBindBuffer(GL_ARRAY_BUFFER, m_buffers[0]);
    glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(geometry.vertices.size() * sizeof(SeAO::Vertex)),
                 geometry.vertices.data(), GL_STATIC_DRAW);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_buffers[1]);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr(geometry.drawnTriangles.size() * sizeof(uint32_t)),
                 geometry.drawnTriangles.data(), GL_STATIC_DRAW);
    const GLsizei stride = GLsizei(sizeof(SeAO::Vertex));
    const std::pair<int, size_t> attributes[] = {{1, offsetof(SeAO::Vertex, position)},
                                                 {2, offsetof(SeAO::Vertex, normal)},
                                                 {6, offsetof(SeAO::Vertex, uv)}};
    for (const auto& [location, offset] : attributes) {
        glEnableVertexAttribArray(GLuint(location));
        glVertexAttribPointer(GLuint(location), location == 6 ? 2 : 3, GL_FLOAT, GL_FALSE, stride,
                              reinterpret_cast<const void*>(offset));
    }
    glBindVertexArray(0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    m_drawnIndices = GLsizei(geometry.drawnTriangles.size());
}

SeAORenderer::~SeAORenderer()
{
    glDeleteTextures(6, m_tree);
    glDeleteTextures(3, m_occlusion);
    if (m_framebuffer)
        glDeleteFramebuffers(1, &m_framebuffer);
    glDeleteBuffers(2, m_buffers);
    if (m_vertexArray)
        glDeleteVertexArrays(1, &m_vertexArray);
    if (m_emptyArray)
        glDeleteVertexArrays(1, &m_emptyArray);
}

bool SeAORenderer::isSoftwareRenderer()
{
    const GLubyte* text = glGetString(GL_RENDERER);
    if (!text)
        return false;
    const QString renderer = QString::fromLatin1(reinterpret_cast<const char*>(text));
    return renderer.contains(QLatin1String("llvmpipe")) || renderer.contains(QLatin1String("softpipe"))
        || renderer.contains(QLatin1String("Software Rasterizer"));
}

bool SeAORenderer::isValid() const
{
    return m_element && m_blend && m_texel && m_reduce && m_resolve && !m_geometry.empty();
}

void SeAORenderer::drawFullscreen() const
{
    glBindVertexArray(m_emptyArray);
    glDrawArrays(GL_TRIANGLES, 0, 3);
}

void SeAORenderer::bindTreeSamplers(GLProgram& program, int firstUnit) const
{
    static const char* const names[6] = {"smpvert", "smppos", "smpnrm", "smpind", "smptri0", "smptri1"};
    for (int i = 0; i < 6; ++i)
        bindTexture(program, names[i], firstUnit + i, m_tree[i]);
    bindTexture(program, "smpocc", firstUnit + 6, m_occlusion[m_occlusionResult]);
}

void SeAORenderer::solveElementOcclusion()
{
    if (!isValid())
        return;
    const int w = m_packed.layout.width;
    const int h = m_packed.layout.height;
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glDisable(GL_BLEND);
    glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    glViewport(0, 0, w, h);

    // The blend slot is all ones until the passes ran; the first pass reads it.
    int read = 2;
    int written = 0;
    for (uint32_t pass = 1; pass <= m_parameters.occlusionPasses; ++pass) {
        seaoChannel().info(QStringLiteral("Occlusion pass %1").arg(pass));
        const auto start = Clock::now();
        written = read == 0 ? 1 : 0;
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_occlusion[written], 0);
        m_element->bind();
        m_element->setVec2("rootind", m_packed.root[0], m_packed.root[1]);
        m_element->setFloat("epsi", m_parameters.epsi);
        m_element->setFloat("distfade", m_parameters.distanceFade);
        bindTexture(*m_element, "smppos", 0, m_tree[1]);
        bindTexture(*m_element, "smpnrm", 1, m_tree[2]);
        bindTexture(*m_element, "smpind", 2, m_tree[3]);
        bindTexture(*m_element, "smpocc", 3, m_occlusion[read]);
        // In bands of rows, each finished before the next, so that a large
        // tree never holds the GPU (or a software renderer's threads) in one
        // long draw.
        const int rows = std::max(1, elementsPerBand / w);
        glEnable(GL_SCISSOR_TEST);
        for (int y = 0; y < h; y += rows) {
            glScissor(0, y, w, std::min(rows, h - y));
            drawFullscreen();
            glFinish();
        }
        glDisable(GL_SCISSOR_TEST);
        seaoChannel().info(QStringLiteral("\tCompute time: %1").arg(microsecondsSince(start)));
        read = written;
    }
    if (m_parameters.occlusionPasses > 0) {
        // The one before the last: the all-ones start when only one pass ran.
        const int previous = m_parameters.occlusionPasses == 1 ? 2 : (written == 0 ? 1 : 0);
        GLuint blended = makeTexture(GL_R32F, w, h, GL_RED, nullptr);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, blended, 0);
        m_blend->bind();
        m_blend->setVec2("weights", 0.7f, 0.3f);
        bindTexture(*m_blend, "smpocc0", 0, m_occlusion[written]);
        bindTexture(*m_blend, "smpocc1", 1, m_occlusion[previous]);
        drawFullscreen();
        glDeleteTextures(1, &m_occlusion[2]);
        m_occlusion[2] = blended;
    }
    m_occlusionResult = 2;
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glBindVertexArray(0);
    glActiveTexture(GL_TEXTURE0);
    GLProgram::release();
}

std::vector<float> SeAORenderer::elementOcclusion() const
{
    std::vector<float> texels(size_t(m_packed.layout.width) * size_t(m_packed.layout.height), 1.0f);
    if (!isValid())
        return texels;
    glBindTexture(GL_TEXTURE_2D, m_occlusion[m_occlusionResult]);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RED, GL_FLOAT, texels.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    return texels;
}

std::vector<SeAORenderer::ReductionLevel> SeAORenderer::reductionChain(int width, int height)
{
    // The first step takes a quarter of each side, the next ones halve,
    // until both sides are below 5; each texel is the mean of its block.
    std::vector<ReductionLevel> chain;
    int srcW = width, srcH = height;
    while (chain.empty() || srcW >= 5 || srcH >= 5) {
        const int limit = chain.empty() ? 4 : 2;
        ReductionLevel level;
        level.factorX = std::min(limit, srcW);
        level.factorY = std::min(limit, srcH);
        level.width = (srcW + level.factorX - 1) / level.factorX;
        level.height = (srcH + level.factorY - 1) / level.factorY;
        level.texture = makeTexture(GL_R32F, level.width, level.height, GL_RED, nullptr);
        setFilter(level.texture, GL_LINEAR);
        chain.push_back(level);
        srcW = level.width;
        srcH = level.height;
    }
    return chain;
}

uint64_t SeAORenderer::countActive(unsigned stateTexture, int width, int height,
                                   const std::vector<ReductionLevel>& chain, std::vector<float>& last)
{
    int srcW = width, srcH = height;
    GLuint source = stateTexture;
    setFilter(source, GL_LINEAR);
    m_reduce->bind();
    for (const ReductionLevel& level : chain) {
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, level.texture, 0);
        glViewport(0, 0, level.width, level.height);
        m_reduce->setVec2("srcsize", float(srcW), float(srcH));
        m_reduce->setVec2("dstsize", float(level.width), float(level.height));
        m_reduce->setInt("factorx", level.factorX);
        m_reduce->setInt("factory", level.factorY);
        bindTexture(*m_reduce, "smpsrc", 0, source);
        drawFullscreen();
        source = level.texture;
        srcW = level.width;
        srcH = level.height;
    }
    last.resize(size_t(srcW) * size_t(srcH));
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, srcW, srcH, GL_RED, GL_FLOAT, last.data());
    setFilter(stateTexture, GL_NEAREST);

    double mean = 0.0;
    for (float v : last)
        mean += double(v);
    mean /= double(last.size());
    const uint64_t active = uint64_t(std::llround(mean * double(width) * double(height)));
    // A fragment lost to rounding would be left half walked.
    return active == 0 && mean > 0.0 ? 1 : active;
}

SeAOTileStats SeAORenderer::renderTile(const std::array<float, 4>& uvWindow, const Surfaces::Surface* normals,
                                       Surfaces::Surface& tile)
{
    SeAOTileStats stats;
    const int w = int(tile.width());
    const int h = int(tile.height());
    if (!isValid() || w <= 0 || h <= 0)
        return stats;
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glDisable(GL_BLEND);

    GLuint state[2] = {makeTexture(GL_RGBA32F, w, h, GL_RGBA, nullptr),
                       makeTexture(GL_RGBA32F, w, h, GL_RGBA, nullptr)};
    glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    glViewport(0, 0, w, h);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, state[0], 0);
    glClearColor(0.0f, m_packed.root[0], m_packed.root[1], 0.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, state[1], 0);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glClear(GL_COLOR_BUFFER_BIT);

    const GLuint normalTexture = normals ? uploadTexture(*normals, true, true) : 0;
    const std::vector<ReductionLevel> chain = reductionChain(w, h);
    std::vector<float> counts;

    float looplimit = initialLoopLimit;
    uint64_t previousActive = 0;
    int read = 0;
    for (int pass = 0;; ++pass) {
        looplimit = std::max(looplimit, minimumLoopLimit);
        seaoChannel().info(QStringLiteral("Pass (looplimit: %1)").arg(double(looplimit)));
        const auto start = Clock::now();
        const int written = 1 - read;
        glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, state[written], 0);
        glViewport(0, 0, w, h);
        if (pass == 1) {
            // Outside the mesh nothing of the root's state may stay.
            glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
            glClear(GL_COLOR_BUFFER_BIT);
        }
        m_texel->bind();
        m_texel->setFloat("epsi", m_parameters.epsi);
        m_texel->setFloat("errbias", m_parameters.errbias());
        m_texel->setFloat("distfade", m_parameters.distanceFade);
        m_texel->setFloat("trifade", m_parameters.triFade);
        m_texel->setFloat("zonerad", 0.1f);
        m_texel->setFloat("usewsnrm", normalTexture ? 1.0f : 0.0f);
        m_texel->setVec4("uvWindow", uvWindow[0], uvWindow[1], uvWindow[2], uvWindow[3]);
        m_texel->setFloat("looplimit", looplimit);
        bindTexture(*m_texel, "smpprevres", 0, state[read]);
        bindTexture(*m_texel, "smpwsnrm", 1, normalTexture);
        bindTreeSamplers(*m_texel, 2);
        glBindVertexArray(m_vertexArray);
        glDrawElements(GL_TRIANGLES, m_drawnIndices, GL_UNSIGNED_INT, nullptr);

        const uint64_t active = countActive(state[written], w, h, chain, counts);
        const int64_t micros = microsecondsSince(start);
        seaoChannel().info(QStringLiteral("\tActive fragments: %1").arg(active));
        seaoChannel().info(QStringLiteral("\tCompute time: %1").arg(micros));
        stats.active.push_back(active);
        stats.loopLimits.push_back(looplimit);
        stats.microseconds.push_back(micros);
        stats.passes = pass + 1;
        read = written;
        if (active == 0)
            break;
        // Aim at a quarter second for the fragments that are left, and never
        // hold the GPU for more than 200000 steps.
        const double seconds = std::max(double(micros) * 1e-6, 1e-6);
        const double factor = pass == 0 ? 1.0 / seconds : double(previousActive) / (double(active) * seconds);
        looplimit = float(std::min(double(looplimit) * factor * 0.25, 200000.0));
        previousActive = active;
    }

    GLTileTarget target(w, h);
    if (target.isValid()) {
        target.bind();
        m_resolve->bind();
        bindTexture(*m_resolve, "smp0", 0, state[read]);
        drawFullscreen();
        // The state's first row is the top of the tile already.
        readBack(target.framebuffer(), tile);
    }
    deleteTexture(normalTexture);
    glDeleteTextures(2, state);
    for (const ReductionLevel& level : chain)
        glDeleteTextures(1, &level.texture);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glBindVertexArray(0);
    glActiveTexture(GL_TEXTURE0);
    GLProgram::release();
    return stats;
}

} // namespace Ond::Baking
