#pragma once
// Source maps of the low-poly bakers (a normal map, a direction map): read
// through the context and brought to power-of-two sides.

#include "image/Surface.h"

#include <QString>

namespace Ond::Baking {

class AbstractBakingContext;

// Null when the path is empty or the file does not load; the bake then goes
// on without the map.
Surfaces::SurfaceSPtr loadSourceMap(AbstractBakingContext& context, const QString& path);

// The surface itself when both sides are powers of two; otherwise an
// RGBA float copy resampled bilinearly to powerOfTwoSide of each side.
Surfaces::SurfaceSPtr resampleToPowerOfTwo(const Surfaces::SurfaceSPtr& surface);

} // namespace Ond::Baking
