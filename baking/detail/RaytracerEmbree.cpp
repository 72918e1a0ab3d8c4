#include "baking/detail/RaytracerEmbree.h"

#include "baking/AbstractBakingContext.h"
#include "baking/detail/CurvatureMesh.h"
#include "program/ConsoleProgress.h"

#include <QThread>

#include <algorithm>
#include <new>
#include <optional>

namespace Ond::Baking {

RaytracerEmbree::RaytracerEmbree() = default;

RaytracerEmbree::~RaytracerEmbree()
{
    for (Slot& slot : m_slots) {
        if (!slot.busy)
            continue;
        slot.reduced.waitForFinished();
        slot.plain.waitForFinished();
    }
}

void RaytracerEmbree::init(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result)
{
    const StripJobFactory factory = stripKernel(job.kind);
    if (!factory)
        throw ErrorCode::InternalError;
    if (!result.surface || result.surface->isEmpty() || tiling.tileWidth == 0 || tiling.tileHeight == 0)
        throw ErrorCode::InternalError;

    const EmbreeSceneKey key = EmbreeSceneKey::of(job);
    const bool curvatureMissing =
        job.kind == BakeJobKind::Curvature && m_scene && m_scene->vertexCurvature().empty();
    // Per-vertex curvature traces the welded mesh; no other kind may.
    const bool welded = job.kind == BakeJobKind::Curvature;
    if (!m_scene || !m_haveKey || key != m_key || curvatureMissing || welded != m_sceneWelded) {
        m_scene.reset();
        m_mesh.reset();
        m_haveKey = false;
        std::optional<Core::ConsoleProgressScope> stage(std::in_place, QStringLiteral("Preparing high mesh"));
        if (job.highScene) {
            m_mesh = std::shared_ptr<GrabbedMesh>(
                grabMesh(*job.highScene, job.flags, job.kind, job.colorSource, job.highUvSet).release());
        } else {
            m_mesh = std::make_shared<GrabbedMesh>();
        }
        if (welded)
            m_mesh = weldGrabbedMesh(*m_mesh);
        m_sceneWelded = welded;
        stage.emplace(QStringLiteral("Building ray tracing scene"));
        m_scene = std::make_unique<EmbreeScene>(m_mesh, buildQualityFor(rayBudget(job), m_mesh->triangleCount));
        m_key = key;
        m_haveKey = true;
        ++m_sceneBuilds;
    }

    m_job = factory(job, *m_scene);

    const unsigned stripHeight = std::min(tiling.tileHeight, MaxStripHeight);
    m_stripRows.clear();
    for (unsigned row = 0; row < tiling.tileHeight; row += stripHeight)
        m_stripRows.push_back(row);

    const size_t samples = size_t(tiling.tileWidth) * tiling.tileHeight;
    try {
        for (Slot& slot : m_slots) {
            slot.origins.resize(samples * 4);
            slot.directions.resize(samples * 4);
            slot.ids.resize((job.flags & BakeJobFlags::FilterPrimaryById) ? samples : 0);
            slot.busy = false;
        }
    } catch (const std::bad_alloc&) {
        throw ErrorCode::OutOfMemory;
    }

    m_tracker.reset(tiling, result.surface, job.context);

    m_input = StripInput();
    m_input.target = result.surface.data();
    m_input.scene = m_scene.get();
    m_input.tileWidth = tiling.tileWidth;
    m_input.tileHeight = tiling.tileHeight;
    m_input.stripHeight = stripHeight;
    m_input.subSamples = std::max(job.subSamples, 1u);
    m_input.maxHeight = job.maxHeight;
    m_input.tfar = job.maxHeight + job.maxDepth + 1.1920929e-07f;
    m_input.cullMode = (job.flags & BakeJobFlags::IgnoreBackface) ? HitContext::CullAll : HitContext::CullNone;
}

bool RaytracerEmbree::slotFinished(const Slot& slot) const
{
    return m_job->reduces() ? slot.reduced.isFinished() : slot.plain.isFinished();
}

void RaytracerEmbree::collect(Slot& slot, BakeResult& result)
{
    if (m_job->reduces()) {
        slot.reduced.waitForFinished();
        const MinMaxPair range = slot.reduced.result();
        result.rangeMin = std::min(result.rangeMin, range.min);
        result.rangeMax = std::max(result.rangeMax, range.max);
        slot.reduced = QFuture<MinMaxPair>();
    } else {
        slot.plain.waitForFinished();
        slot.plain = QFuture<void>();
    }
    slot.busy = false;
    m_tracker.tileDone(slot.tileX, slot.tileY);
}

void RaytracerEmbree::traceTile(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result,
                                const RayTile& rayTile)
{
    (void)tiling;
    if (!m_job || !rayTile.origins || !rayTile.directions)
        return;
    Slot* free = nullptr;
    for (;;) {
        for (Slot& slot : m_slots)
            if (slot.busy && slotFinished(slot))
                collect(slot, result);
        for (Slot& slot : m_slots) {
            if (!slot.busy) {
                free = &slot;
                break;
            }
        }
        if (free)
            break;
        if (job.context && job.context->isCancelled())
            return;
        // Block on the oldest tile rather than spin: on a busy machine a
        // spinning feeder takes a core from the strips. Qt may run queued
        // strips on this thread meanwhile.
        Slot* oldest = nullptr;
        for (Slot& slot : m_slots)
            if (!oldest || slot.sequence < oldest->sequence)
                oldest = &slot;
        collect(*oldest, result);
    }

    const size_t samples = size_t(m_input.tileWidth) * m_input.tileHeight;
    std::copy(rayTile.origins, rayTile.origins + samples * 4, free->origins.begin());
    std::copy(rayTile.directions, rayTile.directions + samples * 4, free->directions.begin());
    const bool byId = rayTile.ids && !free->ids.empty();
    if (byId)
        std::copy(rayTile.ids, rayTile.ids + samples, free->ids.begin());
    free->tileX = rayTile.tileX;
    free->tileY = rayTile.tileY;
    free->busy = true;
    free->sequence = m_sequence++;

    StripInput input = m_input;
    input.origins = free->origins.data();
    input.directions = free->directions.data();
    input.ids = byId ? free->ids.data() : nullptr;
    input.filterById = byId;
    input.tileX = rayTile.tileX;
    input.tileY = rayTile.tileY;
    if (m_job->reduces())
        free->reduced = m_job->startReduced(input, m_stripRows);
    else
        free->plain = m_job->startPlain(input, m_stripRows);
}

void RaytracerEmbree::waitAll(BakeResult& result)
{
    for (Slot& slot : m_slots)
        if (slot.busy)
            collect(slot, result);
}

void RaytracerEmbree::finish(const DetailBakeJob&, const BakeTiling&, BakeResult& result)
{
    if (m_job)
        waitAll(result);
    // The kernel's state belongs to this bake; the scene stays for the next.
    m_job.reset();
}

} // namespace Ond::Baking
