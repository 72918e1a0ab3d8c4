#include "baking/lowpoly/CurvatureMapBaker.h"

#include "baking/AbstractBakingContext.h"
#include "baking/BakerRequirements.h"
#include "baking/lowpoly/CurvaturePreparation.h"
#include "baking/lowpoly/GLProgram.h"
#include "baking/lowpoly/GLSLSource.h"
#include "baking/lowpoly/GLTileTarget.h"
#include "baking/lowpoly/LowPolyProperties.h"
#include "baking/lowpoly/LowPolyTileLoop.h"
#include "baking/lowpoly/NormalWSMapBaker.h"
#include "baking/lowpoly/PostProcess.h"
#include "baking/lowpoly/SourceMap.h"
#include "baking/lowpoly/Texture.h"

#include <GL/glew.h>

#include <array>
#include <chrono>
#include <optional>

namespace Ond::Baking {

namespace {

struct CurvatureParameters
{
    float seamsPower = 0.0f; // 0 when seams are off
    float curvMult = 0.5f;
    uint8_t perPixel = 1;
};

double millisecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

// Window of a tile in the form the curvature texts take: UV origin with the
// tile offset, then how many tiles fit in the map.
std::array<float, 4> curvatureWindow(const std::array<float, 4>& window, const std::array<int32_t, 2>& uvTile)
{
    return {window[0] + float(uvTile[0]), window[1] + float(uvTile[1]), window[2], window[3]};
}

unsigned makeTexture(GLint internalFormat, GLenum format, int width, int height, const float* data, GLint filter)
{
    const unsigned texture = bindNewTexture2D(filter);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, internalFormat, width, height, 0, format, GL_FLOAT, data);
    glBindTexture(GL_TEXTURE_2D, 0);
    return texture;
}

void bindTexture(GLProgram& program, const char* sampler, int unit, unsigned texture)
{
    glActiveTexture(GLenum(GL_TEXTURE0 + unit));
    glBindTexture(GL_TEXTURE_2D, texture);
    program.setInt(sampler, unit);
}

// The GL side of one curvature bake: the mesh and its packed data uploaded
// once, the per-group curvature computed once, then the tiles drawn.
class CurvatureStage
{
public:
    // sameGrid: the map has the output's size, so that every sample of the
    // per-pixel pass falls on a texel centre, where linear filtering would
    // read one texel at four times the cost.
    CurvatureStage(const CurvatureMesh& mesh, const CurvatureGpuData* gpu, const CurvatureParameters& parameters,
                   float scale, bool sameGrid)
        : m_mesh(mesh), m_gpu(gpu), m_parameters(parameters), m_scale(scale), m_sameGrid(sameGrid)
    {
    }

    ~CurvatureStage()
    {
        glDeleteVertexArrays(GLsizei(m_vertexArrays.size()), m_vertexArrays.data());
        glDeleteBuffers(GLsizei(m_buffers.size()), m_buffers.data());
        glDeleteTextures(GLsizei(m_textures.size()), m_textures.data());
        if (m_groupFramebuffer)
            glDeleteFramebuffers(1, &m_groupFramebuffer);
        GLProgram::release();
        glActiveTexture(GL_TEXTURE0);
        glViewport(m_viewport[0], m_viewport[1], m_viewport[2], m_viewport[3]);
    }

    CurvatureStage(const CurvatureStage&) = delete;
    CurvatureStage& operator=(const CurvatureStage&) = delete;

