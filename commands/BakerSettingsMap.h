#pragma once
// Where a bake reads its settings from: the command line or a JSON plan.
// Every getter answers `defaultValue` for a name the source doesn't have.

#include <QPoint>
#include <QSize>
#include <QString>
#include <QStringList>

namespace ProgramCommand {

class BakerSettingsMap
{
public:
    virtual ~BakerSettingsMap() = default;

    virtual bool has(const QString& name) const = 0;
    virtual bool getBool(const QString& name, bool defaultValue) const = 0;
    virtual QString getString(const QString& name, const QString& defaultValue) const = 0;
    virtual QSize getSize(const QString& name, const QSize& defaultValue) const = 0;
    virtual QStringList getStringList(const QString& name, const QStringList& defaultValue) const = 0;
    virtual QPoint getPoint(const QString& name, const QPoint& defaultValue) const = 0;
};

} // namespace ProgramCommand
