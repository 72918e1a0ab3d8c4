#include "baking/lowpoly/SeAOMapBaker.h"

#include "baking/AbstractBakingContext.h"
#include "baking/BakerRequirements.h"
#include "baking/lowpoly/GLProgram.h"
#include "baking/lowpoly/GLSLSource.h"
#include "baking/lowpoly/GLTileTarget.h"
#include "baking/lowpoly/LowPolyProperties.h"
#include "baking/lowpoly/LowPolyTileLoop.h"
#include "baking/lowpoly/NormalWSMapBaker.h"
#include "baking/lowpoly/SeAORenderer.h"
#include "baking/lowpoly/SourceMap.h"

#include <GL/glew.h>

#include <algorithm>

namespace Ond::Baking {

QString SeAOMapBaker::label() const
{
    return trBaking("Ambient Occlusion (deprecated)");
}

QString SeAOMapBaker::description() const
{
    return trBaking("This baker allows you to extract ambient occlusion (soft shadowing in occluded areas) "
                    "using the mesh and a normal map (no high poly needed).\nIt uses a fast algorithm executed "
                    "on the GPU.");
}

std::string SeAOMapBaker::identifier() const
{
    return "ambientocclusion";
}

bool SeAOMapBaker::isAvailable(QString* why) const
{
    return checkSupportedRenderer(why);
}

Surfaces::SurfaceSPtr SeAOMapBaker::invertNormalMap(const Surfaces::SurfaceSPtr& map)
{
    Surfaces::SurfaceSPtr inverted = makeLowPolyOutput(QSize(int(map->width()), int(map->height())));
    const GLProgramSPtr program = GLProgramCache::instance().program(
        GLSLSource::vertexText("seao_invert.vert.glsl"), GLSLSource::fragmentText("seao_invert.frag.glsl"));
    if (!program)
        return inverted;
    const SurfaceTileGrid sourceGrid(map, lowPolyTileLimit, lowPolyTileLimit);
    const SurfaceTileGrid targetGrid(inverted, lowPolyTileLimit, lowPolyTileLimit);
    GLuint vertexArray = 0;
    glGenVertexArrays(1, &vertexArray);
    glBindVertexArray(vertexArray);
    glDisable(GL_BLEND);
    program->bind();
    program->setInt("normalmap_tex", 0);
    for (int r = 0; r < targetGrid.rowCount(); ++r)
        for (int c = 0; c < targetGrid.columns(); ++c) {
            const Surfaces::SurfaceSPtr& tile = targetGrid.tile(c, r);
            GLTileTarget target(int(tile->width()), int(tile->height()));
            if (!target.isValid())
                continue;
            const GLuint texture = uploadTexture(*sourceGrid.tile(c, r), false, true);
            target.bind();
            glActiveTexture(GL_TEXTURE0);
            glBindTexture(GL_TEXTURE_2D, texture);
            glDrawArrays(GL_TRIANGLES, 0, 3);
            Surfaces::Surface pixels(Surfaces::SurfaceDesc(tile->width(), tile->height(), Surfaces::PixelFormat::RGBA32F));
            if (readBack(target.framebuffer(), pixels)) {
                pixels.flipVertical();
                Surfaces::blit(pixels, *tile, 0, 0);
            }
            deleteTexture(texture);
        }
    GLTileTarget::release();
    GLProgram::release();
    glBindVertexArray(0);
    glDeleteVertexArrays(1, &vertexArray);
    return inverted;
}

Surfaces::SurfaceSPtr SeAOMapBaker::process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene)
{
    using namespace LowPolyProperties;
    const PropertyBag& bag = properties();
    const GLBakeParameters parameters = commonParameters(bag);
    SeAOParameters seao = SeAOParameters::forQuality(value<int>(bag, "SeAO.Quality", 1));
    seao.errorBias = value<float>(bag, "SeAO.ErrorBias", 0.6f);
    // A negative fade would divide by zero at some distance.
    seao.distanceFade = std::max(value<float>(bag, "SeAO.DistanceFade", 0.01f), 0.0f);
    const bool invert = value<bool>(bag, "SeAO.InvertNormals", false);
    const bool useNeighbors = value<bool>(bag, "SeAO.UseNeighbors", false);
    const QSize size = outputSize();

    Surfaces::SurfaceSPtr output = makeLowPolyOutput(size);
    if (scene) {
        // The texels look along the world-space normal map: the one given,
        // the one given in tangent space turned to world space, or the
        // mesh's own normals.
        const Surfaces::SurfaceSPtr map = loadSourceMap(context, path(bag, "Additional.NormalMap"));
        Surfaces::SurfaceSPtr normals = map && value<bool>(bag, "Additional.NormalWorldSpace", false)
            ? map
            : NormalWSMapBaker::renderWorldSpaceNormals(context, scene.get(), parameters, size, map);
        if (invert && normals)
            normals = invertNormalMap(normals);

        SeAO::CollectMeshDataVisitor collect(useNeighbors ? 1u : 2u, parameters.uvSet, invert);
        collect.walk(*scene);
        SeAO::Geometry& geometry = collect.geometry;
        if (!geometry.empty() && !context.isCancelled())
            bakeOcclusion(context, geometry, seao, parameters, normals, output);
    }
    finishLowPolyMap(context, output, value<int>(bag, "Common.DilationWidth", 1),
                     value<bool>(bag, "Common.ApplyDiffusion", true));
    auto single = Surfaces::SurfaceSPtr::create();
    Surfaces::convert(*output, *single, Surfaces::PixelFormat::L32F);
    return single;
}