    // False when a program did not build; the map then stays empty.
    bool prepare()
    {
        glGetIntegerv(GL_VIEWPORT, m_viewport.data());
        auto& cache = GLProgramCache::instance();
        m_drawProgram = cache.program(GLSLSource::vertexText("curvature_draw.vert.glsl"),
                                      GLSLSource::fragmentText("curvature_draw.frag.glsl"));
        m_seamsProgram = cache.program(GLSLSource::vertexText("curvature_seams.vert.glsl"),
                                       GLSLSource::fragmentText("curvature_seams.frag.glsl"));
        if (m_parameters.perPixel) {
            m_pixelProgram = cache.program(GLSLSource::vertexText("curvature_pixel.vert.glsl"),
                                           GLSLSource::fragmentText("curvature_pixel.frag.glsl"));
        } else {
            m_groupProgram = cache.program(GLSLSource::vertexText("curvature_groups.vert.glsl"),
                                           GLSLSource::fragmentText("curvature_vertex.frag.glsl"));
            m_spreadProgram = cache.program(GLSLSource::vertexText("curvature_spread.vert.glsl"),
                                            GLSLSource::fragmentText("curvature_draw.frag.glsl"));
        }
        if (!m_drawProgram || !m_seamsProgram || (m_parameters.perPixel && !m_pixelProgram)
            || (!m_parameters.perPixel && (!m_groupProgram || !m_spreadProgram)))
            return false;

        glDisable(GL_DEPTH_TEST);
        glDisable(GL_CULL_FACE);
        glDisable(GL_BLEND);
        uploadMesh();
        if (m_gpu && !m_gpu->seamLines.empty())
            uploadSeams();
        if (!m_parameters.perPixel)
            computeGroups();
        return true;
    }

    // One output tile, with its window; with the map tile and its window in
    // per-pixel mode.
    void drawTile(const Surfaces::SurfaceSPtr& tile, const std::array<float, 4>& uvWindow,
                  const Surfaces::Surface* mapTile, const std::array<float, 4>& mapWindow)
    {
        GLTileTarget target(int(tile->width()), int(tile->height()));
        if (!target.isValid())
            return;
        std::optional<GLTileTarget> positions;
        unsigned normals = 0;
        if (m_parameters.perPixel) {
            if (!mapTile || mapTile->isEmpty())
                return;
            normals = uploadTexture(*mapTile, !m_sameGrid, true);
            positions.emplace(int(mapTile->width()), int(mapTile->height()));
            if (!positions->isValid()) {
                deleteTexture(normals);
                return;
            }
            drawPositions(*positions, mapWindow);
        }

        target.bind();
        glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        if (m_parameters.perPixel) {
            GLProgram& p = *m_pixelProgram;
            p.bind();
            p.setFloat("flipy", -1.0f);
            p.setFloat("invw", 1.0f / float(mapTile->width()));
            p.setFloat("invh", 1.0f / float(mapTile->height()));
            p.setFloat("curvmult", m_parameters.curvMult);
            p.setFloat("posmult", m_scale);
            p.setVec4("uvWindow", uvWindow[0], uvWindow[1], uvWindow[2], uvWindow[3]);
            p.setVec4("normalWindow", mapWindow[0], mapWindow[1], mapWindow[2], mapWindow[3]);
            glBindTexture(GL_TEXTURE_2D, positions->texture());
            const GLint filter = m_sameGrid ? GL_NEAREST : GL_LINEAR;
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
            bindTexture(p, "smppos", 0, positions->texture());
            bindTexture(p, "smpnrm", 1, normals);
            glBindVertexArray(m_meshArray);
            glDrawElements(GL_TRIANGLES, GLsizei(m_mesh.triangles.size()), GL_UNSIGNED_INT, nullptr);
        } else {
            GLProgram& p = *m_spreadProgram;
            p.bind();
            p.setFloat("flipy", -1.0f);
            p.setFloat("invh0", 1.0f / float(m_groupRows));
            p.setFloat("nrmzero", 0.0f);
            p.setVec4("uvWindow", uvWindow[0], uvWindow[1], uvWindow[2], uvWindow[3]);
            bindTexture(p, "smpcurv", 0, m_groupResult);
            glBindVertexArray(m_keyArray);
            glDrawElements(GL_TRIANGLES, GLsizei(m_mesh.triangles.size()), GL_UNSIGNED_INT, nullptr);
        }

        if (m_seamArray) {
            // The lines replace what lies under them.
            GLProgram& p = *m_seamsProgram;
            p.bind();
            p.setFloat("seamspow", 1.0f / m_parameters.seamsPower);
            p.setVec4("uvWindow", uvWindow[0], uvWindow[1], uvWindow[2], uvWindow[3]);
            glBindVertexArray(m_seamArray);
            glDrawArrays(GL_LINES, 0, GLsizei(m_gpu->seamLines.size() / 3));
        }
        glBindVertexArray(0);
        GLProgram::release();
        GLTileTarget::release();

        // The top row of the tile came out first: no flip.
        Surfaces::Surface pixels(Surfaces::SurfaceDesc(tile->width(), tile->height(), Surfaces::PixelFormat::RGBA32F));
        if (readBack(target.framebuffer(), pixels))
            Surfaces::blit(pixels, *tile, 0, 0);
        deleteTexture(normals);
    }

private:
    unsigned newBuffer(GLenum target, size_t bytes, const void* data)
    {
        GLuint buffer = 0;
        glGenBuffers(1, &buffer);
        glBindBuffer(target, buffer);
        glBufferData(target, GLsizeiptr(bytes), data, GL_STATIC_DRAW);
        m_buffers.push_back(buffer);
        return buffer;
    }

