#include "program/ProgramCommand.h"

#include "program/LogChannel.h"
#include "program/TypedCommandLineParser.h"

namespace Ond::Program {

namespace {

void addAllOptions(TypedCommandLineParser& parser, const OptionGroupConstSPtr& global,
                   const QList<OptionGroup>& groups)
{
    if (global)
        parser.addOptions(*global);
    for (const OptionGroup& group : groups)
        parser.addOptions(group);
}

} // namespace

ProgramCommand::ProgramCommand(const QString& name, const QString& description)
    : m_name(name)
    , m_description(description)
{
}

ProgramCommand::~ProgramCommand() = default;

QString ProgramCommand::implicitOptionName() const { return QString(); }

void ProgramCommand::addOptionGroup(const OptionGroup& group) { m_groups.append(group); }

const TypedCommandLineOption* ProgramCommand::findOption(const QString& name) const
{
    for (const OptionGroup& group : m_groups) {
        if (const TypedCommandLineOption* option = group.findOption(name))
            return option;
    }
    return nullptr;
}

int ProgramCommand::process(const QStringList& arguments)
{
    TypedCommandLineParser parser;
    addAllOptions(parser, m_globalOptions, m_groups);
    if (!parser.parse(arguments)) {
        Core::cliParserChannel().error(parser.errorText());
        return 1;
    }

    ParsedValues values = parser.values();
    if (!values.positionalArguments.isEmpty())
        values.positionalArguments.removeFirst();

    const QString implicitName = implicitOptionName();
    if (!values.positionalArguments.isEmpty() && !implicitName.isEmpty()) {
        const TypedCommandLineOption* implicitOption = parser.findOption(implicitName);
        if (!implicitOption) {
            values.options.insert(implicitName, values.positionalArguments);
        } else {
            // Hand the positional arguments to the option as if written out,
            // so that they are converted like any explicit value.
            const QString dashed = TypedCommandLineOption::dashedName(implicitName);
            QStringList implicitArguments{arguments.value(0)};
            for (const QString& positional : values.positionalArguments)
                implicitArguments << dashed << positional;

            TypedCommandLineParser implicitParser;
            addAllOptions(implicitParser, m_globalOptions, m_groups);
            implicitParser.parse(implicitArguments);

            const QString key = implicitOption->key();
            if (implicitOption->isStringList()) {
                QStringList merged = values.options.value(key).toStringList();
                merged += implicitParser.value(implicitName).toStringList();
                values.options.insert(key, merged);
            } else if (implicitParser.isSet(implicitName)) {
                const QVariant converted = implicitParser.value(implicitName);
                if (converted.isValid())
                    values.options.insert(key, converted);
                else
                    values.options.remove(key);
            }
        }
    }

    if (m_globalOptions && m_handlerRunner && m_handlerRunner->runGlobalHandlers(m_name, values))
        return 0;

    return process(values);
}

} // namespace Ond::Program
