#include "image/SurfaceCodecManager.h"

#include "image/RawSurfaceCodecFactory.h"

#include <QSet>

namespace Ond::Surfaces {

SurfaceCodecManager& SurfaceCodecManager::instance()
{
    static SurfaceCodecManager* manager = new SurfaceCodecManager; // lives to process end
    return *manager;
}

SurfaceCodecManager::SurfaceCodecManager()
{
    registerFactory(QSharedPointer<RawSurfaceCodecFactory>::create());
}

void SurfaceCodecManager::registerFactory(const QSharedPointer<SurfaceCodecFactory>& factory)
{
    if (!factory)
        return;
    m_factories.append(factory);
    rebuildFormats();
}

QSharedPointer<SurfaceCodecFactory> SurfaceCodecManager::findFactory(QIODevice* device, const QByteArray& suffix,
                                                                     int capability) const
{
    for (const auto& factory : m_factories) {
        if (factory->canHandle(device, suffix) & capability)
            return factory;
    }
    return {};
}

QSharedPointer<SurfaceCodec> SurfaceCodecManager::findCodec(QIODevice* device, const QByteArray& suffix,
                                                            int capability) const
{
    const auto factory = findFactory(device, suffix, capability);
    return factory ? factory->createCodec(device, suffix) : QSharedPointer<SurfaceCodec>();
}

namespace {

void appendUnique(SurfaceFormatList& list, QSet<QString>& labels, const SurfaceFormatList& formats)
{
    for (const auto& f : formats) {
        if (labels.contains(f.label))
            continue;
        labels.insert(f.label);
        list.append(f);
    }
}

} // namespace

void SurfaceCodecManager::rebuildFormats()
{
    m_readFormats.clear();
    m_writeFormats.clear();
    QSet<QString> readLabels, writeLabels;
    for (const auto& factory : m_factories) {
        appendUnique(m_readFormats, readLabels, factory->getFormats());
        appendUnique(m_writeFormats, writeLabels, factory->getWriteFormats());
    }
}

SurfaceFormatList SurfaceCodecManager::getFormats(int capability) const
{
    return (capability & CapabilityWrite) ? m_writeFormats : m_readFormats;
}

QStringList SurfaceCodecManager::getExtensions() const
{
    QStringList out;
    for (const auto* list : {&m_readFormats, &m_writeFormats}) {
        for (const auto& f : *list) {
            if (!out.contains(f.extension))
                out << f.extension;
        }
    }
    return out;
}

QString SurfaceCodecManager::formatsText(int capability) const
{
    QString text;
    for (const auto& f : getFormats(capability))
        text += f.extension + QStringLiteral(", ");
    text.chop(2);
    return text;
}

bool SurfaceCodecManager::supportsCompression(const QByteArray& suffix) const
{
    for (const auto& factory : m_factories) {
        if ((factory->canHandle(nullptr, suffix) & CapabilityWrite) && factory->supportsCompression())
            return true;
    }
    return false;
}

} // namespace Ond::Surfaces
