#include "baking/PropertyEnum.h"

namespace Ond::Baking {

PropertyEnum::PropertyEnum(int defaultIndex, std::vector<std::string> entries, std::string label,
                           std::string description, bool visible)
    : Property(PropertyType::Enum, PropertyValue(defaultIndex), std::move(label), std::move(description), visible)
    , m_entries(std::move(entries))
{
}

bool PropertyEnum::isInRange() const
{
    const int* index = std::get_if<int>(&value());
    if (!index)
        index = std::get_if<int>(&defaultValue());
    if (!index)
        return false;
    return *index >= 0 && *index <= static_cast<int>(m_entries.size());
}

} // namespace Ond::Baking
