#pragma once
// The last step of every bake: colour spread out of the UV islands so that
// filtering and mip-mapping find valid colour at the seams. Texels with
// alpha 0 are empty, all others covered; colour is premultiplied.

#include "image/Surface.h"

#include <cstdint>

namespace Ond::Baking {

// How dilation runs. Automatic takes the compute path whenever the context
// and the pixel format allow it; Compute falls back to the fragment path
// when they don't.
enum class DilationPath { Automatic, Fragment, Compute };

// Grows the covered texels by `dilationWidth` one-texel steps, then, with
// `applyDiffusion`, fills every texel left empty by pull-push diffusion. The
// result replaces the surface behind `surface` (same size, format and row
// layout). Needs a current GL context; does nothing for an empty surface,
// for a format without alpha and when there is nothing to do.
void postProcess(Surfaces::SurfaceSPtr& surface, uint32_t dilationWidth, bool applyDiffusion,
                 DilationPath path = DilationPath::Automatic);

// Whether dilation of a surface of `format` takes the compute path in the
// current context when left to choose.
bool dilationUsesCompute(Surfaces::PixelFormat format);

} // namespace Ond::Baking
