#include "image/LYDSurfaceCodecFactory.h"

#include "image/LYDSurfaceCodec.h"

namespace Ond::Image::Plugins {

namespace {
const Surfaces::SurfaceFormatList lydFormats{{QStringLiteral("Kestrel Layerdoc"), QStringLiteral("lyd"), QString()}};
}

LYDSurfaceCodecFactory::LYDSurfaceCodecFactory()
    : SurfaceCodecFactory(lydFormats, lydFormats)
{
}

int LYDSurfaceCodecFactory::canHandle(QIODevice* device, const QByteArray& suffix) const
{
    if (suffix.toLower() != "lyd")
        return Surfaces::CapabilityNone;
    return probeDevice(device);
}

QSharedPointer<Surfaces::SurfaceCodec> LYDSurfaceCodecFactory::createCodec(QIODevice* device,
                                                                           const QByteArray& suffix) const
{
    return QSharedPointer<LYDSurfaceCodec>::create(device, suffix);
}

} // namespace Ond::Image::Plugins
