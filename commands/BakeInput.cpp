#include "commands/BakeInput.h"

#include "commands/ConsoleStages.h"
#include "commands/OutputNaming.h"
#include "commands/SaveBaker.h"
#include "commands/SceneSelection.h"

#include "baking/AbstractMapBaker.h"
#include "baking/BakingContext.h"
#include "baking/detail/DetailMapBaker.h"
#include "program/LogChannel.h"
#include "scene/load/SceneFileLoader.h"
#include "scene/load/SceneLoadOptions.h"
#include "scene/processing/TangentSpaceGenerator.h"

#include <stdexcept>

namespace ProgramCommand {

using Ond::Core::zmfBakerChannel;
using Ond::SceneGraph::MeshProcessing::TangentSpaceGenerator;

namespace {

// High meshes of the curvature baker need neither tangents nor UV sets.
constexpr uint32_t CurvatureHighLoadFlags = 3;

// Only the texture baker reads the high mesh's tangent frames (to carry a
// normal map over); for all others they would be the most costly part of
// loading a huge sculpt with UVs, and never looked at.
uint32_t highLoadFlags(const std::string& bakerIdentifier)
{
    if (bakerIdentifier == "curvaturefrommesh")
        return CurvatureHighLoadFlags;
    if (bakerIdentifier == "texturefrommesh")
        return Ond::SceneLoad::AllLoadFlags;
    return Ond::SceneLoad::AllLoadFlags
           & ~uint32_t(Ond::SceneLoad::KeepTangents | Ond::SceneLoad::ComputeTangents);
}

} // namespace

Ond::SceneGraph::SceneSPtr loadScene(Vrn::Baking::BakingContext& context, const QString& inputPath,
                                     const QStringList& selection, bool recomputeTangents)
{
    const uint32_t flags =
        recomputeTangents ? Ond::SceneLoad::RecomputeTangentsLoadFlags : Ond::SceneLoad::BakeLoadFlags;
    Ond::SceneGraph::SceneSPtr scene;
    {
        const LoadStage stage(inputPath);
        // Logs the failure itself, in the command's words.
        scene = Ond::SceneLoad::SceneFileLoader::load(OutputNaming::localPath(inputPath), flags, stage.progress());
    }
    if (!scene)
        return nullptr;
    SceneSelection::apply(*scene, selection);
    context.convertScene(scene);
    return scene;
}

Ond::SceneGraph::SceneSPtr loadHighScenes(Vrn::Baking::BakingContext& context, const QStringList& highMeshes,
                                          const std::string& bakerIdentifier)
{
    const uint32_t flags = highLoadFlags(bakerIdentifier);
    auto combined = std::make_shared<Ond::SceneGraph::Scene>();
    for (const QString& path : highMeshes) {
        Ond::SceneGraph::SceneSPtr scene;
        {
            const LoadStage stage(path);
            scene = context.loadSceneFile(path, flags, stage.progress());
        }
        if (!scene) {
            if (context.isCancelled())
                return nullptr;
            // Deliberately not caught by the commands: a missing high mesh
            // ends the run before anything of this input is written.
            throw std::runtime_error(
                QStringLiteral("Unable to load high poly scene from Url '%2'").arg(path).toStdString());
        }
        combined->addScene(scene);
    }
    context.convertScene(combined);
    return combined;
}

QString bakeInput(const BakerSettingsMap& settings, Ond::Baking::AbstractMapBaker& baker, const QString& bakerName,
                  const QString& inputPath, Vrn::Baking::BakingContext& context, const QStringList& highMeshes,
                  const QString& cagePath)
{
    QString plugin = settings.getString(QStringLiteral("tangent-space-plugin"), QString());
    if (!TangentSpaceGenerator::selectPlugin(OutputNaming::localPath(plugin)))
        return QString();
    // Any explicit plugin counts as the default one for the binormal rule.
    if (!plugin.isEmpty())
        plugin = TangentSpaceGenerator::pluginFilePath(QStringLiteral("mikktspace"));
    const bool perFragmentDefault = TangentSpaceGenerator::isDefaultBasisFor(plugin);
    TangentSpaceGenerator::setPerFragmentBinormal(
        settings.getBool(QStringLiteral("per-fragment-binormal"), perFragmentDefault));

    const bool recomputeTangents = settings.getBool(QStringLiteral("recompute-tangents"), false);
    const QStringList selection = settings.getStringList(QStringLiteral("input-selection"), QStringList());

    const Ond::SceneGraph::SceneSPtr low = loadScene(context, inputPath, selection, recomputeTangents);
    if (!low)
        return QString();

    Ond::SceneGraph::SceneSPtr high;
    if (dynamic_cast<Ond::Baking::DetailMapBaker*>(&baker)) {
        const Ond::Baking::PropertyBag& bag = baker.properties();
        if (bag.contains("Detail.LowAsHigh") && bag["Detail.LowAsHigh"].valueAs<bool>()) {
            high = low;
        } else if (highMeshes.isEmpty()) {
            zmfBakerChannel().error(QStringLiteral("Error: No high poly scene given."));
            return QString();
        } else {
            high = loadHighScenes(context, highMeshes, baker.identifier());
            if (!high)
                return QString();
        }
    }
    return saveBaker(settings, baker, bakerName, inputPath, context, low, high, cagePath);
}

} // namespace ProgramCommand
