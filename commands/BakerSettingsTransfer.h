#pragma once
// Moves settings into a baker's property bag, the same way for the command
// line and for a plan.

#include "commands/BakerSettingsMap.h"

namespace Ond::Baking {
class AbstractBaker;
}

namespace ProgramCommand {

// Sets every property of the baker that `settings` names; the others keep
// their values. The tile is always set, from --uv-tile or --udim or to
// 1001. Returns false, after logging why, when the tile is wrong; the
// properties after it are then left as they were.
bool transferSettings(Ond::Baking::AbstractBaker& baker, const BakerSettingsMap& settings);

} // namespace ProgramCommand
