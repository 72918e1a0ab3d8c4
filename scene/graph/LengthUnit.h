#pragma once
// Length units recognised from a scene's meters-per-unit factor.

#include <cstdint>

namespace Ond::SceneGraph {

enum class LengthUnit : int32_t {
    None = 0,
    Kilometer = 1,
    Meter = 2,
    Centimeter = 3,
    Millimeter = 4,
    Mile = 5,
    Yard = 6,
    Foot = 7,
    Inch = 8,
};

// The unit whose factor lies within 1e-6 of metersPerUnit, else None.
LengthUnit lengthUnitFromMetersPerUnit(double metersPerUnit);
// Meters per unit of a known unit; 0 for None.
double metersPerUnitOf(LengthUnit unit);

} // namespace Ond::SceneGraph
