#include "program/ClassicProgramOptions.h"

#include "program/HTMLDocOptionHandler.h"
#include "program/HelpOptionHandler.h"
#include "program/JSonOptDescrOptionHandler.h"
#include "program/QtMessageRouting.h"
#include "program/ThreadLimitOptionHandler.h"
#include "program/VerbosityOptionHandler.h"
#include "program/VersionOptionHandler.h"

namespace Ond::Program {

ClassicProgramOptions::ClassicProgramOptions(const QString& programName, unsigned major, unsigned minor,
                                             unsigned patch, unsigned buildNumber, const QString& commit)
    : ProgramOptions(programName)
{
    // The order here is the order in which the handlers run.
    const auto help = std::make_shared<HelpOptionHandler>(programName, globalOptions());
    const auto html = std::make_shared<HTMLDocOptionHandler>(programName, globalOptions());
    const auto json = std::make_shared<JSonOptDescrOptionHandler>(programName, globalOptions());
    m_dependentHandlers = {help, html, json};
    addHandler(help);
    addHandler(html);
    addHandler(json);
    addHandler(std::make_shared<VersionOptionHandler>(major, minor, patch, buildNumber, commit));

    // Installs the default console delegate.
    m_verbosityHandler = std::make_shared<VerbosityOptionHandler>();
    addHandler(m_verbosityHandler);
    addHandler(std::make_shared<ThreadLimitOptionHandler>());

    Core::installQtMessageRouting();
}

ClassicProgramOptions::~ClassicProgramOptions() { Core::removeQtMessageRouting(); }

void ClassicProgramOptions::addCommand(const ProgramCommandSPtr& command)
{
    ProgramOptions::addCommand(command);
    if (!command)
        return;
    for (const CommandOptionDependentOptionHandlerSPtr& handler : m_dependentHandlers)
        handler->addCommand(command);
}

} // namespace Ond::Program
