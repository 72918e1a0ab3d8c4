#include "program/ProgramOptions.h"

#include "program/LogChannel.h"
#include "program/TypedCommandLineParser.h"

namespace Ond::Program {

ProgramOptions::ProgramOptions(const QString& programName)
    : m_globalOptions(std::make_shared<OptionGroup>(QStringLiteral("Global options")))
    , m_programName(programName)
{
}

ProgramOptions::~ProgramOptions()
{
    for (const ProgramCommandSPtr& command : m_commands)
        command->setGlobalHandlerRunner(nullptr);
}

void ProgramOptions::addCommand(const ProgramCommandSPtr& command)
{
    if (!command)
        return;
    command->setGlobalOptions(m_globalOptions);
    command->setGlobalHandlerRunner(this);
    m_commands.append(command);
}

void ProgramOptions::addHandler(const OptionHandlerSPtr& handler)
{
    if (!handler)
        return;
    const QList<TypedCommandLineOption> options = handler->options();
    m_globalOptions->addOptions(options);
    for (const TypedCommandLineOption& option : options)
        m_handlers.insert(option.key(), handler);
}

int ProgramOptions::process(const QStringList& arguments)
{
    if (m_commands.size() == 1) {
        QStringList withName = arguments;
        withName.insert(qMin(1, int(withName.size())), m_commands.first()->name());
        return m_commands.first()->process(withName);
    }

    for (const ProgramCommandSPtr& command : m_commands) {
        TypedCommandLineParser parser;
        parser.addOptions(*m_globalOptions);
        for (const OptionGroup& group : command->optionGroups())
            parser.addOptions(group);
        parser.parse(arguments);
        const QStringList positional = parser.positionalArguments();
        if (!positional.isEmpty() && positional.first() == command->name())
            return command->process(arguments);
    }

    TypedCommandLineParser parser;
    parser.addOptions(*m_globalOptions);
    if (!parser.parse(arguments)) {
        Core::cliParserChannel().error(parser.errorText());
        Core::cliParserChannel().info(parser.positionalArguments().join(QLatin1Char(' ')));
        return 1;
    }

    const ParsedValues values = parser.values();
    if (runGlobalHandlers(QString(), values))
        return 0;

    if (!values.positionalArguments.isEmpty()) {
        Core::cliParserChannel().error(
            QStringLiteral("Unknown subcommand '%1'.  Run '%2 --help' to see available subcommands.")
                .arg(values.positionalArguments.first(), m_programName));
    } else {
        Core::cliParserChannel().error(
            QStringLiteral("A subcommand must be provided.  Run '%2 --help' to see available subcommands.")
                .arg(m_programName));
    }
    return 1;
}

bool ProgramOptions::runGlobalHandlers(const QString& commandName, const ParsedValues& values)
{
    for (const TypedCommandLineOption& option : m_globalOptions->options()) {
        const QString key = option.key();
        if (!values.options.contains(key))
            continue;
        const OptionHandlerSPtr handler = m_handlers.value(key);
        if (!handler) {
            Core::cliParserChannel().error(
                QStringLiteral("No handler for global option %1").arg(TypedCommandLineOption::dashedName(key)));
            continue;
        }
        bool handled = false;
        handler->handle(commandName, key, values.options.value(key), handled);
        if (handled)
            return true;
    }
    return false;
}

} // namespace Ond::Program
