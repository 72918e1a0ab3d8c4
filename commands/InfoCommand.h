#pragma once
// `info`: prints what mesh files hold: entities, locations, bounding boxes,
// meshes with their UV sets and tiles, cameras, environment and lights.

#include "program/ProgramCommand.h"

namespace ProgramCommand {

class InfoCommand : public Ond::Program::ProgramCommand
{
public:
    InfoCommand();

    using Ond::Program::ProgramCommand::process;
    QString implicitOptionName() const override;
    // 1 without inputs (unless the formats were listed); otherwise 0, also
    // when some file can't be loaded.
    int process(const Ond::Program::ParsedValues& values) override;
};

} // namespace ProgramCommand
