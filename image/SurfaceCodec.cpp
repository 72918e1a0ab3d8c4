#include "image/SurfaceCodec.h"

namespace Ond::Surfaces {

SurfaceCodec::SurfaceCodec(QIODevice* device, const QByteArray& suffix, bool closeAfter)
    : m_device(device)
    , m_suffix(suffix)
    , m_closeAfter(closeAfter)
{
}

SurfaceCodec::~SurfaceCodec() = default;

bool SurfaceCodec::prepareDevice(QIODevice::OpenModeFlag mode)
{
    if (!m_device)
        return false;
    if (!m_device->isOpen())
        return m_device->open(mode);
    return (m_device->openMode() & mode) == mode;
}

void SurfaceCodec::finishDevice()
{
    if (m_closeAfter && m_device && m_device->isOpen())
        m_device->close();
}

} // namespace Ond::Surfaces
