#include "program/OptionGroup.h"

namespace Ond::Program {

OptionGroup::OptionGroup(const QString& name, const QString& description)
    : m_name(name)
    , m_description(description)
{
}

void OptionGroup::addOption(const TypedCommandLineOption& option) { m_options.append(option); }

void OptionGroup::addOptions(const QList<TypedCommandLineOption>& options) { m_options.append(options); }

const TypedCommandLineOption* OptionGroup::findOption(const QString& name) const
{
    for (const TypedCommandLineOption& option : m_options) {
        if (option.names().contains(name))
            return &option;
    }
    return nullptr;
}

} // namespace Ond::Program
