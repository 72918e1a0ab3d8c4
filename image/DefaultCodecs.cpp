#include "image/DefaultCodecs.h"

#include "image/DDSSurfaceCodecFactory.h"
#include "image/FreeimageSurfaceCodecFactory.h"
#include "image/LYDSurfaceCodecFactory.h"
#include "image/SurfaceCodecManager.h"

namespace Ond::Surfaces {

void registerDefaultCodecs()
{
    static bool registered = false; // a second call must not list every format twice
    if (registered)
        return;
    registered = true;
    SurfaceCodecManager& manager = SurfaceCodecManager::instance();
    manager.registerFactory(QSharedPointer<Image::Plugins::DDSSurfaceCodecFactory>::create());
    manager.registerFactory(QSharedPointer<Image::Plugins::FreeimageSurfaceCodecFactory>::create(CodecOptions()));
    manager.registerFactory(QSharedPointer<Image::Plugins::LYDSurfaceCodecFactory>::create());
}

} // namespace Ond::Surfaces
