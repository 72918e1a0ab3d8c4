#pragma once
// A flat high mesh, a seed rasterizer that needs no GL, a recording baking
// context and two small kernels for the ray engine tests.

#include "baking/AbstractBakingContext.h"
#include "baking/detail/RasterizerBase.h"
#include "baking/detail/RaytracerBase.h"
#include "baking/detail/StripJob.h"
#include "program/LogManager.h"
#include "scene/graph/Entity.h"
#include "scene/graph/LocationComponent.h"
#include "scene/graph/Mesh.h"
#include "scene/graph/MeshDisplayComponent.h"
#include "scene/graph/Scene.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace RayEngineTest {

using namespace Ond::SceneGraph;
using namespace Ond::Baking;

// A square plate in the z = `z` plane, half-size `half`, vertex normals +z.
// `clockwise` writes the triangles against their normals.
inline Entity::SPtr plate(const QString& name, float z = 0.0f, float half = 10.0f, bool clockwise = false,
                          bool withNormals = true)
{
    std::vector<Eigen::Vector3f> p = {{-half, -half, z}, {half, -half, z}, {half, half, z}, {-half, half, z}};
    std::vector<Eigen::Vector3f> n(4, Eigen::Vector3f(0, 0, 1));
    std::vector<uint32_t> idx = clockwise ? std::vector<uint32_t>{0, 2, 1, 0, 3, 2}
                                          : std::vector<uint32_t>{0, 1, 2, 0, 2, 3};
    std::vector<SubMesh> subs;
    subs.emplace_back(makeBuffer(std::move(idx)), PrimitiveType::Triangles, 3, nullptr);
    auto data = std::make_shared<Mesh::Data>(makeBuffer(std::move(p)),
                                             withNormals ? makeBuffer(std::move(n)) : nullptr, nullptr, nullptr,
                                             nullptr, std::vector<Vec2BufferUPtr>(), std::move(subs));
    auto mesh = std::make_shared<Mesh>(data, name);
    return std::make_shared<Entity>(name, std::make_unique<LocationComponent>(),
                                    std::make_unique<MeshDisplayComponent>(mesh));
}

inline SceneSPtr sceneOf(std::vector<Entity::SPtr> entities)
{
    return std::make_shared<Scene>(std::move(entities));
}

class RecordingContext : public AbstractBakingContext
{
public:
    struct Output
    {
        int x, y;
        unsigned width, height;
        float firstRed;
    };

    std::string tangentPluginName() const override { return {}; }
    bool isCancelled() const override { return cancelled; }
    bool perFragmentBinormal() const override { return false; }
    bool loadSurface(const QString&, Ond::Surfaces::SurfaceSPtr&) override { return false; }
    void tileOutput(const Ond::Surfaces::SurfaceSPtr& surface, int cellX, int cellY, bool) override
    {
        outputs.push_back({cellX, cellY, surface->width(), surface->height(), surface->pixel<float>(0, 0)[0]});
    }
    void progressBegin(const QString& name) override { progressNames << name; }
    void progressValue(double fraction) override { progress.push_back(fraction); }
    void progressEnd() override { ++progressEnds; }
    void progressText(const QString&) override {}
    bool gpuAllowed() const override { return true; }
    bool forceDxr() const override { return false; }
    bool forceOptix() const override { return false; }

    bool cancelled = false;
    std::vector<Output> outputs;
    QStringList progressNames;
    std::vector<double> progress;
    int progressEnds = 0;
};

// Seeds every sample of the map on a regular grid over the plate: the
// supersampled map's (x, y) sits at (x * step, y * step, z), direction D.
// A sample is left uncovered when `covered` says so.
class GridRasterizer : public RasterizerBase
{
public:
    float step = 0.01f;
    float z = 0.0f;
    float direction[3] = {0.0f, 0.0f, 1.0f};
    std::function<bool(unsigned, unsigned)> covered = [](unsigned, unsigned) { return true; };
    std::function<uint32_t(unsigned, unsigned)> id;
    std::vector<std::pair<unsigned, unsigned>> order;

