#pragma once
// The vocabulary of baker properties: how each property is built, the
// command-line option that sets it, and the names older versions stored.

#include "baking/Property.h"

#include <memory>
#include <string>

namespace Ond::Baking {

// Builds the property `id` as the baker `bakerIdentifier` has it (a few
// properties differ between bakers). Null for an identifier the catalogue
// does not know. The two strings go to path properties.
std::unique_ptr<Property> createProperty(const std::string& bakerIdentifier, const std::string& id,
                                         const std::string& fileFilter, const std::string& pathExtra);

// The option name of a property ("Detail.UseCage" -> "use-cage"); empty for
// a property that has no option, or an unknown one.
std::string optionName(const std::string& propertyId);

// Maps an id stored by an earlier version ("UseCage") to the current one
// ("Detail.UseCage"); any other id comes back unchanged.
std::string currentPropertyIdentifier(const std::string& storedId);

} // namespace Ond::Baking
