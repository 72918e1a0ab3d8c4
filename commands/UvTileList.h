#pragma once
// The tiles a bake loops over: the "uvTiles" list of a plan, and "auto",
// which stands for every tile the low mesh's UVs cover.

#include "commands/BakerSettingsMap.h"

#include "scene/graph/Scene.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

namespace ProgramCommand {

namespace UvTileList {

// "auto", in a plan's "uvTiles" or as --udim.
bool isAuto(const QStringList& tiles);
bool isAuto(const QString& tile);

// UDIM numbers ("1022") and zero-based tiles ("1x2"), in the given order,
// repeats kept. A single string with blanks is split at them. Tiles right
// of the ten columns are dropped silently; anything else is warned about.
std::vector<uint16_t> parse(const QStringList& tiles);

// UDIM numbers of the tiles reached by the selected parts of the scene in
// that UV set, in ascending order.
std::vector<uint16_t> coveredTiles(const Ond::SceneGraph::Scene& scene, int uvSet);

// The name pattern, with "_{udim}" added when it has no UDIM pattern, so
// that the files of several tiles don't overwrite each other.
QString namePerTile(const QString& pattern);

} // namespace UvTileList

// The settings of a bake of several tiles: as given, except that the output
// name always holds the UDIM pattern.
class TileNamedSettings : public BakerSettingsMap
{
public:
    explicit TileNamedSettings(const BakerSettingsMap& settings)
        : m_settings(settings)
    {
    }
    bool has(const QString& name) const override { return m_settings.has(name); }
    bool getBool(const QString& name, bool defaultValue) const override
    {
        return m_settings.getBool(name, defaultValue);
    }
    QString getString(const QString& name, const QString& defaultValue) const override;
    QSize getSize(const QString& name, const QSize& defaultValue) const override
    {
        return m_settings.getSize(name, defaultValue);
    }
    QStringList getStringList(const QString& name, const QStringList& defaultValue) const override
    {
        return m_settings.getStringList(name, defaultValue);
    }
    QPoint getPoint(const QString& name, const QPoint& defaultValue) const override
    {
        return m_settings.getPoint(name, defaultValue);
    }

private:
    const BakerSettingsMap& m_settings;
};

} // namespace ProgramCommand
