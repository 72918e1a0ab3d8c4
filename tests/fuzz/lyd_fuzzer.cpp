// The layered-format reader; what it accepts must write and read back.
// fuzz-libs: zmf_image
#include "FuzzSupport.h"

#include "image/LYDSurfaceCodec.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool ready = Fuzz::init();
    (void)ready;
    return Fuzz::roundTrip<Ond::Image::Plugins::LYDSurfaceCodec, Ond::Surfaces::SurfaceSPtr>(data, size, "lyd");
}
