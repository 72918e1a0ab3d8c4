#pragma once
// `run`: bakes the maps of a JSON execution plan, producers before the
// bakers that read their files, for every input and every requested tile.

#include "program/ProgramCommand.h"

namespace ProgramCommand {

class BatchCommand : public Ond::Program::ProgramCommand
{
public:
    BatchCommand();

    using Ond::Program::ProgramCommand::process;
    // The plan may be given without --json.
    QString implicitOptionName() const override;
    // 1 when the plan can't be read, is invalid or cyclic, or names no
    // input; otherwise 0, also when some bakes failed.
    int process(const Ond::Program::ParsedValues& values) override;
};

} // namespace ProgramCommand
