// The grey TGA writer, plain and run-length, on surfaces made from the
// input: what it writes must read back to the same pixels.
// fuzz-libs: zmf_image
#include "FuzzSupport.h"

#include "image/DefaultCodecs.h"
#include "image/FreeimageSurfaceCodec.h"

#include <QBuffer>

#include <cstdlib>
#include <cstring>

using namespace Ond::Surfaces;
using Ond::Image::Plugins::FreeimageSurfaceCodec;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool ready = [] {
        Fuzz::init();
        registerDefaultCodecs();
        return true;
    }();
    (void)ready;
    if (size < 3)
        return 0;
    const uint32_t width = 1 + data[0] % 300;
    const uint32_t height = 1 + data[1] % 64;
    const bool rle = data[2] & 1;
    data += 3;
    size -= 3;

    auto surface = SurfaceSPtr::create(SurfaceDesc(width, height, PixelFormat::L8));
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x) {
            const size_t i = size_t(y) * width + x;
            surface->row(y)[x] = size ? data[i % size] : 0;
        }

    QBuffer out;
    FreeimageSurfaceCodec writer(&out, "tga");
    CodecOptions options;
    options.insert(QStringLiteral("tga_compression"), rle ? QStringLiteral("rle") : QStringLiteral("none"));
    writer.setOptions(options);
    if (!writer.write(surface))
        std::abort();

    QByteArray written = out.data();
    QBuffer in(&written);
    SurfaceSPtr back;
    if (!FreeimageSurfaceCodec(&in, "tga").read(back) || !back || back->width() != width || back->height() != height)
        std::abort();
    for (uint32_t y = 0; y < height; ++y)
        if (back->format() == PixelFormat::L8 && std::memcmp(back->row(y), surface->row(y), width) != 0)
            std::abort();
    return 0;
}