    unsigned newVertexArray()
    {
        GLuint array = 0;
        glGenVertexArrays(1, &array);
        glBindVertexArray(array);
        m_vertexArrays.push_back(array);
        return array;
    }

    void uploadMesh()
    {
        const auto& vertices = m_mesh.vertices;
        // Positions and UVs straight from the 32-byte records.
        const unsigned vertexBuffer = newBuffer(GL_ARRAY_BUFFER, vertices.size() * sizeof(CurvatureVertex),
                                                vertices.data());
        unsigned keyBuffer = 0;
        if (!m_parameters.perPixel)
            keyBuffer = newBuffer(GL_ARRAY_BUFFER, m_gpu->vertexKeys.size() * sizeof(float),
                                  m_gpu->vertexKeys.data());
        const unsigned indexBuffer = newBuffer(GL_ELEMENT_ARRAY_BUFFER, m_mesh.triangles.size() * sizeof(uint32_t),
                                               m_mesh.triangles.data());
        const GLsizei stride = GLsizei(sizeof(CurvatureVertex));
        const void* uvOffset = reinterpret_cast<const void*>(offsetof(CurvatureVertex, uv));

        m_meshArray = newVertexArray();
        glBindBuffer(GL_ARRAY_BUFFER, vertexBuffer);
        glEnableVertexAttribArray(1);
        glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, stride, nullptr);
        glEnableVertexAttribArray(6);
        glVertexAttribPointer(6, 2, GL_FLOAT, GL_FALSE, stride, uvOffset);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indexBuffer);

