#pragma once
// The root of the command line: the global options with their handlers and
// the subcommands. process() picks the subcommand from the first positional
// argument and hands it the whole line.

#include "program/OptionGroup.h"
#include "program/OptionHandler.h"
#include "program/ParsedValues.h"
#include "program/ProgramCommand.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

namespace Ond::Program {

class ProgramOptions : public ProgramCommand::GlobalHandlerRunner
{
public:
    explicit ProgramOptions(const QString& programName);
    ~ProgramOptions() override;

    ProgramOptions(const ProgramOptions&) = delete;
    ProgramOptions& operator=(const ProgramOptions&) = delete;

    // `arguments` starts with the program name. The result is the process status.
    virtual int process(const QStringList& arguments);
    virtual void addCommand(const ProgramCommandSPtr& command);

    // Appends the handler's options to the global group.
    void addHandler(const OptionHandlerSPtr& handler);

    const QString& programName() const { return m_programName; }
    OptionGroupConstSPtr globalOptions() const { return m_globalOptions; }
    const QList<ProgramCommandSPtr>& commands() const { return m_commands; }
    OptionHandlerSPtr handler(const QString& key) const { return m_handlers.value(key); }

    // Runs the handlers of the global options held by `values`, in group
    // order; true when one of them dealt with the whole run.
    bool runGlobalHandlers(const QString& commandName, const ParsedValues& values) override;

private:
    OptionGroupSPtr m_globalOptions;
    QHash<QString, OptionHandlerSPtr> m_handlers;
    QString m_programName;
    QList<ProgramCommandSPtr> m_commands;
};

} // namespace Ond::Program
