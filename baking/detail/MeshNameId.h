#pragma once
// The 32-bit id that pairs low and high mesh parts by name: the hash of the
// name's stem, before the low or high suffix, with "_ignorebf" removed.

#include <QString>

#include <cstdint>

namespace Ond::Baking {

// The stem under the current suffix table.
QString meshNameStem(const QString& name);
uint32_t meshNameId(const QString& name);
// True when the part's back faces are culled for secondary rays.
bool meshIgnoresBackfaces(const QString& name);

} // namespace Ond::Baking
