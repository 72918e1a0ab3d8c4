#pragma once
// Factory of RawSurfaceCodec: exactly the suffix "surface".

#include "image/SurfaceCodecFactory.h"

namespace Ond::Surfaces {

class RawSurfaceCodecFactory : public SurfaceCodecFactory
{
public:
    RawSurfaceCodecFactory();

    int canHandle(QIODevice* device, const QByteArray& suffix) const override;
    QSharedPointer<SurfaceCodec> createCodec(QIODevice* device, const QByteArray& suffix) const override;
};

} // namespace Ond::Surfaces
