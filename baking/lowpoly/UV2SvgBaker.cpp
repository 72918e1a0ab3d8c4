#include "baking/lowpoly/UV2SvgBaker.h"

#include "baking/AbstractBakingContext.h"
#include "baking/lowpoly/ColorGenerator.h"
#include "baking/lowpoly/LowPolyProperties.h"
#include "baking/lowpoly/SceneVisitor.h"
#include "baking/lowpoly/SvgDocument.h"
#include "baking/lowpoly/UvIslands.h"
#include "program/LogChannel.h"
#include "scene/graph/MeshDisplayComponent.h"

#include <QBuffer>
#include <QPainter>

#include <algorithm>
#include <stdexcept>

namespace Ond::Baking {

namespace {

// Shapes of the selected parts only, as the GL bakers draw them.
constexpr uint32_t SelectedPartsMask = 2;
constexpr double SvgResolution = 90.0;
constexpr double PaddingMiterLimit = 2.0;

// The UV triangles of each mesh, moved by the tile offset so that the
// chosen tile is the unit square.
class UvPolygonsRetriever : public SceneVisitor
{
public:
    struct MeshPolygons
    {
        // Three corners per triangle.
        std::vector<QPointF> corners;
        int colorId = 0;
    };

    UvPolygonsRetriever(uint32_t uvSet, int tileU, int tileV)
        : SceneVisitor(SelectedPartsMask, uvSet), m_tileU(tileU), m_tileV(tileV)
    {
    }

    bool visitMesh(const MeshItem& item) override
    {
        const SceneGraph::Vec2Buffer* uvs = item.data->getUvSet(m_uvSet);
        if (!uvs)
            throw std::runtime_error("Couldn't find UVs for mesh " + item.entity->getName().toStdString());
        MeshPolygons mesh;
        mesh.colorId = int(meshes.size());
        for (const SceneGraph::SubMesh& sub : item.data->getSubMeshes()) {
            if (!sub.indices || sub.primitiveType != SceneGraph::PrimitiveType::Triangles)
                continue;
            const auto& indices = *sub.indices;
            mesh.corners.reserve(mesh.corners.size() + indices.size());
            for (size_t i = 0; i + 2 < indices.size(); i += 3)
                for (size_t k = 0; k < 3; ++k) {
                    const uint32_t index = indices[i + k];
                    if (index >= uvs->size())
                        throw std::runtime_error("Couldn't find UVs for mesh " + item.entity->getName().toStdString());
                    const Eigen::Vector2f& uv = (*uvs)[index];
                    mesh.corners.emplace_back(double(uv.x()) - m_tileU, double(uv.y()) - m_tileV);
                }
        }
        meshes.push_back(std::move(mesh));
        return true;
    }

    std::vector<MeshPolygons> meshes;

private:
    int m_tileU;
    int m_tileV;
};

bool sceneHasUvSet(const SceneGraph::Scene& scene, int uvSet)
{
    bool found = false;
    scene.forAllMeshes([&](const SceneGraph::Mesh::SPtr& mesh) {
        const SceneGraph::Mesh::DataSPtr data = mesh->getData();
        if (data && uvSet >= 0 && data->getUvSetCount() > size_t(uvSet))
            found = true;
        return !found;
    });
    return found;
}

std::shared_ptr<ColorGenerator> islandColors(int mode, uint32_t count)
{
    // Random and Grayscale as named; every other mode walks the hues.
    return createColorGenerator(mode == 0 || mode == 2 ? mode : 1, count);
}

} // namespace

QString UV2SvgBaker::label() const
{
    return trBaking("Convert UV to SVG");
}

QString UV2SvgBaker::description() const
{
    return trBaking("This baker allows you to transform your UV into a vector graphic file to easily create "
                    "masks.");
}

std::string UV2SvgBaker::identifier() const
{
    return "uvmap";
}

void UV2SvgBaker::setTile(int u, int v)
{
    m_tileU = u;
    m_tileV = v;
}

bool UV2SvgBaker::process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene)
{
    using namespace LowPolyProperties;
    mutableData().clear();
    const PropertyBag& bag = properties();
    const int uvSet = value<int>(bag, "Common.UVSet", 0);
    if (!scene || !sceneHasUvSet(*scene, uvSet)) {
        Core::bakersChannel().error(QStringLiteral("The scene doesn't have UVs. Cancelling bake."));
        return false;
    }

    const QSize size = outputSize();
    const int padding = value<int>(bag, "UV2Svg.Padding", 0);
    // In UV units, by the larger side in both axes.
    const double paddingFraction = padding > 0 ? double(padding) / double(std::max(size.width(), size.height())) : 0.0;

    UvPolygonsRetriever retriever(uint32_t(uvSet), m_tileU, m_tileV);
    retriever.walk(*scene);
    std::vector<QPainterPath> shapes;
    for (const UvPolygonsRetriever::MeshPolygons& mesh : retriever.meshes) {
        if (context.isCancelled())
            return false;
        for (const UvIsland& island : findUvIslands(mesh.corners))
            shapes.push_back(islandPath(island));
    }
    const auto colors = islandColors(value<int>(bag, "UV2Svg.ColorMode", 1), uint32_t(shapes.size()));

    Svg::SvgRoot root(size, SvgResolution);
    auto buffer = std::make_unique<QBuffer>(&mutableData());
    buffer->open(QIODevice::WriteOnly);
    auto controller = std::make_unique<Svg::IODeviceController>(root, *buffer);
    auto device = std::make_unique<Svg::PaintDevice>(*controller);
    {
        QPainter painter(device.get());
        // UV (0, 0) at the bottom left of the page, (1, 1) at the top right.
        painter.translate(0.0, size.height());
        painter.scale(size.width(), -size.height());
        for (const QPainterPath& shape : shapes) {
            const QColor next = colors->next();
            const QColor color(next.red(), next.green(), next.blue(), 255);
            painter.setBrush(QBrush(color, Qt::SolidPattern));
            if (paddingFraction > 0.0) {
                // A stroke of twice the padding, centred on the border, grows
                // the shape by the padding: the offset outline with its miters.
                QPen pen(color, 2.0 * paddingFraction, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin);
                pen.setMiterLimit(PaddingMiterLimit);
                painter.setPen(pen);
            } else {
                painter.setPen(Qt::NoPen);
            }
            painter.drawPath(shape);
        }
        painter.end();
    }
    const bool flushed = controller->flush();
    device.reset();
    controller.reset();
    buffer.reset();
    if (!flushed)
        throw std::runtime_error("Couldn't write the SVG text");
    return true;
}

} // namespace Ond::Baking