        if (keyBuffer) {
            m_keyArray = newVertexArray();
            glBindBuffer(GL_ARRAY_BUFFER, keyBuffer);
            glEnableVertexAttribArray(1);
            glVertexAttribPointer(1, 1, GL_FLOAT, GL_FALSE, sizeof(float), nullptr);
            glBindBuffer(GL_ARRAY_BUFFER, vertexBuffer);
            glEnableVertexAttribArray(6);
            glVertexAttribPointer(6, 2, GL_FLOAT, GL_FALSE, stride, uvOffset);
            glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indexBuffer);
        }
        glBindVertexArray(0);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
    }

    void uploadSeams()
    {
        const unsigned buffer = newBuffer(GL_ARRAY_BUFFER, m_gpu->seamLines.size() * sizeof(float),
                                          m_gpu->seamLines.data());
        m_seamArray = newVertexArray();
        glBindBuffer(GL_ARRAY_BUFFER, buffer);
        glEnableVertexAttribArray(1);
        glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, 3 * sizeof(float), nullptr);
        glBindVertexArray(0);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
    }

    // One texel per normal group, from the packed groups and connections.
    void computeGroups()
    {
        const int log2Width = m_gpu->log2Width;
        const int width = 1 << log2Width;
        m_groupRows = int(m_gpu->posNrm.size() >> (log2Width + 3)) + 1;
        const int connectionRows = int(m_gpu->connections.size() >> log2Width) + 1;

        std::vector<float> posNrm(size_t(2 * width) * size_t(m_groupRows) * 4, 0.0f);
        std::copy(m_gpu->posNrm.begin(), m_gpu->posNrm.end(), posNrm.begin());
        std::vector<float> connections(size_t(width) * size_t(connectionRows), 0.0f);
        std::copy(m_gpu->connections.begin(), m_gpu->connections.end(), connections.begin());

        const unsigned posNrmTexture = makeTexture(GL_RGBA32F, GL_RGBA, 2 * width, m_groupRows, posNrm.data(),
                                                   GL_NEAREST);
        const unsigned connectionTexture = makeTexture(GL_R32F, GL_RED, width, connectionRows, connections.data(),
                                                       GL_NEAREST);
        m_groupResult = makeTexture(GL_R32F, GL_RED, width, m_groupRows, nullptr, GL_NEAREST);
        m_textures.insert(m_textures.end(), {posNrmTexture, connectionTexture, m_groupResult});

        glGenFramebuffers(1, &m_groupFramebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, m_groupFramebuffer);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_groupResult, 0);
        glViewport(0, 0, width, m_groupRows);

        GLProgram& p = *m_groupProgram;
        p.bind();
        p.setFloat("flipy", 1.0f);
        p.setFloat("invh0", 1.0f / float(m_groupRows));
        p.setFloat("invw", 1.0f / float(width));
        p.setFloat("invh1", 1.0f / float(connectionRows));
        p.setFloat("curvmult", m_parameters.curvMult);
        p.setVec4("uvWindow", 0.0f, 0.0f, 1.0f, 1.0f);
        bindTexture(p, "smpposnrm", 0, posNrmTexture);
        bindTexture(p, "smpconn", 1, connectionTexture);
        newVertexArray();
        glDrawArrays(GL_TRIANGLES, 0, 3);
        glBindVertexArray(0);
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glActiveTexture(GL_TEXTURE0);
        GLProgram::release();
    }

    // World positions of the map tile's texels, unscaled, alpha 1 on the mesh.
    void drawPositions(GLTileTarget& target, const std::array<float, 4>& window)
    {
        target.bind();
        glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        GLProgram& p = *m_drawProgram;
        p.bind();
        p.setFloat("flipy", 1.0f);
        p.setFloat("nrmzero", 0.0f);
        p.setVec4("uvWindow", window[0], window[1], window[2], window[3]);
        glBindVertexArray(m_meshArray);
        glDrawElements(GL_TRIANGLES, GLsizei(m_mesh.triangles.size()), GL_UNSIGNED_INT, nullptr);
        glBindVertexArray(0);
        GLTileTarget::release();
    }

    const CurvatureMesh& m_mesh;
    const CurvatureGpuData* m_gpu;
    CurvatureParameters m_parameters;
    float m_scale;
    bool m_sameGrid;

    GLProgramSPtr m_drawProgram, m_groupProgram, m_pixelProgram, m_seamsProgram, m_spreadProgram;
    std::vector<unsigned> m_buffers, m_vertexArrays, m_textures;
    unsigned m_meshArray = 0, m_keyArray = 0, m_seamArray = 0;
    unsigned m_groupResult = 0, m_groupFramebuffer = 0;
    int m_groupRows = 1;
    std::array<GLint, 4> m_viewport = {0, 0, 0, 0};
};

} // namespace

QString CurvatureMapBaker::label() const
{
    return trBaking("Curvature (deprecated)");
}

QString CurvatureMapBaker::description() const
{
    return trBaking("This baker allows you to extract a curvature map that contains convexity/concavity "
                    "information of the mesh.");
}

std::string CurvatureMapBaker::identifier() const
{
    return "curvature";
}

bool CurvatureMapBaker::isAvailable(QString* why) const
{
    return checkGlVersion33(why);
}

