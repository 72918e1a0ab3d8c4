#include "image/SurfaceCodecFactory.h"

#include <QFileDevice>
#include <QFileInfo>

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
        // ExistingOnly: probing must not leave an empty file behind.
        opened = device->open(QIODevice::ReadWrite | QIODevice::ExistingOnly)
            || device->open(QIODevice::ReadOnly | QIODevice::ExistingOnly);
        if (!opened) {
            // A file yet to be written can be created when the codec writes.
            auto* file = qobject_cast<QFileDevice*>(device);
            return file && !QFileInfo::exists(file->fileName()) ? int(CapabilityWrite) : int(CapabilityNone);
        }
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
