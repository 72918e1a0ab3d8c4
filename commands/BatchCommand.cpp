#include "commands/BatchCommand.h"

#include "commands/BakeInput.h"
#include "commands/BakerCommand.h"
#include "commands/BakerCommandOptions.h"
#include "commands/BakerSettingsTransfer.h"
#include "commands/ConsoleStages.h"
#include "commands/ExecutionPlan.h"
#include "commands/JsonSettingsMap.h"
#include "commands/PathNormalization.h"
#include "commands/SaveBaker.h"
#include "commands/UvTileList.h"

#include "baking/AbstractMapBaker.h"
#include "baking/BakerCatalogue.h"
#include "baking/BakingContext.h"
#include "baking/GLMapBakerManager.h"
#include "image/UDIMNumbering.h"
#include "program/LogChannel.h"
#include "scene/load/SceneMgr.h"
#include "scene/processing/TangentSpaceGenerator.h"

#include <QFile>
#include <QFileInfo>

#include <set>

namespace ProgramCommand {

using Ond::Core::zmfBakerChannel;
using Ond::Program::OptionGroup;
using Ond::Program::TypedCommandLineOption;

namespace {

const QString JsonOption = QStringLiteral("json");
const QString UvTilesSetting = QStringLiteral("uvTiles");
const char* const GpuOptions[] = {"force-optix", "force-dxr", "disable-gpu"};

TypedCommandLineOption boolOption(const QString& name, const QString& help)
{
    TypedCommandLineOption option(name, QMetaType::Bool, help, QStringLiteral("bool"));
    option.setDefaultValue(QStringLiteral("false"));
    return option;
}

// What a loaded low scene was made from; an unchanged key lets the next
// node bake on the same scene.
struct LowSceneKey
{
    QString input;
    QStringList selection;
    bool recomputeTangents = false;
    QString plugin;
    bool perFragmentBinormal = false;

    bool operator==(const LowSceneKey& o) const
    {
        return input == o.input && selection == o.selection && recomputeTangents == o.recomputeTangents
               && plugin == o.plugin && perFragmentBinormal == o.perFragmentBinormal;
    }
};

// The tiles a node bakes. None listed: the tile of its settings alone.
struct TileRequest
{
    bool everyCoveredTile = false;
    std::vector<uint16_t> udims;
};

TileRequest tileRequestOf(const QStringList& tiles)
{
    TileRequest request;
    request.everyCoveredTile = UvTileList::isAuto(tiles);
    if (!request.everyCoveredTile)
        request.udims = UvTileList::parse(tiles);
    return request;
}

// A node's own "uvTiles", else the shared ones; "udim": "auto" asks for
// every covered tile when no list does.
TileRequest tilesOfNode(const JsonSettingsMap& settings, const TileRequest& shared)
{
    TileRequest request = settings.nodeHas(UvTilesSetting)
                              ? tileRequestOf(settings.getStringList(UvTilesSetting, QStringList()))
                              : shared;
    if (request.udims.empty() && !settings.has(QStringLiteral("uv-tile"))
        && UvTileList::isAuto(settings.getString(QStringLiteral("udim"), QString())))
        request.everyCoveredTile = true;
    return request;
}

// Reads the node's references again, for the tile now current.
void refreshReferences(const PlanNode& node, const JsonSettingsMap& settings)
{
    Ond::Baking::PropertyBag& bag = node.baker->properties();
    for (const PlanReference& reference : node.references) {
        if (reference.propertyId.empty() || !bag.contains(reference.propertyId))
            continue;
        const QStringList paths = normalizePaths(QStringList{settings.getString(reference.parameter, QString())});
        Ond::Baking::setPropertyValue(bag, reference.propertyId, paths.value(0));
    }
}

// One run of a plan: the context, and the scenes kept from node to node
// while the next one asks for the same.
class PlanRun
{
public:
    PlanRun(std::vector<PlanNode>& nodes, JsonSettingsMap& settings, TileRequest sharedTiles, QStringList sharedHigh,
            QString sharedCage)
        : m_nodes(nodes)
        , m_settings(settings)
        , m_sharedTiles(std::move(sharedTiles))
        , m_sharedHigh(std::move(sharedHigh))
        , m_sharedCage(std::move(sharedCage))
        , m_context(std::make_shared<Ond::SceneLoad::SceneMgr>(Ond::SceneLoad::createSceneLoaderMgr(),
                                                               Ond::SceneLoad::createSceneExporterMgr()))
    {
        applyGpuOptions(m_context, m_settings);
        // The cage and the high meshes are loaded once for all the nodes and inputs.
        m_context.setReuseLoadedScenes(true);
        // Only on a terminal: otherwise the commands install no handler at all.
        if (auto handler = consoleTaskHandler())
            m_context.setTaskHandler(0, handler);
    }

