#pragma once
// Settings of the per-vertex curvature kernel.

namespace Ond::Baking {

struct CurvatureParams
{
    bool softSaturate = true;  // tanh(c) instead of c * intensity + 0.5
    float intensity = 1.0f;
};

} // namespace Ond::Baking
