#include "image/SurfaceCodecFactory.h"

namespace Ond::Surfaces {

SurfaceCodecFactory::SurfaceCodecFactory(const SurfaceFormatList& readFormats,
                                         const SurfaceFormatList& writeFormats)
    : m_formats{readFormats, writeFormats}
{
}

SurfaceCodecFactory::~SurfaceCodecFactory() = default;

int SurfaceCodecFactory::probeDevice(QIODevice* device)
{
    if (!device)
        return CapabilityRead | CapabilityWrite;
    bool opened = false;
    if (!device->isOpen()) {
        opened = device->open(QIODevice::ReadWrite) || device->open(QIODevice::ReadOnly);
        if (!opened)
            return CapabilityNone;
    }
    int caps = CapabilityNone;
    if (device->isReadable())
        caps |= CapabilityRead;
    if (device->isWritable())
        caps |= CapabilityWrite;
    if (opened)
        device->close();
    return caps;
}

} // namespace Ond::Surfaces
