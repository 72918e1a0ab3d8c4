#include "baking/SceneConverterVisitor.h"

#include "scene/graph/MaterialDefinition.h"
#include "scene/graph/MeshDisplayComponent.h"
#include "scene/graph/MurmurHash3.h"

namespace Vrn::Baking {

using namespace Ond::SceneGraph;

namespace {

template <typename Buffer>
void addAttribute(ConvertedMesh& record, int semantic, int components, const Buffer* buffer)
{
    if (!buffer || buffer->size() == 0)
        return;
    ConvertedAttribute attribute;
    attribute.semantic = semantic;
    attribute.components = components;
    attribute.values = reinterpret_cast<const float*>(buffer->data());
    attribute.count = buffer->size();
    record.attributes.push_back(attribute);
}

} // namespace

SceneConverterVisitor::SceneConverterVisitor()
    : AbstractFilteredSceneVisitor(BitField<int>(AllRenderFlags), 0)
{
}

uint32_t SceneConverterVisitor::identityOf(uint64_t revision)
{
    const QByteArray text = QByteArray::number(qulonglong(revision));
    return murmurHash3_x86_32(text.constData(), size_t(text.size()), 0);
}

void SceneConverterVisitor::visit(const MeshDisplayComponent* component)
{
    if (!component || !component->getMesh())
        return;
    const Mesh::DataSPtr data = component->getMesh()->getData();
    if (!data || !data->getPositions() || data->getPositions()->size() == 0)
        return;

    ConvertedMesh record;
    record.data = data;
    addAttribute(record, PositionAttribute, 3, data->getPositions());
    addAttribute(record, NormalAttribute, 3, data->getNormals());
    addAttribute(record, TangentAttribute, 3, data->getTangents());
    addAttribute(record, BinormalAttribute, 3, data->getBinormals());
    addAttribute(record, ColorAttribute, 4, data->getColors());
    const size_t uvSets = std::min<size_t>(data->getUvSetCount(), LastUvSetAttribute - FirstUvSetAttribute + 1);
    for (size_t i = 0; i < uvSets; ++i)
        addAttribute(record, FirstUvSetAttribute + int(i), 2, data->getUvSet(i));

    record.transform = component->getGlobalTransform();
    record.color = MaterialDefinition::defaultColor();
    for (const SubMesh& subMesh : data->getSubMeshes()) {
        if (subMesh.material) {
            record.color = subMesh.material->color;
            break;
        }
    }
    const int flags = component->getRenderFlags().value();
    record.selectionBits = ((flags & DefaultRenderFlags) ? 1u : 0u) | ((flags & SelectedRenderFlag) ? 2u : 0u);
    record.name = component->getMesh()->getName();
    record.index = QString::number(m_running++);
    record.identity = identityOf(data->getRevision());
    m_meshes.push_back(std::move(record));
}

} // namespace Vrn::Baking
