#include "baking/detail/RasterizerGL.h"

#include "baking/AbstractBakingContext.h"
#include "baking/detail/RaytracerBase.h"
#include "baking/lowpoly/GLSLSource.h"
#include "baking/lowpoly/GLTileTarget.h"
#include "baking/lowpoly/SurfaceTileGrid.h"
#include "program/LogChannel.h"

#include <GL/glew.h>

#include <algorithm>
#include <string>
#include <string_view>

std::string_view detailShaderSource(std::string_view name);

namespace Ond::Baking {

namespace {

// The main target: positions and directions as RGBA float, mesh ids as
// RGBA 8-bit, on draw buffers 0, 1, 2.
class SeedTarget
{
public:
    SeedTarget(int width, int height) : m_width(width), m_height(height)
    {
        const GLenum formats[3] = {GL_RGBA32F, GL_RGBA32F, GL_RGBA8};
        const GLenum types[3] = {GL_FLOAT, GL_FLOAT, GL_UNSIGNED_BYTE};
        glGenTextures(3, m_textures);
        glGenFramebuffers(1, &m_framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
        for (int i = 0; i < 3; ++i) {
            glBindTexture(GL_TEXTURE_2D, m_textures[i]);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
            glTexImage2D(GL_TEXTURE_2D, 0, GLint(formats[i]), width, height, 0, GL_RGBA, types[i], nullptr);
            glFramebufferTexture2D(GL_FRAMEBUFFER, GLenum(GL_COLOR_ATTACHMENT0 + i), GL_TEXTURE_2D, m_textures[i], 0);
        }
        glBindTexture(GL_TEXTURE_2D, 0);
        m_complete = glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
    }
    ~SeedTarget()
    {
        glDeleteFramebuffers(1, &m_framebuffer);
        glDeleteTextures(3, m_textures);
    }
    SeedTarget(const SeedTarget&) = delete;
    SeedTarget& operator=(const SeedTarget&) = delete;

    bool isComplete() const { return m_complete; }
    void bind() const
    {
        static const GLenum buffers[3] = {GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1, GL_COLOR_ATTACHMENT2};
        glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
        glDrawBuffers(3, buffers);
        glViewport(0, 0, m_width, m_height);
    }

private:
    int m_width;
    int m_height;
    GLuint m_framebuffer = 0;
    GLuint m_textures[3] = {0, 0, 0};
    bool m_complete = false;
};

// Leaves the GL state as the other passes expect it, also when the ray
// tracer throws.
struct StateRestore
{
    ~StateRestore()
    {
        glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glActiveTexture(GL_TEXTURE1);
        glBindTexture(GL_TEXTURE_2D, 0);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, 0);
        glBindVertexArray(0);
        GLProgram::release();
    }
};

void readInto(GLuint buffer, GLenum attachment, int width, int height, GLenum type)
{
    glBindBuffer(GL_PIXEL_PACK_BUFFER, buffer);
    glReadBuffer(attachment);
    glReadPixels(0, 0, width, height, GL_RGBA, type, nullptr);
}

const void* mapRead(GLuint buffer, size_t bytes)
{
    glBindBuffer(GL_PIXEL_PACK_BUFFER, buffer);
    return glMapBufferRange(GL_PIXEL_PACK_BUFFER, 0, GLsizeiptr(bytes), GL_MAP_READ_BIT);
}

void unmap(GLuint buffer)
{
    glBindBuffer(GL_PIXEL_PACK_BUFFER, buffer);
    glUnmapBuffer(GL_PIXEL_PACK_BUFFER);
}

const std::string kUvWindow = "uvWindow";
const std::string kCagePosTex = "cagePosTex";
const std::string kSkewTex = "skew_tex";
const std::string kInvertSkew = "invertSkew";

} // namespace

RasterizerGL::~RasterizerGL()
{
    releaseSlots();
}

RasterizerGL::Variant RasterizerGL::mainVariant(uint32_t flags)
{
    if (flags & BakeJobFlags::UseSkew)
        return Variant::Skew;
    if (flags & BakeJobFlags::UseCage)
        return Variant::Cage;
    if (flags & BakeJobFlags::SmoothNormals)
        return Variant::Smooth;
    return Variant::Plain;
}

const char* RasterizerGL::variantMacro(Variant variant)
{
    switch (variant) {
    case Variant::Smooth: return "USE_NORMAL_SMOOTH";
    case Variant::Skew: return "USE_SKEW_MAP";
    case Variant::Cage: return "USE_CAGE";
    case Variant::PositionOnly: return "POS_ONLY";
    case Variant::Plain: break;
    }
    return "";
}

std::array<float, 4> RasterizerGL::tileWindow(const DetailBakeJob& job, const BakeTiling& tiling, unsigned tileX,
                                              unsigned tileY)
{
    const float w = float(job.width);
    const float h = float(job.height);
    const float s = float(std::max(job.subSamples, 1u));
    const float tw = float(tiling.tileWidth);
    const float th = float(tiling.tileHeight);
    const float sx = w * 2.0f * s / tw;
    const float sy = h * 2.0f * s / th;
    const float ox = (tw * float(tileX) / (s * w) + float(job.uvTile.u)) * sx + 1.0f;
    const float oy = (th * float(tiling.rasterTilesY - tileY - 1) / (s * h) + float(job.uvTile.v)) * sy + 1.0f;
    return {ox, oy, sx, sy};
}

GLProgramSPtr RasterizerGL::program(Variant variant)
{
    GLProgramSPtr& slot = m_programs[size_t(variant)];
    if (slot)
        return slot;
    std::string define;
    if (*variantMacro(variant))
        define = std::string("#define ") + variantMacro(variant) + " 1\n";
    const std::string vertex = GLSLSource::preamble(GLSLSource::Stage::Vertex) + define
                               + std::string(detailShaderSource("seeds.vert.glsl"));
    const std::string fragment = GLSLSource::preamble(GLSLSource::Stage::Fragment) + define
                                 + std::string(detailShaderSource("seeds.frag.glsl"));
    slot = GLProgramCache::instance().program(vertex, fragment);
    return slot;
}

void RasterizerGL::createSlots(const BakeTiling& tiling)
{
    if (m_slots[0].positions && m_slotWidth == tiling.tileWidth && m_slotHeight == tiling.tileHeight) {
        for (Slot& slot : m_slots)
            slot.pending = false;
        return;
    }
    releaseSlots();
    const size_t samples = size_t(tiling.tileWidth) * tiling.tileHeight;
    for (Slot& slot : m_slots) {
        GLuint buffers[3];
        glGenBuffers(3, buffers);
        const size_t bytes[3] = {samples * 16, samples * 16, samples * 4};
        for (int i = 0; i < 3; ++i) {
            glBindBuffer(GL_PIXEL_PACK_BUFFER, buffers[i]);
            glBufferData(GL_PIXEL_PACK_BUFFER, GLsizeiptr(bytes[i]), nullptr, GL_STREAM_READ);
        }
        slot = Slot{buffers[0], buffers[1], buffers[2], 0, 0, false};
    }
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    m_slotWidth = tiling.tileWidth;
    m_slotHeight = tiling.tileHeight;
}

void RasterizerGL::releaseSlots()
{
    for (Slot& slot : m_slots) {
        if (slot.positions) {
            const GLuint buffers[3] = {slot.positions, slot.directions, slot.ids};
            glDeleteBuffers(3, buffers);
        }
        slot = Slot{};
    }
    m_slotWidth = 0;
    m_slotHeight = 0;
}

void RasterizerGL::init(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult&)
{
    createSlots(tiling);

    bool missing = false;
    if (job.lowScene) {
        const MeshDrawList::Key key = MeshDrawList::keyOf(*job.lowScene, job.uvSet, job.flags);
        if (!m_low.matches(key))
            m_low.build(*job.lowScene, key,
                        (job.flags & (BakeJobFlags::SmoothNormals | BakeJobFlags::UseSkew)) != 0);
        if (m_low.isMissingData()) {
            m_low.reportMissing(QStringLiteral("low poly "));
            missing = true;
        }
    } else {
        m_low.release();
    }
    if (job.cageScene) {
        const MeshDrawList::Key key = MeshDrawList::keyOf(*job.cageScene, job.uvSet, job.flags);
        // The cage is loaded with its UV sets only and drawn by position: it
        // needs no normals.
        if (!m_cage.matches(key))
            m_cage.build(*job.cageScene, key, false, false);
        if (m_cage.isMissingData()) {
            m_cage.reportMissing(QStringLiteral("cage "));
            missing = true;
        }
    } else {
        m_cage.release();
    }
    if (missing)
        throw ErrorCode::MissingInputData;

    if (!program(mainVariant(job.flags)) || ((job.flags & BakeJobFlags::UseCage) && !program(Variant::PositionOnly)))
        throw ErrorCode::InternalError;
}

void RasterizerGL::finish(const DetailBakeJob&, const BakeTiling&, BakeResult&)
{
    releaseSlots();
}

void RasterizerGL::drain(Slot& slot, const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result,
                         RaytracerBase& raytracer)
{
    if (!slot.pending)
        return;
    slot.pending = false;
    const size_t samples = size_t(tiling.tileWidth) * tiling.tileHeight;
    const bool withIds = (job.flags & BakeJobFlags::FilterPrimaryById) != 0;
    RayTile tile;
    tile.tileX = slot.tileX;
    tile.tileY = slot.tileY;
    tile.origins = static_cast<const float*>(mapRead(slot.positions, samples * 16));
    tile.directions = static_cast<const float*>(mapRead(slot.directions, samples * 16));
    if (withIds)
        tile.ids = static_cast<const uint32_t*>(mapRead(slot.ids, samples * 4));
    const auto unmapAll = [&] {
        unmap(slot.positions);
        unmap(slot.directions);
        if (withIds)
            unmap(slot.ids);
    };
    if (!tile.origins || !tile.directions || (withIds && !tile.ids)) {
        unmapAll();
        Core::bakersChannel().error(QStringLiteral("Read-back of the ray seeds failed."));
        throw ErrorCode::InternalError;
    }
    try {
        raytracer.traceTile(job, tiling, result, tile);
    } catch (...) {
        unmapAll();
        throw;
    }
    unmapAll();
}

void RasterizerGL::rasterize(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result,
                             RaytracerBase& raytracer)
{
    const RasterTileOrder order(tiling);
    if (order.count() == 0)
        return;
    const unsigned nx = tiling.rasterTilesX;
    const unsigned ny = tiling.rasterTilesY;
    const int tw = int(tiling.tileWidth);
    const int th = int(tiling.tileHeight);
    if (!m_slots[0].positions || m_slotWidth != tiling.tileWidth || m_slotHeight != tiling.tileHeight)
        createSlots(tiling);

    const GLProgramSPtr main = program(mainVariant(job.flags));
    const bool useCage = (job.flags & BakeJobFlags::UseCage) != 0;
    const GLProgramSPtr positionOnly = useCage ? program(Variant::PositionOnly) : nullptr;
    if (!main || (useCage && !positionOnly))
        throw ErrorCode::InternalError;
    const bool withIds = (job.flags & BakeJobFlags::FilterPrimaryById) != 0;

    // One skew tile per raster tile, in the same grid.
    const bool useSkew = (job.flags & BakeJobFlags::UseSkew) && job.skewSurface && !job.skewSurface->isEmpty();
    SurfaceTileGrid skewGrid;
    if (useSkew)
        skewGrid = SurfaceTileGrid(job.skewSurface, std::max(1, int(job.skewSurface->width() / nx)),
                                   std::max(1, int(job.skewSurface->height() / ny)));
    const float invertSkew = (job.flags & BakeJobFlags::InvertSkew) ? 1.0f : 0.0f;

    StateRestore restore;
    SeedTarget target(tw, th);
    std::unique_ptr<GLTileTarget> cageTarget;
    if (useCage)
        cageTarget = std::make_unique<GLTileTarget>(tw, th);
    if (!target.isComplete() || (cageTarget && !cageTarget->isValid())) {
        Core::bakersChannel().error(QStringLiteral("Framebuffer of the ray seeds is incomplete."));
        throw ErrorCode::InternalError;
    }
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glDisable(GL_BLEND);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);

