#include "commands/SceneInfoPrinter.h"

#include "image/UDIMNumbering.h"
#include "scene/graph/Entity.h"
#include "scene/graph/EnvironmentDisplayComponent.h"
#include "scene/graph/MaterialDefinition.h"
#include "scene/graph/MeshDisplayComponent.h"
#include "scene/graph/Scene.h"
#include "scene/graph/UvTile.h"

#include <QStringList>

#include <map>

namespace ProgramCommand {

using namespace Ond::SceneGraph;

namespace {

QString number(double value)
{
    return QString::number(value, 'g', 7);
}

QString yesNo(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

template <typename Vector>
QString vectorText(const Vector& v)
{
    QStringList parts;
    for (Eigen::Index i = 0; i < v.size(); ++i)
        parts << number(v[i]);
    return QLatin1Char('(') + parts.join(QStringLiteral(", ")) + QLatin1Char(')');
}

QString matrixText(const Eigen::Matrix4f& m)
{
    QStringList rows;
    for (int r = 0; r < 4; ++r)
        rows << vectorText(Eigen::Vector4f(m.row(r).transpose()));
    return QLatin1Char('(') + rows.join(QStringLiteral(", ")) + QLatin1Char(')');
}

QString tilesText(const UvTileSet& tiles)
{
    QStringList parts;
    for (const UvTile& tile : tiles)
        parts << QStringLiteral("(%1, %2)").arg(tile.u).arg(tile.v);
    return parts.join(QLatin1Char(' '));
}

// Tiles left of the first column, right of the tenth or below the first
// row have no UDIM number: they are listed as tiles only.
QString udimsText(const UvTileSet& tiles)
{
    QStringList parts;
    for (const UvTile& tile : tiles)
        if (const auto udim = Vrn::Baking::udimOfTile(tile.u, tile.v))
            parts << QString::number(*udim);
    return parts.join(QLatin1Char(' '));
}

// Tiles reached by the edges and points of every submesh.
UvTileSet meshTiles(const Mesh::Data& data, size_t uvSet)
{
    UvTileSet tiles;
    for (const SubMesh& subMesh : data.getSubMeshes())
        data.collectUvTiles(tiles, uvSet, &subMesh);
    return tiles;
}

bool withinUnitSquare(const Vec2Buffer& uvs)
{
    for (const Eigen::Vector2f& uv : uvs) {
        if (!(uv.x() >= 0.0f && uv.x() <= 1.0f && uv.y() >= 0.0f && uv.y() <= 1.0f))
            return false;
    }
    return true;
}

QString subMeshName(const SubMesh& subMesh, size_t index)
{
    if (const auto* material = dynamic_cast<const UserMaterialDefinition*>(subMesh.material.get()))
        return material->name;
    return QString::number(index);
}

} // namespace

SceneInfoPrinter::SceneInfoPrinter(Ond::Program::IndentingPrinter& printer, const Options& options)
    : m_printer(printer)
    , m_options(options)
{
}

void SceneInfoPrinter::printEntities(Scene& scene)
{
    scene.accept(*this);
}

bool SceneInfoPrinter::visitEntity(Entity& entity)
{
    const bool wanted = m_options.listAll
        || (entity.getCamera() && m_options.printCamera)
        || (entity.getEnvironmentDisplay() && m_options.printCamera)
        || (entity.getLight() && m_options.printLighting)
        || (entity.getMeshDisplay() && !m_options.hideMesh);
    if (wanted)
        printEntity(entity);
    // Everything is printed here; the entity's display needs no visit.
    return false;
}

void SceneInfoPrinter::printEntity(Entity& entity)
{
    auto& out = m_printer;
    out.print(QStringLiteral("Entity \"%1\":").arg(entity.getName()));
    out.indent();
    out.print(QStringLiteral("Label: %1").arg(entity.getLabel()));
    out.print(QStringLiteral("Enabled: %1").arg(yesNo(entity.isEnabled())));

    if (!m_options.hideBoundingBox) {
        const BoundingBox& box = entity.getGlobalBoundingBox();
        out.print(QStringLiteral("Bounding box:"));
        out.indent();
        if (!box.isEmpty()) {
            out.print(QStringLiteral("Minimal point: %1").arg(vectorText(box.getMin())));
            out.print(QStringLiteral("Maximal point: %1").arg(vectorText(box.getMax())));
            out.print(QStringLiteral("Center: %1").arg(vectorText(box.getCenter())));
            out.print(QStringLiteral("Size: %1").arg(vectorText(box.getSize())));
        }
        out.unindent();
    }

    if (!m_options.hideLocation) {
        if (const LocationComponent* location = entity.getLocation()) {
            out.print(QStringLiteral("Location:"));
            out.indent();
            out.print(QStringLiteral("Local transformation: %1").arg(matrixText(location->getLocalTransform())));
            out.print(QStringLiteral("Global transformation: %1").arg(matrixText(location->getGlobalTransform())));
            out.unindent();
        }
    }

    if (m_options.printCamera) {
        if (const CameraComponent* camera = entity.getCamera()) {
            out.print(QStringLiteral("Camera:"));
            out.indent();
            out.print(QStringLiteral("Resolution: %1x%2").arg(camera->getResolution().x()).arg(camera->getResolution().y()));
            if (camera->getProjectionType() == CameraComponent::Perspective) {
                out.print(QStringLiteral("Projection type: Perspective"));
                out.print(QStringLiteral("FOV: %1 degrees").arg(number(camera->getFieldOfViewDegrees())));
                out.print(QStringLiteral("Focal distance: %1mm").arg(number(camera->getFocalDistanceInMm())));
                out.print(QStringLiteral("Aperture width: %1mm").arg(number(camera->getApertureWidthInMm())));
            } else {
                out.print(QStringLiteral("Projection type: Orthographic"));
                out.print(QStringLiteral("Zoom factor: %1").arg(number(camera->getOrthographicZoomFactor())));
            }
            out.print(QStringLiteral("Near clip distance: %1").arg(number(camera->getNearClipPlane())));
            out.print(QStringLiteral("Far clip distance: %1").arg(number(camera->getFarClipPlane())));
            out.print(QStringLiteral("Clear color: %1").arg(vectorText(camera->getClearColor())));
            out.unindent();
        }
        if (const EnvironmentDisplayComponent* environment = entity.getEnvironmentDisplay()) {
            out.print(QStringLiteral("Environment:"));
            out.indent();
            out.print(QStringLiteral("Is visible: %1").arg(yesNo(environment->isVisible())));
            out.print(QStringLiteral("Environment Texture: %1").arg(environment->getEnvironmentTexture()));
            out.print(QStringLiteral("Panorama Texture: %1").arg(environment->getPanoramaTexture()));
            out.print(QStringLiteral("Vizualize dome: %1").arg(yesNo(environment->isDomeVisible())));
            out.unindent();
        }
    }

    if (m_options.printLighting) {
        if (const LightComponent* light = entity.getLight()) {
            out.print(QStringLiteral("Lighting:"));
            out.indent();
            switch (light->getLightType()) {
            case LightComponent::Point:
                out.print(QStringLiteral("Type: Point"));
                break;
            case LightComponent::Ambient:
                out.print(QStringLiteral("Type: Ambient"));
                break;
            default:
                out.print(QStringLiteral("Type: Unknown"));
                break;
            }
            out.print(QStringLiteral("Color: %1").arg(vectorText(light->getColor())));
            out.print(QStringLiteral("Intensity: %1").arg(number(light->getIntensity())));
            out.unindent();
        }
    }

    if (!m_options.hideMesh) {
        if (const MeshDisplayComponent* display = entity.getMeshDisplay())
            printMesh(*display);
    }
    out.unindent();
}

void SceneInfoPrinter::printMesh(const MeshDisplayComponent& display)
{
    auto& out = m_printer;
    const Mesh::SPtr& mesh = display.getMesh();
    const Mesh::DataSPtr data = mesh ? mesh->getData() : nullptr;
    out.print(QStringLiteral("Mesh:"));
    out.indent();
    out.print(QStringLiteral("Name: %1").arg(mesh ? mesh->getName() : QString()));
    out.print(QStringLiteral("Number of vertices: %1").arg(data ? data->getVertexCount() : 0));
    if (data) {
        for (size_t i = 0; i < data->getUvSetCount(); ++i) {
            const Vec2Buffer* uvs = data->getUvSet(i);
            out.print(QStringLiteral("UV %1:").arg(i));
            out.indent();
            out.print(QStringLiteral("Contained within unit square: %1").arg(yesNo(uvs && withinUnitSquare(*uvs))));
            out.print(QStringLiteral("Number of points: %1").arg(uvs ? uvs->size() : 0));
            if (m_options.listUvTiles) {
                const UvTileSet tiles = meshTiles(*data, i);
                out.print(QStringLiteral("UV tiles : ") + tilesText(tiles));
                out.print(QStringLiteral("Udim tiles : ") + udimsText(tiles));
            }
            out.unindent();
        }
        const std::vector<SubMesh>& subMeshes = data->getSubMeshes();
        for (size_t i = 0; i < subMeshes.size(); ++i) {
            const SubMesh& subMesh = subMeshes[i];
            out.print(QStringLiteral("Submesh \"%1\"").arg(subMeshName(subMesh, i)));
            out.indent();
            const MaterialDefinition* material = subMesh.material.get();
            out.print(QStringLiteral("Label %1").arg(material ? material->label : QString()));
            out.print(QStringLiteral("Color: %1").arg(vectorText(material ? material->color : MaterialDefinition::defaultColor())));
            out.print(QStringLiteral("Number of triangles: %1").arg(subMesh.primitiveCount));
            out.unindent();
        }
    }
    out.unindent();
}

void SceneInfoPrinter::printUvSets(const Scene& scene)
{
    std::map<size_t, UvTileSet> tilesBySet;
    scene.forAllMeshes([&](const Mesh::SPtr& mesh) {
        const Mesh::DataSPtr data = mesh ? mesh->getData() : nullptr;
        if (!data)
            return true;
        for (size_t i = 0; i < data->getUvSetCount(); ++i) {
            const UvTileSet tiles = meshTiles(*data, i);
            tilesBySet[i].insert(tiles.begin(), tiles.end());
        }
        return true;
    });
    for (const auto& [index, tiles] : tilesBySet) {
        m_printer.print(QStringLiteral("UV set %1").arg(index));
        m_printer.indent();
        m_printer.print(QStringLiteral("UV tiles : ") + tilesText(tiles));
        m_printer.print(QStringLiteral("Udim tiles : ") + udimsText(tiles));
        m_printer.unindent();
    }
}

} // namespace ProgramCommand