void SeAOMapBaker::bakeOcclusion(AbstractBakingContext& context, SeAO::Geometry& geometry,
                                 const SeAOParameters& seao, const GLBakeParameters& parameters,
                                 const Surfaces::SurfaceSPtr& normals, Surfaces::SurfaceSPtr& output)
{
    geometry.normalizeToUnitFrame();
    const SeAO::SurfaceElementTree tree = SeAO::SurfaceElementTree::build(geometry);

    SurfaceTileGrid outputGrid;
    SurfaceTileGrid mapGrid;
    if (normals)
        buildSourceGrids(output, normals, 0, outputGrid, mapGrid);
    else
        outputGrid = SurfaceTileGrid(output, lowPolyTileLimit, lowPolyTileLimit);
    const bool withMap = normals && mapGrid.columns() == outputGrid.columns()
        && mapGrid.rowCount() == outputGrid.rowCount();

    SeAORenderer renderer(geometry, tree, seao);
    if (!renderer.isValid())
        return;
    // On a renderer that runs the fragments on the processor a first pass of
    // 600000 steps would hold the program for minutes; it starts at the
    // floor and the timing of the passes raises the limit from there.
    if (SeAORenderer::isSoftwareRenderer())
        renderer.initialLoopLimit = SeAORenderer::minimumLoopLimit;
    renderer.solveElementOcclusion();

    const int columns = outputGrid.columns();
    const int rows = outputGrid.rowCount();
    context.progressBegin(trBaking("Map computation"));
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < columns; ++c) {
            context.progressValue(double(r * columns + c) / double(columns * rows));
            if (context.isCancelled()) {
                context.progressEnd();
                return;
            }
            // r counts from the bottom of the map, the grids from the top.
            const int gridRow = rows - 1 - r;
            const std::array<float, 4> window = outputGrid.window(c, r);
            const std::array<float, 4> uvWindow = {window[0] + float(parameters.uvTile[0]),
                                                   window[1] + float(parameters.uvTile[1]), window[2], window[3]};
            renderer.renderTile(uvWindow, withMap ? mapGrid.tile(c, gridRow).get() : nullptr,
                                *outputGrid.tile(c, gridRow));
        }
    }
    context.progressValue(1.0);
    context.progressEnd();
}

} // namespace Ond::Baking