    unsigned i = 0;
    for (; i < order.count(); ++i) {
        if (job.context && job.context->isCancelled())
            return;
        unsigned tileX = 0, tileY = 0;
        order.tile(i, tileX, tileY);

        Slot& slot = m_slots[i % SlotCount];
        drain(slot, job, tiling, result, raytracer);

        const std::array<float, 4> window = tileWindow(job, tiling, tileX, tileY);
        if (useCage) {
            cageTarget->bind();
            glDrawBuffer(GL_COLOR_ATTACHMENT0);
            glClear(GL_COLOR_BUFFER_BIT);
            positionOnly->bind();
            positionOnly->setVec4(kUvWindow, window[0], window[1], window[2], window[3]);
            m_cage.draw(*positionOnly, true);
        }

        target.bind();
        glClear(GL_COLOR_BUFFER_BIT);
        main->bind();
        main->setVec4(kUvWindow, window[0], window[1], window[2], window[3]);
        if (useCage) {
            glActiveTexture(GL_TEXTURE1);
            glBindTexture(GL_TEXTURE_2D, cageTarget->texture());
            main->setInt(kCagePosTex, 1);
        }
        unsigned skewTexture = 0;
        if (useSkew && skewGrid.rowCount() > 0) {
            const int column = std::min(int(tileX), skewGrid.columns() - 1);
            const int row = std::min(int(tileY), skewGrid.rowCount() - 1);
            skewTexture = uploadTexture(*skewGrid.tile(column, row), true, true);
            glActiveTexture(GL_TEXTURE0);
            glBindTexture(GL_TEXTURE_2D, skewTexture);
            main->setInt(kSkewTex, 0);
            main->setFloat(kInvertSkew, invertSkew);
        }
        m_low.draw(*main, false);
        if (skewTexture) {
            glBindTexture(GL_TEXTURE_2D, 0);
            deleteTexture(skewTexture);
        }

        readInto(slot.positions, GL_COLOR_ATTACHMENT0, tw, th, GL_FLOAT);
        readInto(slot.directions, GL_COLOR_ATTACHMENT1, tw, th, GL_FLOAT);
        if (withIds)
            readInto(slot.ids, GL_COLOR_ATTACHMENT2, tw, th, GL_UNSIGNED_BYTE);
        glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
        slot.tileX = tileX;
        slot.tileY = tileY;
        slot.pending = true;
    }

    // Oldest first, so the tracer sees the tiles in the order they were drawn.
    for (unsigned k = 0; k < SlotCount; ++k)
        drain(m_slots[(i + k) % SlotCount], job, tiling, result, raytracer);
}

} // namespace Ond::Baking
