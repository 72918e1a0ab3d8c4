#include "baking/Property.h"

namespace Ond::Baking {

Property::Property(PropertyType type, PropertyValue defaultValue, std::string label, std::string description,
                   bool visible)
    : m_default(defaultValue)
    , m_value(std::move(defaultValue))
    , m_description(std::move(description))
    , m_label(std::move(label))
    , m_visible(visible)
    , m_type(type)
{
    (void)m_reserved;
}

Property::~Property() = default;

bool Property::isInRange() const
{
    return true;
}

} // namespace Ond::Baking
