#pragma once
// Factory of DDSSurfaceCodec: the suffix "dds", any case. It writes
// uncompressed files only, so it offers no compression choice.

#include "image/SurfaceCodecFactory.h"

namespace Ond::Image::Plugins {

class DDSSurfaceCodecFactory : public Surfaces::SurfaceCodecFactory
{
public:
    DDSSurfaceCodecFactory();

    int canHandle(QIODevice* device, const QByteArray& suffix) const override;
    QSharedPointer<Surfaces::SurfaceCodec> createCodec(QIODevice* device, const QByteArray& suffix) const override;
    bool supportsCompression() const override { return false; }
};

} // namespace Ond::Image::Plugins
