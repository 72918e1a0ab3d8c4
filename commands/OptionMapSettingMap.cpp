#include "commands/OptionMapSettingMap.h"

namespace ProgramCommand {

OptionMapSettingMap::OptionMapSettingMap(QHash<QString, QVariant> values)
    : m_values(std::move(values))
{
}

bool OptionMapSettingMap::has(const QString& name) const
{
    return m_values.contains(name);
}

bool OptionMapSettingMap::getBool(const QString& name, bool defaultValue) const
{
    return has(name) ? m_values.value(name).toBool() : defaultValue;
}

QString OptionMapSettingMap::getString(const QString& name, const QString& defaultValue) const
{
    return has(name) ? m_values.value(name).toString() : defaultValue;
}

QSize OptionMapSettingMap::getSize(const QString& name, const QSize& defaultValue) const
{
    return has(name) ? m_values.value(name).toSize() : defaultValue;
}

QStringList OptionMapSettingMap::getStringList(const QString& name, const QStringList& defaultValue) const
{
    return has(name) ? m_values.value(name).toStringList() : defaultValue;
}

QPoint OptionMapSettingMap::getPoint(const QString& name, const QPoint& defaultValue) const
{
    return has(name) ? m_values.value(name).toPoint() : defaultValue;
}

} // namespace ProgramCommand
