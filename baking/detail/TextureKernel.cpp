#include "baking/detail/TextureKernel.h"

namespace Ond::Baking {

void registerTextureKernel()
{
    registerStripKernel(BakeJobKind::Texture, &makeStripJob<TextureKernel>);
}

} // namespace Ond::Baking
