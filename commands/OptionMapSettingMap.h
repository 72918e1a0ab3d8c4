#pragma once
// Settings over the parsed values of a command line.

#include "commands/BakerSettingsMap.h"

#include <QHash>
#include <QVariant>

namespace ProgramCommand {

class OptionMapSettingMap : public BakerSettingsMap
{
public:
    explicit OptionMapSettingMap(QHash<QString, QVariant> values);

    bool has(const QString& name) const override;
    bool getBool(const QString& name, bool defaultValue) const override;
    QString getString(const QString& name, const QString& defaultValue) const override;
    QSize getSize(const QString& name, const QSize& defaultValue) const override;
    QStringList getStringList(const QString& name, const QStringList& defaultValue) const override;
    QPoint getPoint(const QString& name, const QPoint& defaultValue) const override;

private:
    QHash<QString, QVariant> m_values;
};

} // namespace ProgramCommand
