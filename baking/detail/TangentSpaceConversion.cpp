#include "baking/detail/TangentSpaceConversion.h"

#include "baking/AbstractBakingContext.h"
#include "baking/lowpoly/GLProgram.h"
#include "baking/lowpoly/GLSLSource.h"
#include "baking/lowpoly/LowPolyTileLoop.h"

#include <QCoreApplication>
#include <QSize>

namespace Ond::Baking {

Surfaces::SurfaceSPtr convertToTangentSpace(AbstractBakingContext& context, const SceneGraph::Scene& lowScene,
                                            const Surfaces::SurfaceSPtr& worldNormals,
                                            const TangentSpaceSettings& settings)
{
    Surfaces::SurfaceSPtr output =
        makeLowPolyOutput(QSize(int(worldNormals->width()), int(worldNormals->height())));
    SurfaceTileGrid outputGrid;
    SurfaceTileGrid sourceGrid;
    buildSourceGrids(output, worldNormals, 0, outputGrid, sourceGrid);

    const std::string code = GLSLSource::perFragmentCode();
    const GLProgramSPtr program =
        GLProgramCache::instance().program(GLSLSource::vertexText("normalws.vert.glsl"),
                                           GLSLSource::fragmentTextWithTangent("tangentspace.frag.glsl", code));
    if (!program)
        return output;

    GLBakeParameters parameters;
    parameters.uvSet = settings.uvSet;
    parameters.uvTile = {settings.uvTileU, settings.uvTileV};

    const bool perFragment = context.perFragmentBinormal();
    LowPolyPass pass;
    pass.label = QCoreApplication::translate("baking", "Tangent space conversion");
    pass.program = program.get();
    pass.parameters = parameters;
    pass.sourceWindowName = "normalWindow";
    pass.samplerName = "worldnormal_tex";
    // Output and source texels coincide; nearest keeps border texels apart.
    pass.linearSource = false;
    pass.setUniforms = [&](GLProgram& p) {
        p.setInt("invert_green", settings.invertGreen ? 1 : 0);
        if (!code.empty())
            p.setInt("per_frag_binormal", perFragment ? 1 : 0);
    };
    if (runTileLoop(context, lowScene, pass, outputGrid, &sourceGrid))
        finishLowPolyMap(context, output, settings.dilationWidth, settings.applyDiffusion);
    return output;
}

} // namespace Ond::Baking
