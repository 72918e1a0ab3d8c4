#include "baking/lowpoly/PositionMapBaker.h"

#include "baking/AbstractBakingContext.h"
#include "baking/BakerRequirements.h"
#include "baking/lowpoly/GLProgram.h"
#include "baking/lowpoly/GLSLSource.h"
#include "baking/lowpoly/LowPolyProperties.h"
#include "baking/lowpoly/LowPolyTileLoop.h"
#include "baking/lowpoly/SceneVisitor.h"

#include <algorithm>

namespace Ond::Baking {

QString PositionMapBaker::label() const
{
    return trBaking("Position");
}

QString PositionMapBaker::description() const
{
    return trBaking("This baker allows you to extract the position (x,y,z world space coordinates) of all "
                    "points at the surface of the mesh.");
}

std::string PositionMapBaker::identifier() const
{
    return "position";
}

bool PositionMapBaker::isAvailable(QString* why) const
{
    return checkGlVersion33(why);
}

Surfaces::SurfaceSPtr PositionMapBaker::renderPositions(AbstractBakingContext& context,
                                                        const SceneGraph::Scene* scene,
                                                        const GLBakeParameters& parameters, const QSize& size,
                                                        const PositionEncoding& encoding)
{
    Surfaces::SurfaceSPtr output = makeLowPolyOutput(size);
    const SurfaceTileGrid outputGrid(output, lowPolyTileLimit, lowPolyTileLimit);
    const GLProgramSPtr program = GLProgramCache::instance().program(GLSLSource::vertexText("position.vert.glsl"),
                                                                      GLSLSource::fragmentText("position.frag.glsl"));
    if (program && scene) {
        LowPolyPass pass;
        pass.label = trBaking("Position map computation");
        pass.program = program.get();
        pass.parameters = parameters;
        pass.windowForm = UvWindowForm::Product;
        pass.setUniforms = [&](GLProgram& p) {
            p.setVec3("normalization_coeff", encoding.coeff);
            p.setVec3("normalization_offset", encoding.offset);
            p.setInt("channel", encoding.channel);
            p.setInt("monochrome", encoding.monochrome ? 1 : 0);
        };
        runTileLoop(context, *scene, pass, outputGrid);
    }
    return output;
}

Surfaces::SurfaceSPtr PositionMapBaker::process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene)
{
    using namespace LowPolyProperties;
    const PropertyBag& bag = properties();
    const int mode = value<int>(bag, "Position.Mode", 0);
    const int normalization = value<int>(bag, "Position.Normalization", 1);
    const uint32_t boxMask = value<int>(bag, "Position.NormalizationScale", 1) == 1 ? 1u : 2u;

    const GLBakeParameters parameters = commonParameters(bag);

    PositionEncoding encoding;
    encoding.channel = value<int>(bag, "Position.Axis", 0);
    encoding.monochrome = mode == 1;
    if (scene) {
        BBoxVisitor box(boxMask, parameters.uvSet);
        box.walk(*scene);
        const Eigen::Vector3f extent = box.maximum - box.minimum;
        encoding.offset = box.minimum;
        if (normalization == 0) {
            encoding.coeff = extent.cwiseInverse();
        } else if (normalization == 1) {
            float largest = extent.x();
            if (extent.y() > largest)
                largest = extent.y();
            if (extent.z() > largest)
                largest = extent.z();
            encoding.coeff = Eigen::Vector3f::Constant(1.0f / largest);
            encoding.offset = box.minimum + (extent - Eigen::Vector3f::Constant(largest)) * 0.5f;
        } else if (normalization == 2) {
            encoding.offset = Eigen::Vector3f::Zero();
        }
    }

    Surfaces::SurfaceSPtr output = renderPositions(context, scene.get(), parameters, outputSize(), encoding);
    finishLowPolyMap(context, output, value<int>(bag, "Common.DilationWidth", 1),
                     value<bool>(bag, "Common.ApplyDiffusion", true));
    if (mode == 1 && output && !output->isEmpty()) {
        auto single = Surfaces::SurfaceSPtr::create();
        Surfaces::convert(*output, *single, Surfaces::PixelFormat::L32F);
        return single;
    }
    return output;
}

} // namespace Ond::Baking
