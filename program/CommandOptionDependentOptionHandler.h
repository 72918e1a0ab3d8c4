#pragma once
// A global option handler whose output depends on the registered commands
// (help, documentation, option description).

#include "program/OptionHandler.h"
#include "program/ProgramCommand.h"

#include <QMap>
#include <QString>

namespace Ond::Program {

class CommandOptionDependentOptionHandler : public OptionHandler
{
public:
    void addCommand(const ProgramCommandSPtr& command);
    // By name, hence sorted by name.
    const QMap<QString, ProgramCommandSPtr>& commands() const { return m_commands; }
    ProgramCommandSPtr command(const QString& name) const { return m_commands.value(name); }

private:
    QMap<QString, ProgramCommandSPtr> m_commands;
};

using CommandOptionDependentOptionHandlerSPtr = std::shared_ptr<CommandOptionDependentOptionHandler>;

} // namespace Ond::Program
