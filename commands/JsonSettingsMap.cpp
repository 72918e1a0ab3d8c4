#include "commands/JsonSettingsMap.h"

#include <QLocale>

namespace ProgramCommand {

namespace {

const Json::Value& nullValue()
{
    static const Json::Value null;
    return null;
}

// Pairs are objects of two integers; "u"/"v" and "x"/"y" read as
// "width"/"height", and a list of two integers is accepted too.
std::optional<std::pair<int, int>> pairOf(const Json::Value& value)
{
    if (value.isArray() && value.size() == 2 && value[0].isInt() && value[1].isInt())
        return std::make_pair(value[0].asInt(), value[1].asInt());
    if (!value.isObject())
        return std::nullopt;
    static const char* const names[][2] = {{"width", "height"}, {"u", "v"}, {"x", "y"}};
    for (const auto& n : names) {
        const Json::Value& first = value[n[0]];
        const Json::Value& second = value[n[1]];
        if (first.isInt() && second.isInt())
            return std::make_pair(first.asInt(), second.asInt());
    }
    return std::nullopt;
}

} // namespace

JsonSettingsMap::JsonSettingsMap(const Json::Value& root, const std::vector<PlanNode>& nodes)
    : m_root(root)
    , m_nodes(nodes)
{
}

const Json::Value* JsonSettingsMap::nodeParameter(const std::string& key) const
{
    if (m_current < 0 || size_t(m_current) >= m_nodes.size() || !m_root.isObject())
        return nullptr;
    const Json::Value& node = m_root[m_nodes[size_t(m_current)].name];
    if (!node.isObject())
        return nullptr;
    const Json::Value& parameters = node["parameters"];
    if (!parameters.isObject() || !parameters.isMember(key))
        return nullptr;
    return &parameters[key];
}

bool JsonSettingsMap::nodeHas(const QString& name) const
{
    return nodeParameter(name.toStdString()) != nullptr;
}

const Json::Value& JsonSettingsMap::lookup(const QString& name) const
{
    const std::string key = name.toStdString();
    if (const Json::Value* own = nodeParameter(key))
        return *own;
    if (m_root.isObject() && m_root.isMember(key))
        return m_root[key];
    return nullValue();
}

std::optional<QString> JsonSettingsMap::resolve(const QString& reference, const QString& name) const
{
    if (m_current < 0 || size_t(m_current) >= m_nodes.size())
        return std::nullopt;
    const QString target = reference.mid(int(qstrlen(ExecutionPlan::ReferencePrefix)));
    for (const PlanReference& edge : m_nodes[size_t(m_current)].references) {
        if (edge.parameter != name)
            continue;
        const PlanNode& producer = m_nodes[edge.target];
        if (QString::fromStdString(producer.name) != target)
            continue;
        if (m_tile) {
            const auto perTile = producer.writtenPerTile.find(*m_tile);
            if (perTile != producer.writtenPerTile.end())
                return QString::fromStdString(perTile->second);
        }
        return QString::fromStdString(producer.writtenPath);
    }
    return std::nullopt;
}

std::optional<QString> JsonSettingsMap::textOf(const Json::Value& value, const QString& name) const
{
    switch (value.type()) {
    case Json::stringValue: {
        const QString text = QString::fromStdString(value.asString());
        if (text.startsWith(QLatin1String(ExecutionPlan::ReferencePrefix)))
            return resolve(text, name);
        return text;
    }
    case Json::booleanValue:
        return value.asBool() ? QStringLiteral("true") : QStringLiteral("false");
    case Json::intValue:
        return QString::number(value.asLargestInt());
    case Json::uintValue:
        return QString::number(value.asLargestUInt());
    case Json::realValue:
        return QString::number(value.asDouble(), 'g', QLocale::FloatingPointShortest);
    case Json::objectValue:
        if (const auto pair = pairOf(value))
            return QStringLiteral("%1,%2").arg(pair->first).arg(pair->second);
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

bool JsonSettingsMap::has(const QString& name) const
{
    return !lookup(name).isNull();
}

bool JsonSettingsMap::getBool(const QString& name, bool defaultValue) const
{
    const Json::Value& value = lookup(name);
    if (value.isBool())
        return value.asBool();
    if (value.isNumeric())
        return value.asDouble() != 0.0;
    if (value.isString()) {
        const QString text = QString::fromStdString(value.asString()).trimmed().toLower();
        if (text == QLatin1String("true") || text == QLatin1String("1"))
            return true;
        if (text == QLatin1String("false") || text == QLatin1String("0"))
            return false;
    }
    return defaultValue;
}

QString JsonSettingsMap::getString(const QString& name, const QString& defaultValue) const
{
    const Json::Value& value = lookup(name);
    if (value.isArray() && value.size() == 1)
        return textOf(value[0], name).value_or(defaultValue);
    return textOf(value, name).value_or(defaultValue);
}

QStringList JsonSettingsMap::getStringList(const QString& name, const QStringList& defaultValue) const
{
    const Json::Value& value = lookup(name);
    if (value.isArray()) {
        QStringList list;
        for (const Json::Value& item : value)
            if (const auto text = textOf(item, name))
                list << *text;
        return list;
    }
    if (const auto text = textOf(value, name))
        return QStringList{*text};
    return defaultValue;
}

QSize JsonSettingsMap::getSize(const QString& name, const QSize& defaultValue) const
{
    const auto pair = pairOf(lookup(name));
    return pair ? QSize(pair->first, pair->second) : defaultValue;
}

QPoint JsonSettingsMap::getPoint(const QString& name, const QPoint& defaultValue) const
{
    const auto pair = pairOf(lookup(name));
    return pair ? QPoint(pair->first, pair->second) : defaultValue;
}

} // namespace ProgramCommand
