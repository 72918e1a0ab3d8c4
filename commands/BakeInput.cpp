#include "commands/BakeInput.h"

#include "commands/OutputNaming.h"
#include "commands/SaveBaker.h"
#include "commands/SceneSelection.h"

#include "baking/AbstractMapBaker.h"
#include "baking/BakingContext.h"
#include "baking/detail/DetailMapBaker.h"
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

Ond::SceneGraph::SceneSPtr loadScene(Vrn::Baking::BakingContext& context, const QString& inputPath,
                                     const QStringList& selection, bool recomputeTangents)
{
    const uint32_t flags =
        recomputeTangents ? Ond::SceneLoad::RecomputeTangentsLoadFlags : Ond::SceneLoad::BakeLoadFlags;
    // Logs the failure itself, in the command's words.
    Ond::SceneGraph::SceneSPtr scene = Ond::SceneLoad::SceneFileLoader::load(OutputNaming::localPath(inputPath), flags);
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
    const uint32_t flags =
        bakerIdentifier == "curvaturefrommesh" ? CurvatureHighLoadFlags : Ond::SceneLoad::AllLoadFlags;
    auto combined = std::make_shared<Ond::SceneGraph::Scene>();
    for (const QString& path : highMeshes) {
        Ond::SceneGraph::SceneSPtr scene = context.loadSceneFile(path, flags);
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
