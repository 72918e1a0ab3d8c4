#include "app/Registration.h"

#include "program/ClassicProgramOptions.h"

namespace Zmf {

void registerCodecs()
{
}

void registerCommands(Ond::Program::ClassicProgramOptions& options)
{
    (void)options;
}

} // namespace Zmf
