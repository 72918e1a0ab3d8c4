#include "commands/ExecutionPlan.h"

#include "baking/BakerCatalogue.h"
#include "baking/PropertyCatalogue.h"

#include <boost/graph/adjacency_list.hpp>
#include <boost/graph/depth_first_search.hpp>

#include <json/reader.h>

#include <memory>

namespace ProgramCommand::ExecutionPlan {

const char* const ReferencePrefix = "baker://";

namespace {

using Graph = boost::adjacency_list<boost::vecS, boost::vecS, boost::directedS>;
using Vertex = boost::graph_traits<Graph>::vertex_descriptor;

const Ond::Baking::BakerInfo* findBakerBySubcommand(const std::string& subcommand)
{
    for (const Ond::Baking::BakerInfo& info : Ond::Baking::registeredBakers())
        if (subcommand == info.subcommand)
            return &info;
    return nullptr;
}

std::vector<std::string> propertyIdentifiers(const std::string& bakerIdentifier)
{
    std::vector<std::string> ids = Ond::Baking::commonPropertyIdentifiers();
    for (const std::string& id : Ond::Baking::ownPropertyIdentifiers(bakerIdentifier))
        ids.push_back(id);
    return ids;
}

// The property a node's parameter sets, through its option name.
std::string propertyOfParameter(const std::string& subcommand, const std::string& parameter)
{
    const Ond::Baking::BakerInfo* info = findBakerBySubcommand(subcommand);
    if (!info)
        return {};
    for (const std::string& id : propertyIdentifiers(info->identifier))
        if (Ond::Baking::optionName(id) == parameter)
            return id;
    return {};
}

void validateNode(const Json::Value& node, QStringList& errors)
{
    const std::string subcommand = node["baker"].asString();
    const Ond::Baking::BakerInfo* info = findBakerBySubcommand(subcommand);
    if (!info) {
        errors << QStringLiteral("Error: baker %1 not found.").arg(QString::fromStdString(subcommand));
        return;
    }
    QStringList allowed = sharedSettingNames();
    for (const std::string& id : propertyIdentifiers(info->identifier)) {
        const std::string option = Ond::Baking::optionName(id);
        if (!option.empty())
            allowed << QString::fromStdString(option);
    }
    const Json::Value& parameters = node["parameters"];
    if (!parameters.isObject())
        return;
    for (const std::string& member : parameters.getMemberNames()) {
        const Json::Value& value = parameters[member];
        if (isBakerNode(value)) {
            validateNode(value, errors);
            continue;
        }
        const QString name = QString::fromStdString(member);
        if (!allowed.contains(name) && name != QLatin1String("uv-tile"))
            errors << QStringLiteral("%1: invalid attribute.").arg(name);
    }
}

struct CycleFinder : boost::default_dfs_visitor
{
    explicit CycleFinder(bool& found)
        : found(found)
    {
    }
    template <class Edge, class G> void back_edge(Edge, const G&) { found = true; }
    bool& found;
};

struct FinishRecorder : boost::default_dfs_visitor
{
    explicit FinishRecorder(std::vector<size_t>& order)
        : order(order)
    {
    }
    template <class V, class G> void finish_vertex(V v, const G&) { order.push_back(size_t(v)); }
    std::vector<size_t>& order;
};

Graph graphOf(const std::vector<PlanNode>& nodes)
{
    Graph graph(nodes.size());
    for (size_t i = 0; i < nodes.size(); ++i)
        for (const PlanReference& reference : nodes[i].references)
            boost::add_edge(Vertex(i), Vertex(reference.target), graph);
    return graph;
}

} // namespace

const QStringList& sharedSettingNames()
{
    static const QStringList names = {
        QStringLiteral("inputs"),           QStringLiteral("uvTiles"),
        QStringLiteral("output-path"),      QStringLiteral("output-name"),
        QStringLiteral("output-format"),    QStringLiteral("output-format-compression"),
        QStringLiteral("input-selection"),  QStringLiteral("tangent-space-plugin"),
        QStringLiteral("recompute-tangents"), QStringLiteral("per-fragment-binormal"),
        QStringLiteral("name-suffix-low"),  QStringLiteral("name-suffix-high"),
        QStringLiteral("cage-mesh"),        QStringLiteral("highdef-mesh"),
        QStringLiteral("output-size"),      QStringLiteral("force-optix"),
        QStringLiteral("force-dxr"),        QStringLiteral("disable-gpu"),
        QStringLiteral("apply-diffusion"),  QStringLiteral("dilation-width"),
        QStringLiteral("uv-set"),           QStringLiteral("uv-tile"),
        QStringLiteral("udim"),
    };
    return names;
}

bool parse(const QByteArray& text, Json::Value& root)
{
    Json::CharReaderBuilder builder;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    std::string errors;
    root = Json::Value();
    try {
        return reader->parse(text.constData(), text.constData() + text.size(), &root, &errors);
    } catch (const std::exception&) {
        // jsoncpp throws on documents nested too deep.
        return false;
    }
}

bool isBakerNode(const Json::Value& value)
{
    if (!value.isObject() || !value.isMember("baker") || !value["baker"].isString())
        return false;
    return !value.isMember("parameters") || value["parameters"].isObject();
}

Validation validate(const Json::Value& root)
{
    Validation result;
    if (!root.isObject() || !root.isMember("inputs")) {
        result.errors << QStringLiteral("%1 not found at top level.").arg(QStringLiteral("inputs"));
        return result;
    }
    const std::vector<std::string> members = root.getMemberNames();
    for (const std::string& member : members) {
        const QString name = QString::fromStdString(member);
        if (!isBakerNode(root[member]) && !sharedSettingNames().contains(name))
            result.errors << QStringLiteral("%1: invalid attribute.").arg(name);
    }
    for (const std::string& member : members)
        if (isBakerNode(root[member]))
            validateNode(root[member], result.errors);
    return result;
}

std::vector<PlanNode> buildNodes(const Json::Value& root)
{
    std::vector<PlanNode> nodes;
    if (!root.isObject())
        return nodes;
    for (const std::string& member : root.getMemberNames()) {
        if (!isBakerNode(root[member]))
            continue;
        PlanNode node;
        node.name = member;
        node.subcommand = QString::fromStdString(root[member]["baker"].asString());
        nodes.push_back(std::move(node));
    }
    const auto indexOf = [&nodes](const std::string& name) -> long {
        for (size_t i = 0; i < nodes.size(); ++i)
            if (nodes[i].name == name)
                return long(i);
        return -1;
    };
    const std::string prefix = ReferencePrefix;
    for (PlanNode& node : nodes) {
        const Json::Value& parameters = root[node.name]["parameters"];
        if (!parameters.isObject())
            continue;
        for (const std::string& parameter : parameters.getMemberNames()) {
            const Json::Value& value = parameters[parameter];
            // A list of paths (high meshes) may hold references too.
            std::vector<std::string> texts;
            if (value.isString()) {
                texts.push_back(value.asString());
            } else if (value.isArray()) {
                for (const Json::Value& item : value)
                    if (item.isString())
                        texts.push_back(item.asString());
            }
            for (const std::string& text : texts) {
                if (text.compare(0, prefix.size(), prefix) != 0)
                    continue;
                const long target = indexOf(text.substr(prefix.size()));
                if (target < 0)
                    continue;
                node.references.push_back(PlanReference{
                    size_t(target), propertyOfParameter(node.subcommand.toStdString(), parameter),
                    QString::fromStdString(parameter)});
            }
        }
    }
    return nodes;
}

bool hasCycle(const std::vector<PlanNode>& nodes)
{
    const Graph graph = graphOf(nodes);
    bool found = false;
    boost::depth_first_search(graph, boost::visitor(CycleFinder(found)));
    return found;
}

std::vector<size_t> executionOrder(const std::vector<PlanNode>& nodes)
{
    // A reference points from the consumer to the producer, so a vertex
    // finishes after everything it reads from.
    const Graph graph = graphOf(nodes);
    std::vector<size_t> order;
    order.reserve(nodes.size());
    boost::depth_first_search(graph, boost::visitor(FinishRecorder(order)));
    return order;
}

} // namespace ProgramCommand::ExecutionPlan