    void rasterize(const DetailBakeJob& job, const BakeTiling& t, BakeResult& result, RaytracerBase& tracer) override
    {
        const unsigned nx = t.rasterTilesX, ny = t.rasterTilesY, bx = t.outputBlocksX, by = t.outputBlocksY;
        const unsigned cx = nx / bx, cy = ny / by;
        std::vector<float> origins(size_t(t.tileWidth) * t.tileHeight * 4);
        std::vector<float> directions(origins.size());
        std::vector<uint32_t> ids(size_t(t.tileWidth) * t.tileHeight);
        for (unsigned i = 0; i < nx * ny; ++i) {
            if (job.context && job.context->isCancelled())
                return;
            const unsigned block = i / (cx * cy), within = i % (cx * cy);
            RayTile tile;
            tile.tileX = (block % bx) * cx + within % cx;
            tile.tileY = (block / bx) * cy + within / cx;
            order.emplace_back(tile.tileX, tile.tileY);
            for (unsigned y = 0; y < t.tileHeight; ++y) {
                for (unsigned x = 0; x < t.tileWidth; ++x) {
                    const size_t k = size_t(y) * t.tileWidth + x;
                    const unsigned gx = tile.tileX * t.tileWidth + x, gy = tile.tileY * t.tileHeight + y;
                    const bool on = covered(gx, gy);
                    origins[k * 4 + 0] = float(gx) * step;
                    origins[k * 4 + 1] = float(gy) * step;
                    origins[k * 4 + 2] = z;
                    origins[k * 4 + 3] = on ? 1.0f : 0.0f;
                    for (int c = 0; c < 3; ++c)
                        directions[k * 4 + c] = direction[c];
                    directions[k * 4 + 3] = 1.0f;
                    ids[k] = id ? id(gx, gy) : 0u;
                }
            }
            tile.origins = origins.data();
            tile.directions = directions.data();
            tile.ids = (job.flags & BakeJobFlags::FilterPrimaryById) ? ids.data() : nullptr;
            tracer.traceTile(job, t, result, tile);
            // The tracer must have copied: scribble over the buffers.
            std::fill(origins.begin(), origins.end(), -1.0f);
        }
    }
};

// Mean hit distance in r, mean global sample x and y in g and b.
struct DistanceKernel
{
    static constexpr TexelClose close = TexelClose::Color;
    static constexpr bool reduces = true;
    DistanceKernel(const DetailBakeJob&, const EmbreeScene&) {}
    void hit(const PrimaryHit& h, float* acc) const
    {
        acc[0] += h.t;
        acc[1] += float(h.sampleX);
        acc[2] += float(h.sampleY);
    }
};

// Hit fraction of the texel's samples.
struct CoverageKernel
{
    static constexpr TexelClose close = TexelClose::Mask;
    static constexpr bool reduces = false;
    CoverageKernel(const DetailBakeJob&, const EmbreeScene&) {}
    void hit(const PrimaryHit&, float*) const {}
};

// The negated seed direction as a unit vector, encoded.
struct DirectionKernel
{
    static constexpr TexelClose close = TexelClose::Direction;
    static constexpr bool reduces = false;
    DirectionKernel(const DetailBakeJob&, const EmbreeScene&) {}
    void hit(const PrimaryHit& h, float* acc) const
    {
        for (int c = 0; c < 3; ++c)
            acc[c] -= h.direction[c] * 3.0f;
    }
};

// Puts a kernel in the table for one kind for the length of a test.
class ScopedKernel
{
public:
    ScopedKernel(BakeJobKind kind, StripJobFactory factory) : m_kind(kind), m_previous(stripKernel(kind))
    {
        registerStripKernel(kind, factory);
    }
    ~ScopedKernel() { registerStripKernel(m_kind, m_previous); }

private:
    BakeJobKind m_kind;
    StripJobFactory m_previous;
};

class LogCollector : public Ond::Core::ILogDelegate
{
public:
    // "level|message": the channel's name is given by the program at start-up.
    void log(int level, const QString&, const QString& message) override
    {
        lines << QString::number(level) + QLatin1Char('|') + message;
    }
    QStringList lines;
};

} // namespace RayEngineTest
