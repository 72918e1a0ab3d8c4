// The plan reader on arbitrary text: parse, check, build the node graph,
// order it and read every setting the way `run` does, without baking.
// fuzz-libs: zmf_commands

#include "commands/ExecutionPlan.h"
#include "commands/JsonSettingsMap.h"
#include "commands/UvTileList.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

void readSettings(const ProgramCommand::JsonSettingsMap& settings)
{
    QStringList names = ProgramCommand::ExecutionPlan::sharedSettingNames();
    names << QStringLiteral("texture-file") << QStringLiteral("normal") << QStringLiteral("nb-second-rays");
    for (const QString& name : names) {
        (void)settings.has(name);
        (void)settings.getBool(name, false);
        (void)settings.getString(name, QString());
        (void)settings.getSize(name, QSize());
        (void)settings.getPoint(name, QPoint());
        (void)settings.getStringList(name, QStringList());
    }
    const QStringList tiles = settings.getStringList(QStringLiteral("uvTiles"), QStringList());
    if (!ProgramCommand::UvTileList::isAuto(tiles))
        (void)ProgramCommand::UvTileList::parse(tiles);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace ProgramCommand;
    Json::Value root;
    if (!ExecutionPlan::parse(QByteArray(reinterpret_cast<const char*>(data), int(size)), root))
        return 0;
    const ExecutionPlan::Validation validation = ExecutionPlan::validate(root);
    if (!validation.errors.isEmpty())
        return 0;

    std::vector<PlanNode> nodes = ExecutionPlan::buildNodes(root);
    for (const PlanNode& node : nodes)
        for (const PlanReference& reference : node.references)
            if (reference.target >= nodes.size())
                std::abort();
    if (ExecutionPlan::hasCycle(nodes))
        return 0;
    const std::vector<size_t> order = ExecutionPlan::executionOrder(nodes);
    if (order.size() != nodes.size())
        std::abort();
    // Each producer comes before its consumers.
    std::vector<size_t> position(nodes.size());
    for (size_t i = 0; i < order.size(); ++i)
        position[order[i]] = i;
    for (size_t i = 0; i < nodes.size(); ++i)
        for (const PlanReference& reference : nodes[i].references)
            if (position[reference.target] >= position[i])
                std::abort();

    JsonSettingsMap settings(root, nodes);
    readSettings(settings);
    for (size_t i = 0; i < nodes.size(); ++i) {
        nodes[i].writtenPath = "written.png";
        nodes[i].writtenPerTile[1001] = "written_1001.png";
    }
    for (const size_t index : order) {
        settings.setCurrentNode(int(index));
        settings.setCurrentTile(uint16_t(1001));
        readSettings(settings);
    }
    return 0;
}
