#pragma once
// Kind 9: a texture of the high mesh, read at the hit's UV.

#include "baking/detail/StripJob.h"
#include "baking/detail/TextureParams.h"

namespace Ond::Baking {

struct TextureKernel
{
    static constexpr TexelClose close = TexelClose::Color;
    static constexpr bool reduces = false;

    const uint32_t* indices;
    const float* uvs;  // 2 per vertex
    std::shared_ptr<const Surfaces::IGenericSampler> sampler;

    TextureKernel(const DetailBakeJob& job, const EmbreeScene& scene)
        : indices(scene.mesh().indices.data())
        , uvs(scene.mesh().uvs.size() >= size_t(scene.mesh().vertexCount) * 2 ? scene.mesh().uvs.data() : nullptr)
    {
        if (job.params)
            sampler = static_cast<const TextureParams*>(job.params)->sampler;
    }

    void hit(const PrimaryHit& h, float* acc) const
    {
        if (!uvs || !sampler)
            return;
        const uint32_t* tri = indices + size_t(h.primID) * 3;
        const float w = 1.0f - h.u - h.v;
        const float* t0 = uvs + size_t(tri[0]) * 2;
        const float* t1 = uvs + size_t(tri[1]) * 2;
        const float* t2 = uvs + size_t(tri[2]) * 2;
        const Eigen::Vector4f s = sampler->sample(w * t0[0] + h.u * t1[0] + h.v * t2[0],
                                                  w * t0[1] + h.u * t1[1] + h.v * t2[1]);
        acc[0] += s[0];
        acc[1] += s[1];
        acc[2] += s[2];
    }
};

void registerTextureKernel();

} // namespace Ond::Baking
