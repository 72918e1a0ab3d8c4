#include "scene/graph/LengthUnit.h"

#include <cmath>

namespace Ond::SceneGraph {

double metersPerUnitOf(LengthUnit unit)
{
    switch (unit) {
    case LengthUnit::Kilometer: return 1000.0;
    case LengthUnit::Meter: return 1.0;
    case LengthUnit::Centimeter: return 0.01;
    case LengthUnit::Millimeter: return 0.001;
    case LengthUnit::Mile: return 1609.34;
    case LengthUnit::Yard: return 0.9144;
    case LengthUnit::Foot: return 0.3048;
    case LengthUnit::Inch: return 0.0254;
    case LengthUnit::None: break;
    }
    return 0.0;
}

LengthUnit lengthUnitFromMetersPerUnit(double metersPerUnit)
{
    for (int i = 1; i <= 8; ++i) {
        const auto unit = LengthUnit(i);
        if (std::abs(metersPerUnit - metersPerUnitOf(unit)) <= 1e-6)
            return unit;
    }
    return LengthUnit::None;
}

} // namespace Ond::SceneGraph
