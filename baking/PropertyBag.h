#pragma once
// The settings of one baker: its properties by identifier, in the order the
// baker listed them, and the rules by which some settings show, hide or
// re-bound others.

#include "baking/Property.h"

#include <QVariant>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Ond::Baking {

class PropertyBag
{
public:
    // Builds each listed property from the catalogue; identifiers the
    // catalogue does not know are left out of the map.
    PropertyBag(std::string bakerIdentifier, std::vector<std::string> identifiers, const std::string& fileFilter,
                const std::string& pathExtra);
    ~PropertyBag();

    PropertyBag(const PropertyBag&) = delete;
    PropertyBag& operator=(const PropertyBag&) = delete;

    const std::string& bakerIdentifier() const { return m_bakerIdentifier; }
    // The list as the baker gave it, unknown identifiers included.
    const std::vector<std::string>& identifiers() const { return m_identifiers; }

    bool contains(const std::string& id) const;

    // Throws std::out_of_range("invalid map<K, T> key") for an id not in the bag.
    Property& operator[](const std::string& id);
    const Property& operator[](const std::string& id) const;

    // Applies the dependants of `id` after its value changed; returns the ids
    // whose visibility or bounds were touched, in the order touched.
    std::vector<std::string> update(const std::string& id);

private:
    Property* find(const std::string& id) const;
    void setVisible(const std::string& id, bool visible, std::vector<std::string>& touched);
    void setFloatMaximum(const std::string& id, float maximum, std::vector<std::string>& touched);
    bool boolValue(const std::string& id) const;
    int intValue(const std::string& id) const;
    bool hasPath(const std::string& id) const;

    std::string m_bakerIdentifier;
    std::map<std::string, std::unique_ptr<Property>> m_properties;
    std::vector<std::string> m_identifiers;
};

// Stores `value` in the property `id` after converting it to the property's
// type, then runs the bag's update. Returns the touched ids followed by `id`.
// The bounds are tested but not enforced.
std::vector<std::string> setPropertyValue(PropertyBag& bag, const std::string& id, const QVariant& value);

} // namespace Ond::Baking