    // Every node, in `order`, on one input.
    void bake(const QString& input, const std::vector<size_t>& order)
    {
        for (PlanNode& node : m_nodes) {
            node.writtenPath.clear();
            node.writtenPerTile.clear();
        }
        for (const size_t index : order)
            if (m_nodes[index].baker)
                bakeNode(input, int(index));
    }

private:
    void bakeNode(const QString& input, int index)
    {
        PlanNode& node = m_nodes[size_t(index)];
        m_settings.setCurrentNode(index);
        m_settings.setCurrentTile(std::nullopt);
        if (!transferSettings(*node.baker, m_settings) || !applyTangentSpaceSettings(m_settings)
            || !prepareLowScene(input))
            return;
        bool failed = false;
        const Ond::SceneGraph::SceneSPtr high = highSceneOf(*node.baker, failed);
        if (failed)
            return;
        QString cage = normalizePath(m_settings.getString(QStringLiteral("cage-mesh"), QString()));
        if (cage.isEmpty())
            cage = m_sharedCage;

        const auto save = [&](const BakerSettingsMap& settings, std::optional<uint16_t> udim) {
            const QString written =
                saveBaker(settings, *node.baker, node.subcommand, input, m_context, m_low, high, cage);
            record(node, written, udim);
        };

        const TileRequest tiles = tilesOfNode(m_settings, m_sharedTiles);
        if (!tiles.everyCoveredTile && tiles.udims.empty()) {
            save(m_settings, std::nullopt);
            return;
        }
        std::vector<uint16_t> udims = tiles.udims;
        if (tiles.everyCoveredTile) {
            udims = bakedTilesOf(*node.baker, *m_low, input);
            if (udims.empty())
                record(node, QString(), std::nullopt);
        }
        const TileNamedSettings tileNamed(m_settings);
        const BakerSettingsMap& settings =
            tiles.everyCoveredTile ? static_cast<const BakerSettingsMap&>(tileNamed) : m_settings;
        for (const uint16_t udim : udims) {
            const auto tile = Vrn::Baking::tileOfUdim(udim);
            if (!tile)
                continue;
            m_settings.setCurrentTile(udim);
            refreshReferences(node, m_settings);
            Ond::Baking::setPropertyValue(node.baker->properties(), "Common.UVTile", *tile);
            save(settings, udim);
        }
    }

    // Loads the low scene unless the last one was made the same way.
    bool prepareLowScene(const QString& input)
    {
        LowSceneKey key{input, m_settings.getStringList(QStringLiteral("input-selection"), QStringList()),
                        m_settings.getBool(QStringLiteral("recompute-tangents"), false),
                        m_settings.getString(QStringLiteral("tangent-space-plugin"), QString()),
                        Ond::SceneGraph::MeshProcessing::TangentSpaceGenerator::isPerFragmentBinormal()};
        if (m_low && key == m_lowKey)
            return true;
        m_low = loadScene(m_context, input, key.selection, key.recomputeTangents);
        m_lowKey = key;
        return bool(m_low);
    }

    // None for a low-poly baker; `failed` (with the reason in the log) when a
    // detail baker has nothing to bake from.
    Ond::SceneGraph::SceneSPtr highSceneOf(Ond::Baking::AbstractMapBaker& baker, bool& failed)
    {
        failed = false;
        const HighSource source = highSourceOf(baker);
        if (source != HighSource::Files)
            return source == HighSource::Low ? m_low : nullptr;
        QStringList highMeshes =
            normalizePaths(m_settings.getStringList(QStringLiteral("highdef-mesh"), QStringList()));
        if (highMeshes.isEmpty())
            highMeshes = m_sharedHigh;
        if (highMeshes.isEmpty()) {
            zmfBakerChannel().error(QStringLiteral("Error: No high poly scene given."));
            failed = true;
            return nullptr;
        }
        // Bakers load their high meshes with more or less (tangent frames
        // for the texture baker, the least for curvature): a scene serves
        // the bakers of the same flags.
        const uint32_t flags = highLoadFlags(baker.identifier());
        if (!m_high || highMeshes != m_highKey || flags != m_highFlags) {
            m_high = loadHighScenes(m_context, highMeshes, baker.identifier());
            m_highKey = highMeshes;
            m_highFlags = flags;
        }
        failed = !m_high;
        return m_high;
    }

    void record(PlanNode& node, const QString& written, std::optional<uint16_t> udim)
    {
        zmfBakerChannel().info(QStringLiteral("Writing file '%1'...").arg(written));
        node.writtenPath = written.toStdString();
        if (udim && !written.isEmpty())
            node.writtenPerTile[*udim] = node.writtenPath;
    }

