#pragma once
// Every common image file, through the FreeImage library.

#include "image/SurfaceCodecFactory.h"

#include <FreeImage.h>

#include <QMap>

namespace Ond::Image::Plugins {

class FreeimageSurfaceCodecFactory : public Surfaces::SurfaceCodecFactory
{
public:
    // `options` are defaults every codec of this factory starts from.
    explicit FreeimageSurfaceCodecFactory(const Surfaces::CodecOptions& options = {});

    int canHandle(QIODevice* device, const QByteArray& suffix) const override;
    QSharedPointer<Surfaces::SurfaceCodec> createCodec(QIODevice* device, const QByteArray& suffix) const override;
    Surfaces::OptionMap getOptions(const QByteArray& suffix) const override;
    Surfaces::OptionMap getOptionsDescription(const QByteArray& suffix) const override;

    // The option maps by key suffix: "bmp", "exr", "jpg", "png", "tif",
    // "tga", "webp".
    static const QMap<QString, Surfaces::OptionMap>& optionMaps();

private:
    Surfaces::CodecOptions m_options;
};

} // namespace Ond::Image::Plugins
