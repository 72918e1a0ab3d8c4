#pragma once
// Settings of the texture transfer kernels: the high mesh's texture, read
// through a sampler (bilinear or nearest, repeat, origin bottom left).

#include "image/IGenericSampler.h"

#include <memory>

namespace Ond::Baking {

struct TextureParams
{
    std::shared_ptr<const Surfaces::IGenericSampler> sampler;
};

// A tangent-space normal map of the high mesh.
struct TextureNormalParams
{
    std::shared_ptr<const Surfaces::IGenericSampler> sampler;
    bool invertGreen = false;          // the map's green points down (DirectX)
    bool perFragmentBinormal = false;  // binormal rebuilt as N x T
};

} // namespace Ond::Baking
