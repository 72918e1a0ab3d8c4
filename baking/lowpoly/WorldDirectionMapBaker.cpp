#include "baking/lowpoly/WorldDirectionMapBaker.h"

#include "baking/AbstractBakingContext.h"
#include "baking/BakerRequirements.h"
#include "baking/lowpoly/GLProgram.h"
#include "baking/lowpoly/GLSLSource.h"
#include "baking/lowpoly/LowPolyProperties.h"
#include "baking/lowpoly/LowPolyTileLoop.h"
#include "baking/lowpoly/SourceMap.h"

#include <algorithm>

namespace Ond::Baking {

QString WorldDirectionMapBaker::label() const
{
    return trBaking("World Space Direction");
}

QString WorldDirectionMapBaker::description() const
{
    return trBaking("This baker allows you to transform vector directions from world space coordinates to "
                    "tangent space coordinates.\nThe direction can come from a texture or an uniform vector.");
}

std::string WorldDirectionMapBaker::identifier() const
{
    return "worldspacedirection";
}

bool WorldDirectionMapBaker::isAvailable(QString* why) const
{
    return checkGlVersion33(why);
}

Surfaces::SurfaceSPtr WorldDirectionMapBaker::process(AbstractBakingContext& context,
                                                      const SceneGraph::SceneSPtr& scene)
{
    using namespace LowPolyProperties;
    const PropertyBag& bag = properties();
    GLBakeParameters parameters = commonParameters(bag);

    bool constant = value<int>(bag, "WorldDirection.ConstDirection", 1) == 1;
    Eigen::Vector3f direction = Eigen::Vector3f::Zero();
    Surfaces::SurfaceSPtr map;
    if (constant) {
        direction = {value<float>(bag, "WorldDirection.X", 0.0f), value<float>(bag, "WorldDirection.Y", -1.0f),
                     value<float>(bag, "WorldDirection.Z", 0.0f)};
    } else {
        map = loadSourceMap(context, path(bag, "WorldDirection.DirectionMap"));
        // Without its map the bake falls back to a null constant direction.
        constant = !map;
    }

    Surfaces::SurfaceSPtr output = makeLowPolyOutput(outputSize());
    SurfaceTileGrid outputGrid;
    SurfaceTileGrid mapGrid;
    if (map)
        buildSourceGrids(output, map, 0, outputGrid, mapGrid);
    else
        outputGrid = SurfaceTileGrid(output, lowPolyTileLimit, lowPolyTileLimit);

    const std::string code = GLSLSource::perFragmentCode();
    const GLProgramSPtr program = GLProgramCache::instance().program(
        GLSLSource::vertexText("worlddirection.vert.glsl"),
        GLSLSource::fragmentTextWithTangent("worlddirection.frag.glsl", code));
    if (program && scene) {
        const bool perFragment = context.perFragmentBinormal();
        LowPolyPass pass;
        pass.label = trBaking("Map computation");
        pass.program = program.get();
        pass.parameters = parameters;
        pass.sceneCache = false;
        if (map) {
            pass.sourceWindowName = "directionWindow";
            pass.samplerName = "directionmap_tex";
        }
        pass.setUniforms = [&](GLProgram& p) {
            p.setVec3("world_direction", direction);
            p.setInt("invert_green", parameters.invertGreen ? 1 : 0);
            if (!code.empty())
                p.setInt("per_frag_binormal", perFragment ? 1 : 0);
            p.setInt("const_direction", constant ? 1 : 0);
        };
        runTileLoop(context, *scene, pass, outputGrid, map ? &mapGrid : nullptr);
    }
    finishLowPolyMap(context, output, value<int>(bag, "Common.DilationWidth", 1),
                     value<bool>(bag, "Common.ApplyDiffusion", true));
    return output;
}

} // namespace Ond::Baking
