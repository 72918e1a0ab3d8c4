#pragma once
// The tile loop shared by the low-poly GL bakers: one draw of the low mesh
// per output tile of at most 1024 texels, read back into the output map.

#include "baking/lowpoly/GLBakeParameters.h"
#include "baking/lowpoly/SceneGL.h"
#include "baking/lowpoly/SurfaceTileGrid.h"
#include "image/Surface.h"
#include "scene/graph/Scene.h"

#include <QSize>
#include <QString>

#include <functional>

namespace Ond::Baking {

class AbstractBakingContext;
class GLProgram;

constexpr int lowPolyTileLimit = 1024;

// RGBA float, cleared to 0, 64-byte aligned, surface flag 1.
Surfaces::SurfaceSPtr makeLowPolyOutput(const QSize& size);

// Grids of the output and its source map with equal tile counts. The
// source grid carries the overlap; the output grid has none.
void buildSourceGrids(const Surfaces::SurfaceSPtr& output, const Surfaces::SurfaceSPtr& source, int overlapFlag,
                      SurfaceTileGrid& outputGrid, SurfaceTileGrid& sourceGrid);

struct LowPolyPass
{
    QString label;
    GLProgram* program = nullptr;
    GLBakeParameters parameters;
    UvWindowForm windowForm = UvWindowForm::Difference;
    // Uniform of the source tile's window and its sampler; null without map.
    const char* sourceWindowName = nullptr;
    const char* samplerName = nullptr;
    bool linearSource = true;
    // Draw through the GL scene cache, or upload each mesh for each tile.
    bool sceneCache = true;
    // Called for each tile with the program bound, before the draw.
    std::function<void(GLProgram&)> setUniforms;
};

// Calls drawTile for each tile of a columns x rows grid under a progress
// bar named label, row 0 at the bottom of the map as UV space has it;
// gridRow is the same row counted from the top, as the grids count. Returns
// false when the context was cancelled.
bool forEachTile(AbstractBakingContext& context, const QString& label, int columns, int rows,
                 const std::function<void(int column, int row, int gridRow)>& drawTile);

// Runs the loop over the output grid, with the source grid's tiles bound as
// texture when given. The grids' row 0 is the top of the map. Returns false
// when the context was cancelled; the tiles done so far stay in the output.
bool runTileLoop(AbstractBakingContext& context, const SceneGraph::Scene& scene, LowPolyPass& pass,
                 const SurfaceTileGrid& outputGrid, const SurfaceTileGrid* sourceGrid = nullptr);

// Runs the post-process of the map unless the context was cancelled.
void finishLowPolyMap(AbstractBakingContext& context, Surfaces::SurfaceSPtr& surface, int dilationWidth,
                      bool applyDiffusion);

} // namespace Ond::Baking
