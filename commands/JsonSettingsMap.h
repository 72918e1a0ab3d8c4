#pragma once
// The settings of a plan: a node's own parameters first, then the shared
// ones. A "baker://<node>" value reads as the file that node wrote for the
// current input (and tile, when it wrote one for that tile).

#include "commands/BakerSettingsMap.h"
#include "commands/ExecutionPlan.h"

#include <json/value.h>

#include <optional>
#include <vector>

namespace ProgramCommand {

class JsonSettingsMap : public BakerSettingsMap
{
public:
    // `nodes` must outlive the map; the map reads their written paths.
    JsonSettingsMap(const Json::Value& root, const std::vector<PlanNode>& nodes);

    // -1: the shared settings alone.
    void setCurrentNode(int index) { m_current = index; }
    int currentNode() const { return m_current; }
    void setCurrentTile(std::optional<uint16_t> udim) { m_tile = udim; }

    bool has(const QString& name) const override;
    bool getBool(const QString& name, bool defaultValue) const override;
    QString getString(const QString& name, const QString& defaultValue) const override;
    QSize getSize(const QString& name, const QSize& defaultValue) const override;
    QStringList getStringList(const QString& name, const QStringList& defaultValue) const override;
    QPoint getPoint(const QString& name, const QPoint& defaultValue) const override;

    // Whether the current node's own parameters have the name.
    bool nodeHas(const QString& name) const;
    // Null when neither the current node nor the root has the name.
    const Json::Value& lookup(const QString& name) const;

private:
    const Json::Value* nodeParameter(const std::string& key) const;
    // The text of a plain value, with references resolved; nullopt for
    // what has no text (objects, lists, null, unresolved references).
    std::optional<QString> textOf(const Json::Value& value, const QString& name) const;
    std::optional<QString> resolve(const QString& reference, const QString& name) const;

    const Json::Value& m_root;
    const std::vector<PlanNode>& m_nodes;
    int m_current = -1;
    std::optional<uint16_t> m_tile;
};

} // namespace ProgramCommand
