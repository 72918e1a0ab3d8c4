#pragma once
// The value steps of the detail post-process on a one-channel float map.

#include "image/Surface.h"

namespace Ond::Baking {

// One float channel (L32F) from the red channel of an RGBA float map.
Surfaces::SurfaceSPtr toGray(const Surfaces::SurfaceSPtr& surface);

void scaleValues(Surfaces::Surface& gray, float factor);

// Clamps to [lo, hi]; symmetric keeps 0 at 0.5, else lo goes to 0, hi to 1.
void remapValues(Surfaces::Surface& gray, float lo, float hi, bool symmetric);
float remapValue(float v, float lo, float hi, bool symmetric);

// Logarithmic curve: 0 stays 0, hi (or lo for negatives) goes to +1 (-1);
// k sets where the curve turns from linear to logarithmic.
void logTonemapValues(Surfaces::Surface& gray, float lo, float hi, float k);
float logTonemapValue(float v, float lo, float hi, float k);

} // namespace Ond::Baking
