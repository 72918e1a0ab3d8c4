#pragma once
// A named list of options: the unit in which commands declare options and in
// which help lists them.

#include "program/TypedCommandLineOption.h"

#include <QList>
#include <QString>

#include <memory>

namespace Ond::Program {

class OptionGroup
{
public:
    explicit OptionGroup(const QString& name = QString(), const QString& description = QString());

    const QString& name() const { return m_name; }
    void setName(const QString& name) { m_name = name; }
    const QString& description() const { return m_description; }
    void setDescription(const QString& description) { m_description = description; }

    void addOption(const TypedCommandLineOption& option);
    void addOptions(const QList<TypedCommandLineOption>& options);
    const QList<TypedCommandLineOption>& options() const { return m_options; }
    // Null when no option of the group has that name.
    const TypedCommandLineOption* findOption(const QString& name) const;
    bool isEmpty() const { return m_options.isEmpty(); }

private:
    QString m_name;
    QString m_description;
    QList<TypedCommandLineOption> m_options;
};

using OptionGroupSPtr = std::shared_ptr<OptionGroup>;
using OptionGroupConstSPtr = std::shared_ptr<const OptionGroup>;

} // namespace Ond::Program
