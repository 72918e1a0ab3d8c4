#include "baking/lowpoly/NormalWSMapBaker.h"

#include "baking/AbstractBakingContext.h"
#include "baking/BakerRequirements.h"
#include "baking/lowpoly/GLProgram.h"
#include "baking/lowpoly/GLSLSource.h"
#include "baking/lowpoly/LowPolyProperties.h"
#include "baking/lowpoly/LowPolyTileLoop.h"
#include "baking/lowpoly/SourceMap.h"

#include <algorithm>

namespace Ond::Baking {

QString NormalWSMapBaker::label() const
{
    return trBaking("World Space Normals");
}

QString NormalWSMapBaker::description() const
{
    return trBaking("This baker allows you to extract normals coordinates relative to a fixed frame in the "
                    "object space.");
}

std::string NormalWSMapBaker::identifier() const
{
    return "normalworldspace";
}

bool NormalWSMapBaker::isAvailable(QString* why) const
{
    return checkGlVersion33(why);
}

Surfaces::SurfaceSPtr NormalWSMapBaker::renderWorldSpaceNormals(AbstractBakingContext& context,
                                                                const SceneGraph::Scene* scene,
                                                                const GLBakeParameters& parameters, const QSize& size,
                                                                const Surfaces::SurfaceSPtr& map)
{
    Surfaces::SurfaceSPtr output = makeLowPolyOutput(size);
    SurfaceTileGrid outputGrid;
    SurfaceTileGrid mapGrid;
    if (map) {
        const bool large = output->width() > 1024 || output->height() > 1024 || map->width() > 1024
            || map->height() > 1024;
        buildSourceGrids(output, map, large ? 1 : 0, outputGrid, mapGrid);
    } else {
        outputGrid = SurfaceTileGrid(output, lowPolyTileLimit, lowPolyTileLimit);
    }

    const std::string code = GLSLSource::perFragmentCode();
    const GLProgramSPtr program = GLProgramCache::instance().program(
        GLSLSource::vertexText("normalws.vert.glsl"), GLSLSource::fragmentTextWithTangent("normalws.frag.glsl", code));
    if (program && scene) {
        const bool useMap = map && parameters.bakeType == 0;
        const bool perFragment = context.perFragmentBinormal();
        LowPolyPass pass;
        pass.label = trBaking("Normal world space map computation");
        pass.program = program.get();
        pass.parameters = parameters;
        if (map) {
            pass.sourceWindowName = "normalWindow";
            pass.samplerName = "normalmap_tex";
        }
        pass.setUniforms = [&](GLProgram& p) {
            p.setInt("invert_green", parameters.invertGreen ? 1 : 0);
            p.setInt("normalmap_type", int(parameters.bakeType));
            p.setInt("use_normalmap", useMap ? 1 : 0);
            if (!code.empty())
                p.setInt("per_frag_binormal", perFragment ? 1 : 0);
        };
        runTileLoop(context, *scene, pass, outputGrid, map ? &mapGrid : nullptr);
    }
    return output;
}

Surfaces::SurfaceSPtr NormalWSMapBaker::process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene)
{
    using namespace LowPolyProperties;
    const PropertyBag& bag = properties();
    GLBakeParameters parameters = commonParameters(bag);
    parameters.setBakeType(uint32_t(value<int>(bag, "NWS.BakeType", 0)));
    parameters.tileCallback = true;

    Surfaces::SurfaceSPtr output = renderWorldSpaceNormals(context, scene.get(), parameters, outputSize(),
                                                           loadSourceMap(context, path(bag, "Additional.NormalMap")));
    finishLowPolyMap(context, output, value<int>(bag, "Common.DilationWidth", 1),
                     value<bool>(bag, "Common.ApplyDiffusion", true));
    return output;
}

} // namespace Ond::Baking
