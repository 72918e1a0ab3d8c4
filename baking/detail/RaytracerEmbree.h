#pragma once
// The processor backend: the high mesh grabbed and built into an Embree
// scene kept between bakes, and four tile slots whose strips run on the
// global thread pool while the next tiles are rasterized.

#include "baking/detail/EmbreeScene.h"
#include "baking/detail/RaytracerBase.h"
#include "baking/detail/StripJob.h"
#include "baking/detail/TileProgressTracker.h"

#include <QFuture>

#include <array>
#include <memory>
#include <vector>

namespace Ond::Baking {

class RaytracerEmbree : public RaytracerBase
{
public:
    static constexpr unsigned SlotCount = 4;
    static constexpr unsigned MaxStripHeight = 16;

    RaytracerEmbree();
    ~RaytracerEmbree() override;

    // Throws ErrorCode: 1 out of memory, 3 missing attributes, 4 no kernel.
    void init(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result) override;
    void finish(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result) override;
    void traceTile(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result,
                   const RayTile& rayTile) override;

    // Times the scene was built; a bake with the same key reuses it.
    unsigned sceneBuildCount() const { return m_sceneBuilds; }
    const EmbreeScene* scene() const { return m_scene.get(); }
    const std::vector<unsigned>& stripRows() const { return m_stripRows; }
    const TileProgressTracker& tracker() const { return m_tracker; }

private:
    struct Slot
    {
        std::vector<float> origins;
        std::vector<float> directions;
        std::vector<uint32_t> ids;
        unsigned tileX = 0, tileY = 0;
        bool busy = false;
        uint64_t sequence = 0;
        QFuture<MinMaxPair> reduced;
        QFuture<void> plain;
    };

    bool slotFinished(const Slot& slot) const;
    void collect(Slot& slot, BakeResult& result);
    void waitAll(BakeResult& result);

    std::shared_ptr<GrabbedMesh> m_mesh;
    std::unique_ptr<EmbreeScene> m_scene;
    EmbreeSceneKey m_key;
    bool m_haveKey = false;
    bool m_sceneWelded = false;
    unsigned m_sceneBuilds = 0;

    std::unique_ptr<StripJobBase> m_job;
    std::vector<unsigned> m_stripRows;
    std::array<Slot, SlotCount> m_slots;
    TileProgressTracker m_tracker;
    StripInput m_input;
    uint64_t m_sequence = 0;
};

} // namespace Ond::Baking
