#include "baking/detail/TextureNormalKernel.h"

namespace Ond::Baking {

void registerTextureNormalKernel()
{
    registerStripKernel(BakeJobKind::TextureNormal, &makeStripJob<TextureNormalKernel>);
}

} // namespace Ond::Baking