Surfaces::SurfaceSPtr CurvatureMapBaker::process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene)
{
    using namespace LowPolyProperties;
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    m_timings = Timings();

    const PropertyBag& bag = properties();
    GLBakeParameters parameters = commonParameters(bag);
    CurvatureParameters curvature;
    const bool perVertex = value<int>(bag, "Curvature.PerVertex", 0) == 1;
    const bool seams = value<bool>(bag, "Curvature.EnableSeams", true);
    curvature.perPixel = perVertex ? 0 : 1;
    curvature.curvMult = value<float>(bag, "Curvature.CurvMult", 0.5f);
    curvature.seamsPower = seams ? value<float>(bag, "Curvature.SeamsPower", 1.0f) : 0.0f;

    const QSize size = outputSize();
    Surfaces::SurfaceSPtr output = makeLowPolyOutput(size);
    SurfaceTileGrid outputGrid;
    SurfaceTileGrid mapGrid;

    if (perVertex) {
        outputGrid = SurfaceTileGrid(output, lowPolyTileLimit, lowPolyTileLimit);
    } else if (scene) {
        // The per-pixel pass reads world-space normals: the named map as it
        // is, or turned to world space, or the mesh's own.
        Clock::time_point normalsStart = Clock::now();
        Surfaces::SurfaceSPtr map = loadSourceMap(context, path(bag, "Additional.NormalMap"));
        if (!map)
            map = NormalWSMapBaker::renderWorldSpaceNormals(context, scene.get(), parameters, size, nullptr);
        else if (!value<bool>(bag, "Additional.NormalWorldSpace", false))
            map = NormalWSMapBaker::renderWorldSpaceNormals(context, scene.get(), parameters,
                                                            QSize(int(map->width()), int(map->height())), map);
        // Texels just outside the islands must hold a normal for the
        // neighbour samples.
        if (!context.isCancelled())
            postProcess(map, 1, false);
        const bool large = output->width() > 1024 || output->height() > 1024 || map->width() > 1024
            || map->height() > 1024;
        buildSourceGrids(output, map, large ? 1 : 0, outputGrid, mapGrid);
        m_timings.normals = millisecondsSince(normalsStart);
    }

    if (scene && !context.isCancelled()) {
        Clock::time_point preparationStart = Clock::now();
        CollectMeshDataVisitor collect(parameters.uvSet);
        collect.walk(*scene);
        if (!collect.empty) {
            const float scale = curvatureScale(collect.mesh);
            std::optional<CurvatureGpuData> gpu;
            if (perVertex || seams)
                gpu = prepareCurvatureMesh(collect.mesh, perVertex, seams, scale);
            m_timings.preparation = millisecondsSince(preparationStart);

            Clock::time_point passesStart = Clock::now();
            const bool sameGrid = mapGrid.surface() && mapGrid.surface()->width() == output->width()
                && mapGrid.surface()->height() == output->height();
            CurvatureStage stage(collect.mesh, gpu ? &*gpu : nullptr, curvature, scale, sameGrid);
            const int columns = outputGrid.columns();
            const int rows = outputGrid.rowCount();
            if (stage.prepare() && columns > 0 && rows > 0) {
                forEachTile(context, trBaking("Curvature map computation"), columns, rows,
                            [&](int c, int r, int gridRow) {
                                const auto window = curvatureWindow(outputGrid.window(c, r), parameters.uvTile);
                                if (perVertex) {
                                    stage.drawTile(outputGrid.tile(c, gridRow), window, nullptr, {});
                                } else {
                                    const auto mapWindow = curvatureWindow(mapGrid.window(c, r), parameters.uvTile);
                                    stage.drawTile(outputGrid.tile(c, gridRow), window,
                                                   mapGrid.tile(c, gridRow).get(), mapWindow);
                                }
                            });
            }
            glFinish();
            m_timings.passes = millisecondsSince(passesStart);
        }
    }

    const Clock::time_point postStart = Clock::now();
    finishLowPolyMap(context, output, value<int>(bag, "Common.DilationWidth", 1),
                     value<bool>(bag, "Common.ApplyDiffusion", true));
    m_timings.postProcess = millisecondsSince(postStart);
    m_timings.total = millisecondsSince(start);
    return output;
}

} // namespace Ond::Baking
