#pragma once
// A number, a pair or a colour with bounds, a spin-box step and decimals.

#include "baking/Property.h"

#include <cstdint>
#include <variant>

namespace Ond::Baking {

template <class T> struct PropertyTypeOf;
template <> struct PropertyTypeOf<int> { static constexpr PropertyType value = PropertyType::Int; };
template <> struct PropertyTypeOf<ComparableInt2> { static constexpr PropertyType value = PropertyType::Int2; };
template <> struct PropertyTypeOf<ComparableColorInt4> { static constexpr PropertyType value = PropertyType::ColorInt4; };
template <> struct PropertyTypeOf<float> { static constexpr PropertyType value = PropertyType::Float; };

template <class T>
class PropertyNumerical : public Property
{
public:
    PropertyNumerical(T defaultValue, T minimum, T maximum, T step, std::int32_t decimals, std::string label,
                      std::string description, bool visible = true)
        : Property(PropertyTypeOf<T>::value, PropertyValue(defaultValue), std::move(label),
                   std::move(description), visible)
        , m_minimum(minimum)
        , m_maximum(maximum)
        , m_step(step)
        , m_decimals(decimals)
    {
    }

    // The value decides; only a cell that does not hold a T falls back to
    // the default.
    bool isInRange() const override
    {
        if (const T* v = std::get_if<T>(&value()))
            return inBounds(*v);
        if (const T* d = std::get_if<T>(&defaultValue()))
            return inBounds(*d);
        return false;
    }

    const T& minimum() const { return m_minimum; }
    const T& maximum() const { return m_maximum; }
    const T& step() const { return m_step; }
    std::int32_t decimals() const { return m_decimals; }

    void setMinimum(const T& minimum) { m_minimum = minimum; }
    void setMaximum(const T& maximum) { m_maximum = maximum; }

private:
    bool inBounds(const T& v) const { return m_minimum <= v && v <= m_maximum; }

    T m_minimum;
    T m_maximum;
    T m_step;
    std::int32_t m_decimals;
};

} // namespace Ond::Baking
