#include "commands/UvTileList.h"

#include "commands/OutputNaming.h"

#include "image/UDIMNumbering.h"
#include "program/LogChannel.h"
#include "scene/graph/BitField.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <set>

namespace ProgramCommand::UvTileList {

namespace {

const QString AutoTiles = QStringLiteral("auto");

} // namespace

bool isAuto(const QString& tile)
{
    return tile.trimmed() == AutoTiles;
}

bool isAuto(const QStringList& tiles)
{
    return tiles.size() == 1 && isAuto(tiles.first());
}

std::vector<uint16_t> parse(const QStringList& tiles)
{
    static const QRegularExpression tileForm(QRegularExpression::anchoredPattern(QStringLiteral("[0-9]*x[0-9]*")));
    static const QRegularExpression udimForm(QRegularExpression::anchoredPattern(QStringLiteral("[0-9]{4}")));

    QStringList items = tiles;
    if (items.size() == 1) {
        const QStringList parts = items.first().split(QLatin1Char(' '));
        if (parts.size() > 1)
            items = parts;
    }

    std::vector<uint16_t> udims;
    for (const QString& item : items) {
        if (tileForm.match(item).hasMatch()) {
            const QStringList uv = item.split(QLatin1Char('x'));
            const int u = uv.value(0).toInt();
            const int v = uv.value(1).toInt();
            if (const auto udim = Vrn::Baking::udimOfTile(u, v))
                udims.push_back(*udim);
        } else if (udimForm.match(item).hasMatch()) {
            udims.push_back(item.toUShort());
        } else {
            Ond::Core::zmfBakerChannel().warning(
                QStringLiteral("Wrong uv tile coordinate in uvTiles list, must be udim (1001) or tile (0x1) format, "
                               "given %1, skipped.")
                    .arg(item));
        }
    }
    return udims;
}

namespace {

// Tiles whose inside the face's UV box reaches; a face lying on a tile
// border doesn't reach the tile beyond it.
void addFaceTiles(std::set<uint16_t>& udims, const Eigen::Vector2f* points, const uint32_t* corner, size_t count)
{
    Eigen::Vector2f lo = points[corner[0]];
    Eigen::Vector2f hi = lo;
    for (size_t k = 1; k < count; ++k) {
        lo = lo.cwiseMin(points[corner[k]]);
        hi = hi.cwiseMax(points[corner[k]]);
    }
    if (!lo.allFinite() || !hi.allFinite() || lo.x() == hi.x() || lo.y() == hi.y())
        return;
    // Beyond the UDIM range nothing could be named anyway.
    const float limit = 10000.0f;
    if (lo.x() < -limit || lo.y() < -limit || hi.x() > limit || hi.y() > limit)
        return;
    const int u0 = int(std::floor(lo.x()));
    const int v0 = int(std::floor(lo.y()));
    const int u1 = std::max(u0, int(std::ceil(hi.x())) - 1);
    const int v1 = std::max(v0, int(std::ceil(hi.y())) - 1);
    for (int v = v0; v <= v1; ++v)
        for (int u = u0; u <= u1; ++u)
            if (const auto udim = Vrn::Baking::udimOfTile(u, v))
                udims.insert(*udim);
}

} // namespace

std::vector<uint16_t> coveredTiles(const Ond::SceneGraph::Scene& scene, int uvSet)
{
    using namespace Ond::SceneGraph;
    std::set<uint16_t> udims;
    if (uvSet < 0)
        return {};
    scene.forAllMeshes([&](const Mesh::SPtr& mesh) {
        const Mesh::DataSPtr data = mesh ? mesh->getData() : nullptr;
        const Vec2Buffer* uv = data ? data->getUvSet(size_t(uvSet)) : nullptr;
        if (!uv)
            return true;
        const auto& subMeshes = data->getSubMeshes();
        for (size_t i = 0; i < subMeshes.size(); ++i) {
            const SubMesh& sub = subMeshes[i];
            if (!(data->getSubMeshFlags(i).value() & SelectedRenderFlag) || !sub.indices)
                continue;
            const size_t corners = isTriangleKind(sub.primitiveType) ? 3 : isQuadKind(sub.primitiveType) ? 4 : 0;
            const size_t stride = sub.indicesPerPrimitive;
            if (corners == 0 || stride < corners)
                continue;
            const uint32_t* idx = sub.indices->data();
            const size_t indexCount = sub.indices->size();
            for (size_t f = 0; f < sub.primitiveCount && (f + 1) * stride <= indexCount; ++f) {
                const uint32_t* corner = idx + f * stride;
                bool inRange = true;
                for (size_t k = 0; k < corners; ++k)
                    inRange = inRange && corner[k] < uv->size();
                if (inRange)
                    addFaceTiles(udims, uv->data(), corner, corners);
            }
        }
        return true;
    });
    return std::vector<uint16_t>(udims.begin(), udims.end());
}

QString namePerTile(const QString& pattern)
{
    if (pattern.contains(OutputNaming::udimExpression()))
        return pattern;
    return pattern + QStringLiteral("_") + OutputNaming::udimPattern;
}

} // namespace ProgramCommand::UvTileList

namespace ProgramCommand {

QString TileNamedSettings::getString(const QString& name, const QString& defaultValue) const
{
    const QString value = m_settings.getString(name, defaultValue);
    return name == QLatin1String("output-name") ? UvTileList::namePerTile(value) : value;
}

} // namespace ProgramCommand