    std::vector<PlanNode>& m_nodes;
    JsonSettingsMap& m_settings;
    const TileRequest m_sharedTiles;
    const QStringList m_sharedHigh;
    const QString m_sharedCage;
    Vrn::Baking::BakingContext m_context;
    Ond::SceneGraph::SceneSPtr m_low;
    LowSceneKey m_lowKey;
    Ond::SceneGraph::SceneSPtr m_high;
    QStringList m_highKey;
    uint32_t m_highFlags = 0;
};

} // namespace

BatchCommand::BatchCommand()
    : Ond::Program::ProgramCommand(QStringLiteral("run"),
                                   QStringLiteral("Bake several maps as described by a JSON execution plan."))
{
    OptionGroup batch(QStringLiteral("Batch options"));
    batch.addOption(TypedCommandLineOption(JsonOption, QMetaType::QString,
                                           QStringLiteral("Json file describing an execution plan."),
                                           QStringLiteral("path")));
    batch.addOption(boolOption(QStringLiteral("disable-gpu"), QStringLiteral("Disable GPU Raytracing.")));
    batch.addOption(boolOption(QStringLiteral("force-optix"), QStringLiteral("Force Optix Raytracing.")));
    batch.addOption(boolOption(QStringLiteral("force-dxr"),
                               QStringLiteral("Force DXR Raytracing on video cards that support it partially.")));
    addOptionGroup(batch);
}

QString BatchCommand::implicitOptionName() const
{
    return JsonOption;
}

int BatchCommand::process(const Ond::Program::ParsedValues& values)
{
    auto& log = zmfBakerChannel();
    const QString planPath = values.value(JsonOption).toString();
    if (planPath.isEmpty()) {
        log.error(QStringLiteral("You must provide a path to a json path with option %1.").arg(JsonOption));
        return 1;
    }
    if (!QFileInfo::exists(planPath)) {
        log.error(QStringLiteral("File \"%1\" not found.").arg(planPath));
        return 1;
    }
    QFile file(planPath);
    if (!file.open(QIODevice::ReadOnly)) {
        log.error(QStringLiteral("Could not open file \"%1\".").arg(planPath));
        return 1;
    }
    Json::Value root;
    if (!ExecutionPlan::parse(file.readAll(), root)) {
        log.error(QStringLiteral("An error occurred while parsing \"%1\".").arg(planPath));
        return 1;
    }

    // The switches are the command line's alone: values in the plan give way.
    if (root.isObject())
        for (const char* name : GpuOptions)
            root[name] = values.value(QString::fromLatin1(name)).toBool();

    const ExecutionPlan::Validation validation = ExecutionPlan::validate(root);
    if (!validation.errors.isEmpty()) {
        log.error(QStringLiteral("JSON file \"%1\" is an invalid file.").arg(planPath));
        for (const QString& error : validation.errors)
            log.error(error);
        return 1;
    }
    const std::set<QString> warnings(validation.warnings.begin(), validation.warnings.end());
    for (const QString& warning : warnings)
        log.warning(warning);

    std::vector<PlanNode> nodes = ExecutionPlan::buildNodes(root);
    auto& manager = Ond::Baking::GLMapBakerManager::instance();
    const std::string fileFilter = imageFileFilter();
    for (PlanNode& node : nodes) {
        for (const Ond::Baking::BakerInfo& info : Ond::Baking::registeredBakers())
            if (node.subcommand == QLatin1String(info.subcommand))
                node.baker = manager.create(QByteArray(info.key), fileFilter);
    }

    if (ExecutionPlan::hasCycle(nodes)) {
        log.error(QStringLiteral("You have defined cyclic dependencies between your bakers."));
        return 1;
    }
    const std::vector<size_t> order = ExecutionPlan::executionOrder(nodes);

    JsonSettingsMap settings(root, nodes);
    const QStringList inputs = settings.getStringList(QStringLiteral("inputs"), QStringList());
    const QStringList sharedHigh =
        normalizePaths(settings.getStringList(QStringLiteral("highdef-mesh"), QStringList()));
    const QString sharedCage = normalizePath(settings.getString(QStringLiteral("cage-mesh"), QString()));
    const TileRequest sharedTiles =
        settings.has(UvTilesSetting) ? tileRequestOf(settings.getStringList(UvTilesSetting, QStringList()))
                                     : TileRequest();

    if (inputs.isEmpty()) {
        log.error(QStringLiteral("Error: No input(s) specified !"));
        return 1;
    }

    PlanRun run(nodes, settings, sharedTiles, sharedHigh, sharedCage);
    for (const QString& input : inputs)
        run.bake(input, order);
    return 0;
}

} // namespace ProgramCommand
