// Texture images as the bakers read them: through the codec manager, the
// first byte choosing the file suffix.
// fuzz-libs: zmf_image
#include "CodecSuffixes.h"
#include "FuzzSupport.h"

#include "image/DefaultCodecs.h"
#include "image/SurfaceCodecManager.h"

#include <QBuffer>

using namespace Ond::Surfaces;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool ready = [] {
        Fuzz::init();
        registerDefaultCodecs();
        return true;
    }();
    (void)ready;
    if (size < 1)
        return 0;
    const QByteArray suffix(Fuzz::codecSuffix(data[0]));
    QByteArray bytes(reinterpret_cast<const char*>(data + 1), qsizetype(size - 1));
    QBuffer buffer(&bytes);
    const auto codec = SurfaceCodecManager::instance().findCodec(&buffer, suffix, CapabilityRead);
    if (!codec)
        return 0;
    SurfaceSPtr surface;
    if (codec->read(surface))
        Fuzz::touchRows(surface);
    return 0;
}
