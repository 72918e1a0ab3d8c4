#pragma once
// Settings of the position kernel: which axis (or all), and the affine map
// from world position to the stored value.

namespace Ond::Baking {

struct PositionParams
{
    int axis = -1;  // -1 all axes, else 0, 1, 2
    float offset[3] = {0.0f, 0.0f, 0.0f};
    float scale[3] = {1.0f, 1.0f, 1.0f};
};

} // namespace Ond::Baking
