#pragma once
// The plain record a low-poly bake fills and hands to its draw passes.

#include <array>
#include <cstdint>

namespace Ond::Baking {

struct GLBakeParameters
{
    bool invertGreen = false;
    uint32_t uvSet = 0;
    // Selection bits a mesh must all have to be drawn; all ones: no filter.
    uint32_t meshMask = 2;
    // Current output tile: origin, then how many tiles fit in the map.
    std::array<float, 4> uvWindow = {0.0f, 0.0f, 1.0f, 1.0f};
    // The same for the tile of the source map.
    std::array<float, 4> sourceWindow = {0.0f, 0.0f, 1.0f, 1.0f};
    // Whole-number offset of the UV square that is baked.
    std::array<int32_t, 2> uvTile = {0, 0};
    uint32_t bakeType = 0;
    // Report each finished tile to the context.
    bool tileCallback = false;
    int32_t sceneCacheSlot = 0;

    // 0 normal, 1 tangent, 2 binormal; other values leave the type as it is.
    void setBakeType(uint32_t type)
    {
        if (type <= 2)
            bakeType = type;
    }

    // The uvWindow the shaders get: maps the tile to clip space by
    // (uv - xy) * zw.
    std::array<float, 4> shaderUvWindow() const
    {
        return {uvWindow[0] + float(uvTile[0]) + 1.0f / (2.0f * uvWindow[2]),
                uvWindow[1] + float(uvTile[1]) + 1.0f / (2.0f * uvWindow[3]), 2.0f * uvWindow[2],
                2.0f * uvWindow[3]};
    }
    // The same map written as uv * zw - xy.
    std::array<float, 4> shaderUvWindowProduct() const
    {
        return {(float(uvTile[0]) + uvWindow[0]) * 2.0f * uvWindow[2] + 1.0f,
                (float(uvTile[1]) + uvWindow[1]) * 2.0f * uvWindow[3] + 1.0f, 2.0f * uvWindow[2],
                2.0f * uvWindow[3]};
    }
    // Maps the source tile to 0..1 by (uv - xy) * zw.
    std::array<float, 4> shaderSourceWindow() const
    {
        return {sourceWindow[0] + float(uvTile[0]), sourceWindow[1] + float(uvTile[1]), sourceWindow[2],
                sourceWindow[3]};
    }
};

// Selection bits of a part from its render flags: 1 for bit 30 (part of the
// scene), 2 for bit 31 (selected).
constexpr uint32_t selectionMaskFromRenderFlags(int flags)
{
    return ((uint32_t(flags) >> 30) & 1u) | (((uint32_t(flags) >> 31) & 1u) << 1);
}

// The draw filter.
constexpr bool passesMeshMask(uint32_t selectionMask, uint32_t mask)
{
    return mask == 0xFFFFFFFFu || (selectionMask & mask) == mask;
}

} // namespace Ond::Baking
