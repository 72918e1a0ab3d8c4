#include "image/DDSSurfaceCodecFactory.h"

#include "image/DDSSurfaceCodec.h"

namespace Ond::Image::Plugins {

namespace {
const Surfaces::SurfaceFormatList ddsFormats{
    {QStringLiteral("DirectDraw Surface"), QStringLiteral("dds"), QStringLiteral("image/vnd-ms.dds")}};
}

DDSSurfaceCodecFactory::DDSSurfaceCodecFactory()
    : SurfaceCodecFactory(ddsFormats, ddsFormats)
{
}

int DDSSurfaceCodecFactory::canHandle(QIODevice* device, const QByteArray& suffix) const
{
    if (suffix.toLower() != "dds")
        return Surfaces::CapabilityNone;
    return probeDevice(device);
}

QSharedPointer<Surfaces::SurfaceCodec> DDSSurfaceCodecFactory::createCodec(QIODevice* device,
                                                                           const QByteArray& suffix) const
{
    return QSharedPointer<DDSSurfaceCodec>::create(device, suffix);
}

} // namespace Ond::Image::Plugins
