// The DDS reader; what it accepts must write and read back.
// fuzz-libs: zmf_image
#include "FuzzSupport.h"

#include "image/DDSSurfaceCodec.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool ready = Fuzz::init();
    (void)ready;
    return Fuzz::roundTrip<Ond::Image::Plugins::DDSSurfaceCodec, Ond::Surfaces::SurfaceSPtr>(data, size, "dds");
}
