#include "image/RawSurfaceCodecFactory.h"

#include "image/RawSurfaceCodec.h"

namespace Ond::Surfaces {

namespace {
const SurfaceFormatList rawFormats{{QStringLiteral("Raw surface"), QStringLiteral("surface"), QString()}};
}

RawSurfaceCodecFactory::RawSurfaceCodecFactory()
    : SurfaceCodecFactory(rawFormats, rawFormats)
{
}

int RawSurfaceCodecFactory::canHandle(QIODevice* device, const QByteArray& suffix) const
{
    if (suffix != "surface")
        return CapabilityNone;
    return probeDevice(device);
}

QSharedPointer<SurfaceCodec> RawSurfaceCodecFactory::createCodec(QIODevice* device, const QByteArray& suffix) const
{
    return QSharedPointer<RawSurfaceCodec>::create(device, suffix);
}

} // namespace Ond::Surfaces
