#pragma once
// A subcommand: its name, its description, its option groups and the work it
// does. Subclasses declare their groups in the constructor and implement
// process(const ParsedValues&); the base parses the command line.
//
// A subclass that overrides process(values) hides process(arguments) for
// calls through the subclass type; add `using ProgramCommand::process;` if
// such calls are needed.

#include "program/OptionGroup.h"
#include "program/ParsedValues.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

namespace Ond::Program {

class ProgramCommand
{
public:
    explicit ProgramCommand(const QString& name = QString(), const QString& description = QString());
    virtual ~ProgramCommand();

    // Parses a whole command line (program name first, then this command's
    // name), runs the global handlers and then process(values).
    virtual int process(const QStringList& arguments);
    // The option that receives the positional arguments; empty for none.
    virtual QString implicitOptionName() const;
    // The command proper: 0 success, 1 failure.
    virtual int process(const ParsedValues& values) = 0;

    const QString& name() const { return m_name; }
    void setName(const QString& name) { m_name = name; }
    const QString& description() const { return m_description; }
    void setDescription(const QString& description) { m_description = description; }

    void addOptionGroup(const OptionGroup& group);
    const QList<OptionGroup>& optionGroups() const { return m_groups; }
    // Null when no option of the groups has that name.
    const TypedCommandLineOption* findOption(const QString& name) const;

    // Set by ProgramOptions::addCommand.
    const OptionGroupConstSPtr& globalOptions() const { return m_globalOptions; }
    void setGlobalOptions(const OptionGroupConstSPtr& group) { m_globalOptions = group; }

    // Who runs the handlers of the global options (ProgramOptions).
    class GlobalHandlerRunner
    {
    public:
        virtual ~GlobalHandlerRunner() = default;
        // True when a handler dealt with the whole run.
        virtual bool runGlobalHandlers(const QString& commandName, const ParsedValues& values) = 0;
    };
    void setGlobalHandlerRunner(GlobalHandlerRunner* runner) { m_handlerRunner = runner; }

private:
    OptionGroupConstSPtr m_globalOptions;
    GlobalHandlerRunner* m_handlerRunner = nullptr;
    QString m_name;
    QString m_description;
    QList<OptionGroup> m_groups;
};

using ProgramCommandSPtr = std::shared_ptr<ProgramCommand>;

} // namespace Ond::Program
