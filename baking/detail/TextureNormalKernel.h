#pragma once
// Kind 10: a tangent-space normal map of the high mesh, taken to world
// space on the high mesh's frame at the hit. The driver's post-process
// brings it back to the low mesh's tangent space.

#include "baking/detail/StripJob.h"
#include "baking/detail/TextureParams.h"

#include <Eigen/Geometry>

namespace Ond::Baking {

struct TextureNormalKernel
{
    static constexpr TexelClose close = TexelClose::Direction;
    static constexpr bool reduces = false;

    const uint32_t* indices;
    const float* normals;    // 3 per vertex
    const float* tangents;   // 4 per vertex
    const float* binormals;  // 4 per vertex
    const float* uvs;        // 2 per vertex
    TextureNormalParams params;

    TextureNormalKernel(const DetailBakeJob& job, const EmbreeScene& scene)
        : indices(scene.mesh().indices.data())
        , normals(scene.mesh().normals.data())
        , tangents(scene.mesh().tangents.size() >= size_t(scene.mesh().vertexCount) * 4 ? scene.mesh().tangents.data()
                                                                                        : nullptr)
        , binormals(scene.mesh().binormals.size() >= size_t(scene.mesh().vertexCount) * 4
                        ? scene.mesh().binormals.data()
                        : nullptr)
        , uvs(scene.mesh().uvs.size() >= size_t(scene.mesh().vertexCount) * 2 ? scene.mesh().uvs.data() : nullptr)
    {
        if (job.params)
            params = *static_cast<const TextureNormalParams*>(job.params);
    }

    static Eigen::Vector3f unit(const float* p)
    {
        Eigen::Vector3f v(p[0], p[1], p[2]);
        const float len2 = v.squaredNorm();
        if (len2 > 0.0f)
            v /= std::sqrt(len2);
        return v;
    }

    void hit(const PrimaryHit& h, float* acc) const
    {
        if (!uvs || !tangents || !binormals || !params.sampler)
            return;
        const uint32_t* tri = indices + size_t(h.primID) * 3;
        const float w = 1.0f - h.u - h.v;
        const size_t i0 = tri[0], i1 = tri[1], i2 = tri[2];
        const float u = w * uvs[i0 * 2] + h.u * uvs[i1 * 2] + h.v * uvs[i2 * 2];
        const float v = w * uvs[i0 * 2 + 1] + h.u * uvs[i1 * 2 + 1] + h.v * uvs[i2 * 2 + 1];
        const Eigen::Vector3f n = w * Eigen::Vector3f(normals + i0 * 3) + h.u * Eigen::Vector3f(normals + i1 * 3)
                                  + h.v * Eigen::Vector3f(normals + i2 * 3);
        const Eigen::Vector3f t =
            w * unit(tangents + i0 * 4) + h.u * unit(tangents + i1 * 4) + h.v * unit(tangents + i2 * 4);
        Eigen::Vector3f b =
            w * unit(binormals + i0 * 4) + h.u * unit(binormals + i1 * 4) + h.v * unit(binormals + i2 * 4);
        bool flip = false;
        if (params.perFragmentBinormal) {
            const Eigen::Vector3f c = n.cross(t);
            flip = c.dot(b) < 0.0f;
            b = c;
        }
        if (params.invertGreen != flip)
            b = -b;
        const Eigen::Vector4f s = params.sampler->sample(u, v);
        const float x = 2.0f * s[0] - 1.0f, y = 2.0f * s[1] - 1.0f, z = 2.0f * s[2] - 1.0f;
        for (int c = 0; c < 3; ++c)
            acc[c] += t[c] * x + b[c] * y + n[c] * z;
    }
};

void registerTextureNormalKernel();

} // namespace Ond::Baking
