#pragma once
// Typed reads of a baker's properties with a fallback for a property the
// bag lacks, so that a baker runs on what it was given.

#include "baking/PropertyBag.h"

#include <QString>

#include <string>
#include <type_traits>
#include <variant>

namespace Ond::Baking::LowPolyProperties {

template <class T>
T value(const PropertyBag& bag, const std::string& id, T fallback)
{
    if (!bag.contains(id))
        return fallback;
    const PropertyValue& v = bag[id].value();
    if (const T* typed = std::get_if<T>(&v))
        return *typed;
    // Enums and flags may be stored as either int or bool.
    if constexpr (std::is_same_v<T, int>) {
        if (const bool* b = std::get_if<bool>(&v))
            return *b ? 1 : 0;
    }
    if constexpr (std::is_same_v<T, bool>) {
        if (const int* i = std::get_if<int>(&v))
            return *i != 0;
    }
    return fallback;
}

inline QString path(const PropertyBag& bag, const std::string& id)
{
    return QString::fromStdString(value<std::string>(bag, id, std::string()));
}

} // namespace Ond::Baking::LowPolyProperties
