#pragma once
// Start-up registration of the image codecs.

namespace Ond::Surfaces {

// Registers, in this order, the DDS, FreeImage (with an empty option map)
// and LYD codec factories with SurfaceCodecManager; later calls do nothing.
// Call on the main thread, before anything reads or writes an image.
void registerDefaultCodecs();

} // namespace Ond::Surfaces
