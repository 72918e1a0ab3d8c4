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
    int caps = probeDevice(device);
    if (!(caps & Surfaces::CapabilityRead) || !device)
        return caps;
    // Block-compressed files go to the next codec that reads "dds".
    const bool wasOpen = device->isOpen();
    if (!wasOpen && !device->open(QIODevice::ReadOnly))
        return caps;
    const QByteArray header = device->peek(148);
    if (!wasOpen)
        device->close();
    if (!DDSSurfaceCodec::canRead(header))
        caps &= ~Surfaces::CapabilityRead;
    return caps;
}

QSharedPointer<Surfaces::SurfaceCodec> DDSSurfaceCodecFactory::createCodec(QIODevice* device,
                                                                           const QByteArray& suffix) const
{
    return QSharedPointer<DDSSurfaceCodec>::create(device, suffix);
}

} // namespace Ond::Image::Plugins
