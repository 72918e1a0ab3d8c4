#include "baking/detail/TriangleColorKernel.h"

#include "baking/lowpoly/ColorGenerator.h"
#include "scene/graph/AbstractFilteredSceneVisitor.h"
#include "scene/graph/MeshDisplayComponent.h"

#include <QColor>

#include <unordered_map>

namespace Ond::Baking {

using namespace SceneGraph;

namespace {

// Walks the parts and their triangle lists in the order of the mesh grab,
// so that triangle i here is triangle i of the grabbed mesh.
class SubMeshKeyVisitor : public AbstractFilteredSceneVisitor
{
public:
    SubMeshKeyVisitor(std::vector<uint32_t>& keys)
        : AbstractFilteredSceneVisitor(BitField<int>(AllRenderFlags), 0), m_keys(keys)
    {
    }

    void visit(const MeshDisplayComponent* component) override
    {
        if (!component || !component->getMesh())
            return;
        const Mesh::DataSPtr data = component->getMesh()->getData();
        if (!data || data->getVertexCount() == 0)
            return;
        ++meshCount;
        for (const SubMesh& subMesh : data->getSubMeshes()) {
            if (!subMesh.indices || subMesh.primitiveType != PrimitiveType::Triangles
                || subMesh.indicesPerPrimitive != 3)
                continue;
            const auto found = m_index.emplace(&subMesh, uint32_t(m_index.size()));
            const uint32_t key = found.first->second;
            const size_t count = subMesh.indices->size() / 3;
            for (size_t t = 0; t < count && m_triangle < m_keys.size(); ++t)
                m_keys[m_triangle++] = key;
        }
    }

    uint32_t keyCount() const { return uint32_t(m_index.size()); }
    uint32_t meshCount = 0;

private:
    std::vector<uint32_t>& m_keys;
    std::unordered_map<const SubMesh*, uint32_t> m_index;
    size_t m_triangle = 0;
};

} // namespace

std::vector<uint32_t> TriangleColorKernel::subMeshKeys(Scene& scene, size_t triangleCount, uint32_t& keyCount,
                                                       uint32_t& meshCount)
{
    std::vector<uint32_t> keys(triangleCount, 0u);
    SubMeshKeyVisitor visitor(keys);
    scene.accept(visitor);
    keyCount = visitor.keyCount();
    meshCount = visitor.meshCount;
    return keys;
}

std::vector<uint32_t> TriangleColorKernel::nameKeys(const GrabbedMesh& mesh, uint32_t& keyCount)
{
    std::vector<uint32_t> keys(mesh.triangleCount, 0u);
    std::unordered_map<uint32_t, uint32_t> index;
    for (size_t t = 0; t < mesh.triangleCount; ++t)
        keys[t] = index.emplace(mesh.ids[t], uint32_t(index.size())).first->second;
    keyCount = uint32_t(index.size());
    return keys;
}

TriangleColorKernel::TriangleColorKernel(const DetailBakeJob& job, const EmbreeScene& scene)
{
    const GrabbedMesh& mesh = scene.mesh();
    const size_t triangles = mesh.triangleCount;
    m_colors.assign(triangles * 3, 1.0f);
    if (mesh.colors.size() >= triangles * 3)
        std::copy(mesh.colors.data(), mesh.colors.data() + triangles * 3, m_colors.begin());

    const auto source = ColorSource(job.colorSource);
    if (source != ColorSource::FileId && source != ColorSource::MeshId)
        return;

    uint32_t keyCount = 0, count = 0;
    std::vector<uint32_t> keys;
    if (source == ColorSource::FileId) {
        keys = nameKeys(mesh, keyCount);
        count = keyCount;
    } else {
        if (!job.highScene)
            return;
        keys = subMeshKeys(*job.highScene, triangles, keyCount, count);
        // The generators step by 1 / count and go invalid past it: never
        // fewer steps than keys.
        count = std::max(count, keyCount);
    }
    const std::shared_ptr<ColorGenerator> generator = createColorGenerator(job.colorGenerator, count);
    if (!generator || keyCount == 0)
        return;
    std::vector<float> palette(size_t(keyCount) * 3);
    for (uint32_t k = 0; k < keyCount; ++k) {
        const QColor color = generator->next();
        palette[k * 3 + 0] = float(color.redF());
        palette[k * 3 + 1] = float(color.greenF());
        palette[k * 3 + 2] = float(color.blueF());
    }
    for (size_t t = 0; t < triangles; ++t)
        std::copy_n(&palette[size_t(keys[t]) * 3], 3, &m_colors[t * 3]);
}

void registerTriangleColorKernel()
{
    registerStripKernel(BakeJobKind::TriangleColor, &makeStripJob<TriangleColorKernel>);
}

} // namespace Ond::Baking
