#include "commands/BakeInput.h"

#include "commands/ConsoleStages.h"
#include "commands/OutputNaming.h"
#include "commands/SaveBaker.h"
#include "commands/SceneSelection.h"
#include "commands/UvTileList.h"

#include "baking/AbstractMapBaker.h"
#include "baking/BakingContext.h"
#include "baking/detail/DetailMapBaker.h"
#include "image/UDIMNumbering.h"
#include "program/LogChannel.h"
#include "scene/graph/Mesh.h"
#include "scene/graph/Scene.h"
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

struct MeshContent
{
    size_t triangles = 0;
    bool hasUvSet = false;
};

MeshContent meshContent(const Ond::SceneGraph::Scene& scene, size_t uvSet)
{
    MeshContent content;
    scene.forAllMeshes([&](const Ond::SceneGraph::Mesh::SPtr& mesh) {
        const Ond::SceneGraph::Mesh::DataSPtr data = mesh ? mesh->getData() : nullptr;
        if (!data || data->getVertexCount() == 0)
            return true;
        size_t triangles = 0;
        data->forAllSubMeshes([&triangles](const Ond::SceneGraph::SubMesh& subMesh) {
            if (subMesh.indices && subMesh.primitiveType == Ond::SceneGraph::PrimitiveType::Triangles)
                triangles += subMesh.indices->size() / 3;
            return true;
        });
        content.triangles += triangles;
        if (triangles > 0 && data->getUvSetCount() > uvSet)
            content.hasUvSet = true;
        return true;
    });
    return content;
}

