#pragma once
// Kind 4: one colour per triangle. "Material Color" is the part's material
// as grabbed; "File ID" and "Mesh ID / Polygroup" give every distinct key
// (the part's name key, or its sub-mesh) the next colour of the chosen
// generator, in order of first appearance.

#include "baking/detail/StripJob.h"

#include <vector>

namespace Ond::Baking {

enum class ColorSource : int32_t { VertexColor = 0, MaterialColor = 1, FileId = 2, MeshId = 3 };

class TriangleColorKernel
{
public:
    static constexpr TexelClose close = TexelClose::Color;
    static constexpr bool reduces = false;

    TriangleColorKernel(const DetailBakeJob& job, const EmbreeScene& scene);

    void hit(const PrimaryHit& h, float* acc) const
    {
        const float* c = m_colors.data() + size_t(h.primID) * 3;
        acc[0] += c[0];
        acc[1] += c[1];
        acc[2] += c[2];
    }

    // 3 floats per triangle of the grabbed mesh.
    const std::vector<float>& colors() const { return m_colors; }

    // For each triangle, in grab order, the index of its key among the
    // distinct keys in order of first appearance; `keyCount` receives the
    // number of keys and `meshCount` the number of parts.
    static std::vector<uint32_t> subMeshKeys(SceneGraph::Scene& scene, size_t triangleCount, uint32_t& keyCount,
                                             uint32_t& meshCount);
    static std::vector<uint32_t> nameKeys(const GrabbedMesh& mesh, uint32_t& keyCount);

private:
    std::vector<float> m_colors;
};

void registerTriangleColorKernel();

} // namespace Ond::Baking
