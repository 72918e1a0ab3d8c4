#pragma once
// The GL stage of the occlusion by surface elements: the tree packed in
// textures, the passes that solve how much each element is itself occluded,
// and the resumable walk of every texel of a tile. All GL objects of a bake
// live here, so the tree's textures exist once while the tiles pass. The
// context must be current for the whole life of the object.

#include "baking/lowpoly/SurfaceElementTree.h"
#include "image/Surface.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace Ond::Baking {

class GLProgram;

struct SeAOParameters
{
    uint32_t occlusionPasses = 5;
    // How far, in element areas, a subtree must be to count as one disc.
    float epsi = 8.0f;
    float errorBias = 0.6f;
    float distanceFade = 0.01f;
    // Power of an element's own visibility on its exact triangle.
    float triFade = 0.5f;

    // Passes and epsi of quality 0 (low) to 3 (very high); out of range
    // takes the nearest.
    static SeAOParameters forQuality(int quality);
    // The bias the walk works with: 10^(min(errorBias, 1) * 9 - 9).
    float errbias() const;
};

// What one tile's passes did.
struct SeAOTileStats
{
    int passes = 0;
    // Active fragments after each pass.
    std::vector<uint64_t> active;
    std::vector<float> loopLimits;
    std::vector<int64_t> microseconds;
};

class SeAORenderer
{
public:
    SeAORenderer(const SeAO::Geometry& geometry, const SeAO::SurfaceElementTree& tree,
                 const SeAOParameters& parameters);
    ~SeAORenderer();
    SeAORenderer(const SeAORenderer&) = delete;
    SeAORenderer& operator=(const SeAORenderer&) = delete;

    // False when a program did not build or there is nothing to walk.
    bool isValid() const;

    // The element passes and the blend of the last two, logged pass by pass.
    void solveElementOcclusion();
    // Occlusion of each element as the texels will see it (after the blend;
    // all 1 before the passes ran).
    std::vector<float> elementOcclusion() const;

    // Walks every texel of one output tile. `uvWindow` is the tile's window
    // (origin, then how many tiles fit in the map) with the UV tile added to
    // the origin; `normals` the world-space normal map's tile or null. The
    // tile receives the occlusion in RGB and the coverage in alpha, its
    // first row the top of the tile.
    SeAOTileStats renderTile(const std::array<float, 4>& uvWindow, const Surfaces::Surface* normals,
                             Surfaces::Surface& tile);

    // The loop limit each tile starts with: the first pass is given room,
    // later ones are timed to a quarter second, never below the minimum.
    float initialLoopLimit = 600000.0f;
    static constexpr float minimumLoopLimit = 10.0f;

    // Whether the current context's renderer is Mesa's software one.
    static bool isSoftwareRenderer();

private:
    struct Target;
    void drawFullscreen() const;
    uint64_t countActive(unsigned stateTexture, int width, int height);
    void bindTreeSamplers(GLProgram& program, int firstUnit) const;

    const SeAO::Geometry& m_geometry;
    SeAOParameters m_parameters;
    SeAO::PackedTree m_packed;
    std::shared_ptr<GLProgram> m_element, m_blend, m_texel, m_reduce, m_resolve;
    unsigned m_vertexArray = 0;
    unsigned m_emptyArray = 0;
    unsigned m_buffers[2] = {0, 0};
    int m_drawnIndices = 0;
    // vert, pos, nrm, ind, tri0, tri1
    unsigned m_tree[6] = {0, 0, 0, 0, 0, 0};
    // Two element passes in turn, then their blend.
    unsigned m_occlusion[3] = {0, 0, 0};
    int m_occlusionResult = 0;
    unsigned m_framebuffer = 0;
};

} // namespace Ond::Baking