// A file that loads but holds nothing to bake would otherwise give no file
// and no word: it is named here.
bool hasTriangles(const Ond::SceneGraph::Scene& scene, const QString& path)
{
    if (meshContent(scene, 0).triangles > 0)
        return true;
    zmfBakerChannel().error(QStringLiteral("Error: Scene \"%1\" has no triangles to bake.").arg(path));
    return false;
}

} // namespace

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
    const QString path = OutputNaming::localPath(inputPath);
    if (!hasTriangles(*scene, path))
        return nullptr;
    // Every baker works in the low mesh's UVs. The bake itself then fails in
    // its own words, which don't name the file.
    if (!meshContent(*scene, 0).hasUvSet)
        zmfBakerChannel().error(QStringLiteral("Error: Scene \"%1\" has no UVs.").arg(path));
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
        if (scene && !hasTriangles(*scene, OutputNaming::localPath(path)))
            return nullptr;
        if (!scene) {
            if (context.isCancelled())
                return nullptr;
            zmfBakerChannel().error(
                QStringLiteral("Error: Scene \"%1\" couldn't be loaded .").arg(OutputNaming::localPath(path)));
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

HighSource highSourceOf(Ond::Baking::AbstractMapBaker& baker)
{
    if (!dynamic_cast<Ond::Baking::DetailMapBaker*>(&baker))
        return HighSource::None;
    const Ond::Baking::PropertyBag& bag = baker.properties();
    if (bag.contains("Detail.LowAsHigh") && bag["Detail.LowAsHigh"].valueAs<bool>())
        return HighSource::Low;
    return HighSource::Files;
}

bool applyTangentSpaceSettings(const BakerSettingsMap& settings)
{
    QString plugin = settings.getString(QStringLiteral("tangent-space-plugin"), QString());
    if (!TangentSpaceGenerator::selectPlugin(OutputNaming::localPath(plugin)))
        return false;
    // Any explicit plugin counts as the default one for the binormal rule.
    if (!plugin.isEmpty())
        plugin = TangentSpaceGenerator::pluginFilePath(QStringLiteral("mikktspace"));
    const bool perFragmentDefault = TangentSpaceGenerator::isDefaultBasisFor(plugin);
    TangentSpaceGenerator::setPerFragmentBinormal(
        settings.getBool(QStringLiteral("per-fragment-binormal"), perFragmentDefault));
    return true;
}

namespace {

// None for a low-poly baker; `failed` (with the reason in the log) when a
// detail baker has nothing to bake from.
Ond::SceneGraph::SceneSPtr highSceneFor(Ond::Baking::AbstractMapBaker& baker, Vrn::Baking::BakingContext& context,
                                        const Ond::SceneGraph::SceneSPtr& low, const QStringList& highMeshes,
                                        bool& failed)
{
    failed = false;
    const HighSource source = highSourceOf(baker);
    if (source != HighSource::Files)
        return source == HighSource::Low ? low : nullptr;
    if (highMeshes.isEmpty()) {
        zmfBakerChannel().error(QStringLiteral("Error: No high poly scene given."));
        failed = true;
        return nullptr;
    }
    Ond::SceneGraph::SceneSPtr high = loadHighScenes(context, highMeshes, baker.identifier());
    failed = !high;
    return high;
}

// Low and high scenes of one input; false (with the reason in the log)
// when the input can't be baked.
bool loadInputScenes(const BakerSettingsMap& settings, Ond::Baking::AbstractMapBaker& baker, const QString& inputPath,
                     Vrn::Baking::BakingContext& context, const QStringList& highMeshes,
                     Ond::SceneGraph::SceneSPtr& low, Ond::SceneGraph::SceneSPtr& high)
{
    if (!applyTangentSpaceSettings(settings))
        return false;

    const bool recomputeTangents = settings.getBool(QStringLiteral("recompute-tangents"), false);
    const QStringList selection = settings.getStringList(QStringLiteral("input-selection"), QStringList());

    low = loadScene(context, inputPath, selection, recomputeTangents);
    if (!low)
        return false;
    bool failed = false;
    high = highSceneFor(baker, context, low, highMeshes, failed);
    return !failed;
}

} // namespace

QString bakeInput(const BakerSettingsMap& settings, Ond::Baking::AbstractMapBaker& baker, const QString& bakerName,
                  const QString& inputPath, Vrn::Baking::BakingContext& context, const QStringList& highMeshes,
                  const QString& cagePath)
{
    Ond::SceneGraph::SceneSPtr low;
    Ond::SceneGraph::SceneSPtr high;
    if (!loadInputScenes(settings, baker, inputPath, context, highMeshes, low, high))
        return QString();
    return saveBaker(settings, baker, bakerName, inputPath, context, low, high, cagePath);
}

QStringList bakeCoveredTiles(const BakerSettingsMap& settings, Ond::Baking::AbstractMapBaker& baker,
                             const QString& bakerName, const QString& inputPath, Vrn::Baking::BakingContext& context,
                             const QStringList& highMeshes, const QString& cagePath)
{
    Ond::SceneGraph::SceneSPtr low;
    Ond::SceneGraph::SceneSPtr high;
    if (!loadInputScenes(settings, baker, inputPath, context, highMeshes, low, high))
        return QStringList{QString()};
    return saveCoveredTiles(settings, baker, bakerName, inputPath, context, low, high, cagePath);
}

std::vector<uint16_t> bakedTilesOf(Ond::Baking::AbstractMapBaker& baker, const Ond::SceneGraph::Scene& low,
                                   const QString& inputPath)
{
    const Ond::Baking::PropertyBag& bag = baker.properties();
    const int uvSet = bag.contains("Common.UVSet") ? bag["Common.UVSet"].valueAs<int>() : 0;
    const std::vector<uint16_t> udims = UvTileList::coveredTiles(low, uvSet);
    // A mesh without any UVs was told as such when it loaded.
    if (udims.empty() && meshContent(low, 0).hasUvSet)
        zmfBakerChannel().error(QStringLiteral("Error: The uv set %1 of \"%2\" covers no uv tile, nothing to bake.")
                                    .arg(uvSet)
                                    .arg(OutputNaming::localPath(inputPath)));
    return udims;
}

QStringList saveCoveredTiles(const BakerSettingsMap& settings, Ond::Baking::AbstractMapBaker& baker,
                             const QString& bakerName, const QString& inputPath, Vrn::Baking::BakingContext& context,
                             const Ond::SceneGraph::SceneSPtr& low, const Ond::SceneGraph::SceneSPtr& high,
                             const QString& cagePath)
{
    const std::vector<uint16_t> udims = bakedTilesOf(baker, *low, inputPath);
    if (udims.empty())
        return QStringList{QString()};
    const TileNamedSettings tileSettings(settings);
    QStringList written;
    for (const uint16_t udim : udims) {
        Ond::Baking::setPropertyValue(baker.properties(), "Common.UVTile", *Vrn::Baking::tileOfUdim(udim));
        written << saveBaker(tileSettings, baker, bakerName, inputPath, context, low, high, cagePath);
    }
    return written;
}

} // namespace ProgramCommand
