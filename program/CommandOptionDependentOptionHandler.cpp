#include "program/CommandOptionDependentOptionHandler.h"

namespace Ond::Program {

void CommandOptionDependentOptionHandler::addCommand(const ProgramCommandSPtr& command)
{
    if (command)
        m_commands.insert(command->name(), command);
}

} // namespace Ond::Program
