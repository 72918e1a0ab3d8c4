#pragma once
// Every map kernel of the Embree backend is registered from one place, so
// that the static-library linker keeps the kernel files.

namespace Ond::Baking {

// Registers all kernels; safe to call more than once (only the first call
// registers).
void registerDetailKernels();

} // namespace Ond::Baking
