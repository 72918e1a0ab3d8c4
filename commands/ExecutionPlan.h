#pragma once
// A JSON execution plan: shared settings, baker nodes, and the references
// ("baker://<node>") by which one node reads the file another one wrote.
// Reading and checking a plan bakes nothing and needs no GL context.

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <json/value.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Ond::Baking {
class AbstractMapBaker;
}

namespace ProgramCommand {

struct PlanReference
{
    size_t target = 0;      // index of the producing node
    std::string propertyId; // the parameter's property; empty for a setting that is none
    QString parameter;      // the parameter's name in the plan
};

struct PlanNode
{
    std::string name;
    QString subcommand;
    // The file this node wrote last, and per tile, for the current input.
    std::string writtenPath;
    std::map<uint16_t, std::string> writtenPerTile;
    std::shared_ptr<Ond::Baking::AbstractMapBaker> baker;
    std::vector<PlanReference> references;
};

namespace ExecutionPlan {

extern const char* const ReferencePrefix; // "baker://"

// False when the text is no JSON document.
bool parse(const QByteArray& text, Json::Value& root);

struct Validation
{
    QStringList errors;
    QStringList warnings;
};
Validation validate(const Json::Value& root);

// An object with a string `baker` and, if any, an object `parameters`.
bool isBakerNode(const Json::Value& value);

// The settings a plan may share between its nodes.
const QStringList& sharedSettingNames();

// One node per top-level baker node, in member order, with its references.
// A reference to a name that is no node is left out. Bakers aren't created.
std::vector<PlanNode> buildNodes(const Json::Value& root);

bool hasCycle(const std::vector<PlanNode>& nodes);

// Producers before their consumers; between independent nodes, the lower
// index first. Only for a plan without cycles.
std::vector<size_t> executionOrder(const std::vector<PlanNode>& nodes);

} // namespace ExecutionPlan

} // namespace ProgramCommand
