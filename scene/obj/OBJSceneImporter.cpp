#include "scene/obj/OBJSceneImporter.h"

#include "program/LogChannel.h"
#include "scene/graph/LocationComponent.h"
#include "scene/graph/MaterialDefinition.h"
#include "scene/graph/MeshDisplayComponent.h"
#include "scene/load/SubProgress.h"
#include "scene/obj/ObjFileParser.h"

#include <QFileInfo>

namespace Ond::SceneLoad {

using namespace Ond::SceneGraph;

namespace {

const char SculptToolMeshName[] = "ZBrushPolyMesh3D";

QString errorPrefix(int kind)
{
    switch (kind) {
    case ObjError::Open:
        return QStringLiteral("Open File Failed:");
    case ObjError::Parsing:
        return QStringLiteral("Parsing error:");
    default:
        return QStringLiteral("Invalid data error:");
    }
}

template <typename T>
std::unique_ptr<BinaryBuffer<T>> bufferOrNull(std::vector<T>& values)
{
    if (values.empty())
        return nullptr;
    return makeBuffer(std::move(values));
}

std::vector<SubMesh> makeSubMeshes(ObjMesh& mesh)
{
    std::vector<SubMesh> subMeshes;
    subMeshes.reserve(mesh.subMeshes.size());
    for (ObjSubMesh& source : mesh.subMeshes) {
        auto material = std::make_shared<UserMaterialDefinition>(source.material);
        material->name = source.material;
        material->label = source.material;
        subMeshes.emplace_back(makeBuffer(std::move(source.indices)), PrimitiveType::Triangles, 3,
                               std::move(material), DefaultRenderFlags);
    }
    return subMeshes;
}

} // namespace

OBJSceneImporter::OBJSceneImporter(const QString& filePath, const QByteArray& suffix, SceneHandler* handler)
    : SceneImporter(filePath, suffix, handler)
{
}

Scene* OBJSceneImporter::import(const SceneLoadOptions& options, Core::ProgressInterface* progress)
{
    if (progress) {
        progress->setText(tr("Loading 3D model"));
        progress->setValue(0.0);
    }

    std::unique_ptr<SubProgress> parserProgress;
    if (progress)
        parserProgress = std::make_unique<SubProgress>(progress, 0.0, 0.5);
    ObjFileParser parser(&file, options.has(ImporterComputesNormals), parserProgress.get());
    file.close();

    if (parser.wasCancelled() || (progress && progress->isCancelled()))
        return nullptr;

    const std::vector<ObjError> errors = parser.errors();
    if (!errors.empty()) {
        QString text;
        for (const ObjError& error : errors)
            text += errorPrefix(error.kind) + QStringLiteral("\n  ") + error.text + QLatin1Char('\n');
        Core::zmfBakerChannel().error(text);
    }

    std::vector<ObjMesh>& meshes = parser.meshes();
    if (meshes.empty())
        return nullptr;

    const QString fileBaseName = QFileInfo(file.fileName()).baseName();
    const bool renameAll = !parser.notExportedBySculptTool();

    std::vector<Entity::SPtr> entities;
    entities.reserve(meshes.size() + 1);
    auto root = std::make_shared<Entity>(QStringLiteral("root"), std::make_unique<LocationComponent>());
    root->setLabel(tr("Root"));
    entities.push_back(root);

    const double meshCount = static_cast<double>(meshes.size());
    for (size_t i = 0; i < meshes.size(); ++i) {
        ObjMesh& source = meshes[i];
        if (!source.positions.empty()) {
            QString name = source.name;
            if (renameAll || name.isEmpty() || name == QLatin1String(SculptToolMeshName))
                name = fileBaseName;

            Vec3BufferUPtr positions = makeBuffer(std::move(source.positions));
            Vec3BufferUPtr normals;
            if (options.has(KeepNormals))
                normals = bufferOrNull(source.normals);
            std::vector<Vec2BufferUPtr> uvSets;
            if (options.has(KeepUvSets) && !source.texcoords.empty())
                uvSets.push_back(makeBuffer(std::move(source.texcoords)));
            Vec4BufferUPtr colors;
            if (options.has(KeepColors))
                colors = bufferOrNull(source.colors);

            auto data = std::make_shared<Mesh::Data>(std::move(positions), std::move(normals), nullptr, nullptr,
                                                     std::move(colors), std::move(uvSets), makeSubMeshes(source),
                                                     BoundingBox());
            auto mesh = std::make_shared<Mesh>(std::move(data), name);
            mesh->setName(name);

            auto location = std::make_unique<LocationComponent>();
            location->setParent(root->getLocation());
            auto display = std::make_unique<MeshDisplayComponent>(std::move(mesh));
            entities.push_back(std::make_shared<Entity>(name, std::move(location), std::move(display)));
        }
        source = ObjMesh();

        if (progress) {
            progress->setValue((static_cast<double>(i) + 0.5) * 0.5 / meshCount + 0.5);
            progress->setValue((static_cast<double>(i) + 1.0) * 0.5 / meshCount + 0.5);
            if (progress->isCancelled())
                return nullptr;
        }
    }

    return new Scene(std::move(entities));
}

} // namespace Ond::SceneLoad
