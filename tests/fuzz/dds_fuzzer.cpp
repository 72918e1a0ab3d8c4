// The DDS reader; what it accepts must write and read back.
// fuzz-libs: zmf_image
#include "FuzzSupport.h"

#include "image/DDSSurfaceCodec.h"

#include <QBuffer>

#include <cstdlib>

using namespace Ond::Surfaces;
using Ond::Image::Plugins::DDSSurfaceCodec;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool ready = Fuzz::init();
    (void)ready;
    QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QBuffer buffer(&bytes);
    SurfaceSPtr surface;
    if (!DDSSurfaceCodec(&buffer, "dds").read(surface) || !surface || surface->isEmpty())
        return 0;
    Fuzz::touchRows(surface);
    QBuffer out;
    if (!DDSSurfaceCodec(&out, "dds").write(surface))
        return 0;
    QByteArray written = out.data();
    QBuffer again(&written);
    SurfaceSPtr back;
    if (!DDSSurfaceCodec(&again, "dds").read(back) || !back || back->width() != surface->width()
        || back->height() != surface->height())
        std::abort();
    return 0;
}
