#pragma once
// Factory of LYDSurfaceCodec: the suffix "lyd", any case.

#include "image/SurfaceCodecFactory.h"

namespace Ond::Image::Plugins {

class LYDSurfaceCodecFactory : public Surfaces::SurfaceCodecFactory
{
public:
    LYDSurfaceCodecFactory();

    int canHandle(QIODevice* device, const QByteArray& suffix) const override;
    QSharedPointer<Surfaces::SurfaceCodec> createCodec(QIODevice* device, const QByteArray& suffix) const override;
};

} // namespace Ond::Image::Plugins
