#pragma once
// The bakers the program knows: registry key, identifier, subcommand, texts
// and property lists.

#include <string>
#include <vector>

namespace Ond::Baking {

struct BakerInfo
{
    const char* key;         // GLMapBakerManager key
    const char* identifier;  // baker identifier, also the bag's
    const char* subcommand;  // command-line name
    const char* label;       // untranslated, context "baking"
    const char* description; // untranslated, context "baking"
};

// The seventeen registered bakers, in ascending key order.
const std::vector<BakerInfo>& registeredBakers();

const BakerInfo* findBakerByKey(const std::string& key);
const BakerInfo* findBakerByIdentifier(const std::string& identifier);

// Baker identifier to subcommand; empty for an identifier without one.
std::string subcommandName(const std::string& bakerIdentifier);

// "Common.OutputSize" ... "Common.UVTile".
const std::vector<std::string>& commonPropertyIdentifiers();

// A baker's properties beyond the common ones, in the baker's order; empty
// for an unknown identifier.
std::vector<std::string> ownPropertyIdentifiers(const std::string& bakerIdentifier);

} // namespace Ond::Baking
