#pragma once
// The OpenGL seed producer: draws the low mesh in UV space one raster tile
// at a time and hands each tile's positions, directions and mesh ids to the
// ray tracer. Read-back goes through a ring of four pixel-pack slots, so a
// slot is mapped three tiles after its read was issued and drawing never
// waits for the transfer. Kept between bakes with its draw lists; runs on
// the thread that holds the GL context.

#include "baking/detail/MeshDrawList.h"
#include "baking/detail/RasterizerBase.h"
#include "baking/lowpoly/GLProgram.h"

#include <array>
#include <cstdint>

namespace Ond::Baking {

class RasterizerGL : public RasterizerBase
{
public:
    enum class Variant { Plain, Smooth, Skew, Cage, PositionOnly };
    static constexpr int SlotCount = 4;

    RasterizerGL() = default;
    ~RasterizerGL() override;
    RasterizerGL(const RasterizerGL&) = delete;
    RasterizerGL& operator=(const RasterizerGL&) = delete;

    // Throws ErrorCode::MissingInputData, after one warning per missing
    // attribute, when the low mesh or the cage lacks positions, normals or
    // the UV set.
    void init(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result) override;
    void finish(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result) override;
    void rasterize(const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result,
                   RaytracerBase& raytracer) override;

    // The program that writes the directions: skew, then cage, then smooth.
    static Variant mainVariant(uint32_t flags);
    // The macro put in front of the shared text, empty for the plain one.
    static const char* variantMacro(Variant variant);
    // `uvWindow` of raster tile (tileX, tileY): the tile's part of the UV
    // square maps to clip space by uv * zw - xy. Tile row 0 is the top.
    static std::array<float, 4> tileWindow(const DetailBakeJob& job, const BakeTiling& tiling, unsigned tileX,
                                           unsigned tileY);

    const MeshDrawList& lowDrawList() const { return m_low; }
    const MeshDrawList& cageDrawList() const { return m_cage; }

private:
    struct Slot
    {
        unsigned positions = 0;
        unsigned directions = 0;
        unsigned ids = 0;
        unsigned tileX = 0;
        unsigned tileY = 0;
        bool pending = false;
    };

    void createSlots(const BakeTiling& tiling);
    void releaseSlots();
    void drain(Slot& slot, const DetailBakeJob& job, const BakeTiling& tiling, BakeResult& result,
               RaytracerBase& raytracer);
    GLProgramSPtr program(Variant variant);

    std::array<Slot, SlotCount> m_slots{};
    unsigned m_slotWidth = 0;
    unsigned m_slotHeight = 0;
    std::array<GLProgramSPtr, 5> m_programs{};
    MeshDrawList m_low;
    MeshDrawList m_cage;
};

} // namespace Ond::Baking
