#include "commands/SceneSelection.h"

#include "program/LogChannel.h"
#include "scene/graph/Entity.h"
#include "scene/graph/MaterialDefinition.h"
#include "scene/graph/MeshDisplayComponent.h"

#include <algorithm>

namespace ProgramCommand {

using namespace Ond::SceneGraph;
using Ond::Core::zmfBakerChannel;

namespace {

void markAll(const Scene& scene, bool selected)
{
    scene.forAllMeshes([&](const Mesh::SPtr& mesh) {
        const Mesh::DataSPtr data = mesh ? mesh->getData() : nullptr;
        if (!data)
            return true;
        for (size_t i = 0; i < data->getSubMeshCount(); ++i) {
            BitField<int> flags = data->getSubMeshFlags(i);
            flags.set(SelectedRenderFlag, selected);
            data->setSubMeshFlags(i, flags);
        }
        return true;
    });
}

bool isUnder(const Entity& entity, const Entity& node)
{
    if (&entity == &node)
        return true;
    const LocationComponent* target = node.getLocation();
    if (!target)
        return false;
    for (const LocationComponent* l = entity.getLocation(); l; l = l->getParent())
        if (l == target)
            return true;
    return false;
}

// The data of every mesh part named `node` or parented to an entity of
// that name, each Mesh once; `nodeFound` tells whether the name exists.
std::vector<Mesh::DataSPtr> meshesUnder(const Scene& scene, const QString& node, bool& nodeFound)
{
    std::vector<const Entity*> nodes;
    scene.forAllEntities([&](const Entity::SPtr& entity) {
        if (entity && entity->getName() == node)
            nodes.push_back(entity.get());
        return true;
    });
    nodeFound = !nodes.empty();
    std::vector<Mesh::DataSPtr> result;
    std::vector<const Mesh*> seen;
    scene.forAllEntities([&](const Entity::SPtr& entity) {
        const MeshDisplayComponent* display = entity ? entity->getMeshDisplay() : nullptr;
        if (!display || !display->getMesh())
            return true;
        const Mesh* mesh = display->getMesh().get();
        if (std::find(seen.begin(), seen.end(), mesh) != seen.end())
            return true;
        for (const Entity* n : nodes) {
            if (isUnder(*entity, *n)) {
                if (Mesh::DataSPtr data = mesh->getData())
                    result.push_back(std::move(data));
                seen.push_back(mesh);
                break;
            }
        }
        return true;
    });
    return result;
}

void select(Mesh::Data& data, size_t index)
{
    BitField<int> flags = data.getSubMeshFlags(index);
    flags.set(SelectedRenderFlag, true);
    data.setSubMeshFlags(index, flags);
}

} // namespace

QString SceneSelection::materialNotFoundText(const QVariant& key, const QString& node)
{
    switch (key.typeId()) {
    case QMetaType::Int:
        return QStringLiteral("material id %1 not found in \"%2\".").arg(key.toInt()).arg(node);
    case QMetaType::QString:
        return QStringLiteral("material \"%1\" not found in \"%2\".").arg(key.toString(), node);
    default:
        if (key.isValid())
            return QStringLiteral("Cannot search material id with invalid search key of type %1 in \"%2\".")
                .arg(QString::fromLatin1(key.typeName()), node);
        return QStringLiteral("Cannot search material id with invalid search key of unknown type.");
    }
}

std::vector<size_t> SceneSelection::findMaterial(const Mesh::Data& data, const QVariant& key, const QString* node)
{
    std::vector<size_t> found;
    if (key.typeId() == QMetaType::Int) {
        const int id = key.toInt();
        if (id >= 0 && size_t(id) < data.getSubMeshCount())
            found.push_back(size_t(id));
    } else if (key.typeId() == QMetaType::QString) {
        const QString name = key.toString();
        for (size_t i = 0; i < data.getSubMeshCount(); ++i) {
            const auto* material = dynamic_cast<const UserMaterialDefinition*>(data.getSubMesh(i)->material.get());
            if (material && material->name == name)
                found.push_back(i);
        }
    }
    if (found.empty() && node)
        zmfBakerChannel().error(materialNotFoundText(key, *node));
    return found;
}

void SceneSelection::apply(Scene& scene, const QStringList& selection)
{
    if (selection.isEmpty()) {
        markAll(scene, true);
        return;
    }
    markAll(scene, false);
    for (const QString& token : selection) {
        const QStringList parts = token.split(QLatin1Char('@'), Qt::KeepEmptyParts);
        if (parts.size() >= 3) {
            zmfBakerChannel().error(QStringLiteral("selection token %1 isn't formated properly.").arg(token));
            continue;
        }
        const QString& node = parts[0];
        bool nodeFound = false;
        const std::vector<Mesh::DataSPtr> meshes = meshesUnder(scene, node, nodeFound);
        if (!nodeFound || meshes.empty()) {
            zmfBakerChannel().error(QStringLiteral("selection node %1 doesn't exist.").arg(node));
            continue;
        }
        if (parts.size() == 1) {
            for (const Mesh::DataSPtr& data : meshes)
                for (size_t i = 0; i < data->getSubMeshCount(); ++i)
                    select(*data, i);
            continue;
        }
        bool isNumber = false;
        const int id = parts[1].toInt(&isNumber);
        const QVariant key = isNumber ? QVariant(id) : QVariant(parts[1]);
        bool any = false;
        for (const Mesh::DataSPtr& data : meshes) {
            for (size_t index : findMaterial(*data, key, nullptr)) {
                select(*data, index);
                any = true;
            }
        }
        // One line for the node, not one per part under it.
        if (!any)
            zmfBakerChannel().error(materialNotFoundText(key, node));
    }
}

} // namespace ProgramCommand
