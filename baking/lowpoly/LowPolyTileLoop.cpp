#include "baking/lowpoly/LowPolyTileLoop.h"

#include "baking/AbstractBakingContext.h"
#include "baking/lowpoly/GLProgram.h"
#include "baking/lowpoly/GLTileTarget.h"
#include "baking/lowpoly/PostProcess.h"

#include <GL/glew.h>

#include <algorithm>
#include <cstring>

namespace Ond::Baking {

Surfaces::SurfaceSPtr makeLowPolyOutput(const QSize& size)
{
    Surfaces::SurfaceDesc desc(uint32_t(std::max(size.width(), 0)), uint32_t(std::max(size.height(), 0)),
                               Surfaces::PixelFormat::RGBA32F);
    desc.flags = 1;
    auto surface = Surfaces::SurfaceSPtr::create(desc, Surfaces::Surface::defaultAlignment);
    if (!surface->isEmpty())
        std::memset(surface->data(), 0, size_t(surface->desc().byteSize()));
    return surface;
}

void buildSourceGrids(const Surfaces::SurfaceSPtr& output, const Surfaces::SurfaceSPtr& source, int overlapFlag,
                      SurfaceTileGrid& outputGrid, SurfaceTileGrid& sourceGrid)
{
    const SourceTiling x = sourceTilingForAxis(int(source->width()), int(output->width()), overlapFlag,
                                               lowPolyTileLimit);
    const SourceTiling y = sourceTilingForAxis(int(source->height()), int(output->height()), overlapFlag,
                                               lowPolyTileLimit);
    sourceGrid = SurfaceTileGrid(source, x.sourceTile, y.sourceTile, x.sourceOverlap, y.sourceOverlap);
    outputGrid = SurfaceTileGrid(output, x.outputTile, y.outputTile, 0, 0);
}

bool forEachTile(AbstractBakingContext& context, const QString& label, int columns, int rows,
                 const std::function<void(int column, int row, int gridRow)>& drawTile)
{
    context.progressBegin(label);
    bool cancelled = false;
    for (int r = 0; r < rows && !cancelled; ++r) {
        for (int c = 0; c < columns; ++c) {
            context.progressValue(double(r * columns + c) / double(columns * rows));
            if (context.isCancelled()) {
                cancelled = true;
                break;
            }
            drawTile(c, r, rows - 1 - r);
        }
    }
    context.progressValue(1.0);
    context.progressEnd();
    return !cancelled;
}

bool runTileLoop(AbstractBakingContext& context, const SceneGraph::Scene& scene, LowPolyPass& pass,
                 const SurfaceTileGrid& outputGrid, const SurfaceTileGrid* sourceGrid)
{
    const int columns = outputGrid.columns();
    const int rows = outputGrid.rowCount();
    if (!pass.program || columns == 0 || rows == 0)
        return !context.isCancelled();
    const bool withSource = sourceGrid && sourceGrid->columns() == columns && sourceGrid->rowCount() == rows
        && pass.samplerName;

    return forEachTile(context, pass.label, columns, rows, [&](int c, int r, int gridRow) {
        const Surfaces::SurfaceSPtr& tile = outputGrid.tile(c, gridRow);

        pass.program->bind();
        unsigned texture = 0;
        if (withSource) {
            texture = uploadTexture(*sourceGrid->tile(c, gridRow), pass.linearSource, true);
            pass.parameters.sourceWindow = sourceGrid->window(c, r);
        }
        pass.parameters.uvWindow = outputGrid.window(c, r);
        if (pass.setUniforms)
            pass.setUniforms(*pass.program);

        GLTileTarget target(int(tile->width()), int(tile->height()));
        if (target.isValid()) {
            drawSceneTile(pass.parameters, scene, *pass.program, target, pass.windowForm,
                          withSource ? pass.sourceWindowName : nullptr, texture,
                          withSource ? pass.samplerName : nullptr, pass.sceneCache);
            Surfaces::Surface pixels(Surfaces::SurfaceDesc(tile->width(), tile->height(),
                                                           Surfaces::PixelFormat::RGBA32F));
            if (readBack(target.framebuffer(), pixels)) {
                pixels.flipVertical();
                Surfaces::blit(pixels, *tile, 0, 0);
            }
        }
        if (pass.parameters.tileCallback)
            context.tileOutput(tile, c, gridRow, false);
        deleteTexture(texture);
        GLProgram::release();
    });
}

void finishLowPolyMap(AbstractBakingContext& context, Surfaces::SurfaceSPtr& surface, int dilationWidth,
                      bool applyDiffusion)
{
    if (context.isCancelled())
        return;
    postProcess(surface, uint32_t(std::max(dilationWidth, 0)), applyDiffusion);
}

} // namespace Ond::Baking
