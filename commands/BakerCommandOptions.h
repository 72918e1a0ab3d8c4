#pragma once
// The option groups of a baker command.

#include "program/OptionGroup.h"

#include <string>

namespace Ond::Baking {
class AbstractBaker;
}

namespace ProgramCommand {

// "Input and output options": inputs, output naming and format, tangent
// frames, ray tracing switches, name suffixes.
Ond::Program::OptionGroup inputOutputOptionGroup();

// "<command> options": the mesh options of from-mesh bakers, then one option
// per property of the baker, in identifier order. Throws
// std::runtime_error("Unsupported property type") for a colour property.
Ond::Program::OptionGroup bakerOptionGroup(const Ond::Baking::AbstractBaker& baker, const QString& commandName);

// The image file filter handed to path properties, from the codec registry.
std::string imageFileFilter();

} // namespace ProgramCommand
