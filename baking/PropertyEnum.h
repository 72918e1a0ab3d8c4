#pragma once
// A choice among labelled entries; the value is the entry's index.

#include "baking/Property.h"

#include <string>
#include <vector>

namespace Ond::Baking {

class PropertyEnum : public Property
{
public:
    PropertyEnum(int defaultIndex, std::vector<std::string> entries, std::string label, std::string description,
                 bool visible = true);

    // 0 to the entry count, both inclusive: an index equal to the count
    // passes on purpose, although no such entry exists.
    bool isInRange() const override;

    const std::vector<std::string>& entries() const { return m_entries; }

private:
    std::vector<std::string> m_entries;
};

} // namespace Ond::Baking
