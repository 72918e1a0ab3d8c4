#pragma once
// Reads or writes one surface on one device. A codec serves one device on
// one thread; it never throws: failures are false and a log line.

#include "image/Surface.h"
#include "image/SurfaceCodecOptions.h"

#include <QByteArray>
#include <QIODevice>

namespace Ond::Surfaces {

class SurfaceCodec
{
public:
    SurfaceCodec(QIODevice* device, const QByteArray& suffix, bool closeAfter = true);
    virtual ~SurfaceCodec();

    // The surface is null on failure. Options read from the file (an ICC
    // profile, the resolution) land in options().
    virtual bool read(QSharedPointer<Surface>& result) = 0;
    virtual bool write(const QSharedPointer<Surface>& surface) = 0;

    QIODevice* device() const { return m_device; }
    const QByteArray& suffix() const { return m_suffix; }
    bool closeAfter() const { return m_closeAfter; }
    void setCloseAfter(bool close) { m_closeAfter = close; }

    const CodecOptions& options() const { return m_options; }
    void setOptions(const CodecOptions& options) { m_options = options; }
    void setOption(const QString& name, const QVariant& value) { m_options.insert(name, value); }

protected:
    // Opens a closed device in `mode`. Fails for a device open without it.
    bool prepareDevice(QIODevice::OpenModeFlag mode);
    // Closes the device if closeAfter is set.
    void finishDevice();

    QIODevice* m_device = nullptr;
    QByteArray m_suffix;
    bool m_closeAfter = true;
    CodecOptions m_options;
};

using SurfaceCodecSPtr = QSharedPointer<SurfaceCodec>;

} // namespace Ond::Surfaces
