#pragma once
// Knows one family of image files: whether it can read or write a device
// with a suffix, and makes codecs for it.

#include "image/SurfaceCodec.h"
#include "image/SurfaceFormat.h"

#include <QByteArray>
#include <QIODevice>

namespace Ond::Surfaces {

enum CodecCapability : int { CapabilityNone = 0, CapabilityRead = 1, CapabilityWrite = 2 };

class SurfaceCodecFactory
{
public:
    SurfaceCodecFactory(const SurfaceFormatList& readFormats, const SurfaceFormatList& writeFormats);
    virtual ~SurfaceCodecFactory();

    // Bit 0 read, bit 1 write.
    virtual int canHandle(QIODevice* device, const QByteArray& suffix) const = 0;
    virtual QSharedPointer<SurfaceCodec> createCodec(QIODevice* device, const QByteArray& suffix) const = 0;
    virtual SurfaceFormatList getFormats() const { return m_formats[0]; }
    virtual SurfaceFormatList getWriteFormats() const { return m_formats[1]; }
    virtual OptionMap getOptions(const QByteArray& suffix) const { return {}; }
    virtual OptionMap getOptionsDescription(const QByteArray& suffix) const { return {}; }
    // Whether written files can be compressed (the DDS "compression" choice).
    virtual bool supportsCompression() const { return false; }

protected:
    // The usual canHandle of a factory bound to one suffix: a closed device
    // is opened read-write to learn what it allows, then closed again.
    static int probeDevice(QIODevice* device);

    SurfaceFormatList m_formats[2]; // read, write
};

using SurfaceCodecFactorySPtr = QSharedPointer<SurfaceCodecFactory>;

} // namespace Ond::Surfaces
