#include "image/FileTextureLoader.h"

#include "image/SurfaceCodecManager.h"
#include "program/LogChannel.h"

#include <QFile>
#include <QFileInfo>

namespace Ond::Surfaces {

SurfaceSPtr FileTextureLoader::load(const QString& path, CodecOptions* options)
{
    QFile file(path);
    if (!file.exists()) {
        Core::zmfBakerChannel().warning(QStringLiteral("FileTextureLoader >> Loading ") + path
                                        + QStringLiteral(" Failed"));
        return {};
    }
    return load(&file, QFileInfo(path).suffix().toUtf8(), options);
}

SurfaceSPtr FileTextureLoader::load(QIODevice* device, const QByteArray& suffix, CodecOptions* options)
{
    const auto codec = SurfaceCodecManager::instance().findCodec(device, suffix, CapabilityRead);
    if (!codec) {
        Core::zmfBakerChannel().warning(QStringLiteral("FileTextureLoader >> ")
                                        + QStringLiteral("Can't find image codec"));
        return {};
    }
    if (options)
        codec->setOptions(*options);
    SurfaceSPtr result;
    if (!codec->read(result) || !result) {
        Core::zmfBakerChannel().warning(QStringLiteral("FileTextureLoader >> ")
                                        + QStringLiteral("Can't load io device: corrupted or bad format ?"));
        return {};
    }
    if (options)
        *options = codec->options();
    return result;
}

} // namespace Ond::Surfaces
