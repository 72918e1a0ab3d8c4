#pragma once
// The process-wide registry of codec factories. The raw codec comes first;
// the main program registers the others at start-up, on the main thread.
// The lists are read-only while bakes run.

#include "image/SurfaceCodecFactory.h"

#include <QObject>
#include <QStringList>

namespace Ond::Surfaces {

class SurfaceCodecManager : public QObject
{
    Q_OBJECT
public:
    static SurfaceCodecManager& instance();

    // Appends, then rebuilds the format lists.
    void registerFactory(const QSharedPointer<SurfaceCodecFactory>& factory);

    // The first factory, in registration order, whose canHandle shares a
    // bit with `capability` creates the codec. Null if none.
    QSharedPointer<SurfaceCodec> findCodec(QIODevice* device, const QByteArray& suffix, int capability) const;
    // The factory findCodec would use, or null.
    QSharedPointer<SurfaceCodecFactory> findFactory(QIODevice* device, const QByteArray& suffix,
                                                    int capability) const;

    // Bit 1 of capability selects the write list, otherwise the read list.
    // Each label appears once, first factory first.
    SurfaceFormatList getFormats(int capability) const;
    // Suffixes of all formats, read and write.
    QStringList getExtensions() const;
    // Extensions of getFormats(capability), each followed by ", ", the last
    // two characters cut: the list of the "--output-format" help.
    QString formatsText(int capability = CapabilityWrite) const;
    // Whether any factory for `suffix` can compress what it writes.
    bool supportsCompression(const QByteArray& suffix) const;

    QList<QSharedPointer<SurfaceCodecFactory>> factories() const { return m_factories; }

private:
    SurfaceCodecManager();
    void rebuildFormats();

    QList<QSharedPointer<SurfaceCodecFactory>> m_factories;
    SurfaceFormatList m_readFormats;
    SurfaceFormatList m_writeFormats;
};

} // namespace Ond::Surfaces
