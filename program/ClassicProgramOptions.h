#pragma once
// ProgramOptions with the usual global options: help, HTML documentation,
// JSON option description, version, quiet and verbose. Constructing it also
// installs the console log and routes Qt's own messages to the log.

#include "program/CommandOptionDependentOptionHandler.h"
#include "program/ProgramOptions.h"

#include <QList>
#include <QString>

namespace Ond::Program {

class ClassicProgramOptions : public ProgramOptions
{
public:
    ClassicProgramOptions(const QString& programName, unsigned major, unsigned minor, unsigned patch,
                          unsigned buildNumber, const QString& commit);
    ~ClassicProgramOptions() override;

    // Also makes the command known to help and documentation.
    void addCommand(const ProgramCommandSPtr& command) override;

private:
    QList<CommandOptionDependentOptionHandlerSPtr> m_dependentHandlers;
    OptionHandlerSPtr m_verbosityHandler;
};

} // namespace Ond::Program
