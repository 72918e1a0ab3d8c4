#pragma once
// One baker setting: a typed value with its default, texts and visibility.
// The visibility follows other settings through PropertyBag::update.

#include "baking/PropertyValue.h"

#include <cstdint>
#include <string>

namespace Ond::Baking {

enum class PropertyType : std::int32_t {
    Int = 0,       // PropertyNumerical<int>
    Int2 = 1,      // PropertyNumerical<ComparableInt2>
    ColorInt4 = 2, // PropertyNumerical<ComparableColorInt4>
    Float = 3,     // PropertyNumerical<float>
    Bool = 4,      // Property itself
    Path = 5,      // PropertyPath
    Enum = 6       // PropertyEnum
};

class Property
{
public:
    Property(PropertyType type, PropertyValue defaultValue, std::string label, std::string description,
             bool visible);
    virtual ~Property();

    // Whether the value lies in the property's bounds. Storing a value never
    // consults this: out-of-range values are kept as given.
    virtual bool isInRange() const;

    PropertyType type() const { return m_type; }
    const PropertyValue& defaultValue() const { return m_default; }
    const PropertyValue& value() const { return m_value; }
    void setValue(PropertyValue value) { m_value = std::move(value); }

    // Typed reads; the caller knows the type from type().
    template <class T> const T& valueAs() const { return std::get<T>(m_value); }
    template <class T> const T& defaultAs() const { return std::get<T>(m_default); }

    const std::string& label() const { return m_label; }
    const std::string& description() const { return m_description; }

    bool isVisible() const { return m_visible; }
    void setVisible(bool visible) { m_visible = visible; }

private:
    PropertyValue m_default;
    PropertyValue m_value;
    std::string m_description;
    std::string m_label;
    bool m_visible;
    PropertyType m_type;
    void* m_reserved = nullptr;
};

} // namespace Ond::Baking
