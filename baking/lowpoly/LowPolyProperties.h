#pragma once
// Typed reads of a baker's properties with a fallback for a property the
// bag lacks, so that a baker runs on what it was given.

#include "baking/PropertyBag.h"
#include "baking/lowpoly/GLBakeParameters.h"

#include <QString>

#include <algorithm>
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

// What every low-poly bake reads first: its UV set, its UV tile and the
// green convention of its source normal map.
inline GLBakeParameters commonParameters(const PropertyBag& bag)
{
    const ComparableInt2 uvTile = value<ComparableInt2>(bag, "Common.UVTile", {});
    GLBakeParameters parameters;
    parameters.uvSet = uint32_t(std::max(value<int>(bag, "Common.UVSet", 0), 0));
    parameters.uvTile = {uvTile.x, uvTile.y};
    parameters.invertGreen = value<int>(bag, "Additional.InvertGreen", 0) == 1;
    return parameters;
}

} // namespace Ond::Baking::LowPolyProperties
