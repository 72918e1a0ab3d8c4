#include "baking/detail/DetailNormalsBuilder.h"

#include "baking/AbstractBakingContext.h"
#include "baking/lowpoly/NormalWSMapBaker.h"
#include "baking/lowpoly/PositionMapBaker.h"
#include "baking/lowpoly/PostProcess.h"
#include "baking/lowpoly/SourceMap.h"
#include "program/LogChannel.h"

#include <QCoreApplication>
#include <QUrl>

namespace Ond::Baking {

namespace {

// Enough for the bilinear reach of a sample at an island border.
constexpr uint32_t kNormalDilation = 2;

Surfaces::SurfaceSPtr toRgbaFloat(const Surfaces::SurfaceSPtr& surface)
{
    if (surface->format() == Surfaces::PixelFormat::RGBA32F)
        return surface;
    auto floats = Surfaces::SurfaceSPtr::create();
    Surfaces::convert(*surface, *floats, Surfaces::PixelFormat::RGBA32F);
    return floats;
}

// The map's alpha becomes the islands' coverage, for the dilation to fill
// what lies outside them.
void takeCoverage(Surfaces::Surface& map, const Surfaces::Surface& coverage)
{
    for (uint32_t y = 0; y < map.height(); ++y)
        for (uint32_t x = 0; x < map.width(); ++x)
            map.pixel<float>(x, y)[3] = coverage.pixel<float>(x, y)[3];
}

} // namespace

std::optional<DetailNormals> buildDetailNormals(AbstractBakingContext& context, const SceneGraph::Scene& low,
                                                const DetailNormalsSource& source)
{
    if (source.path.isEmpty())
        return std::nullopt;
    Surfaces::SurfaceSPtr map = loadSourceMap(context, source.path);
    if (!map) {
        const QString shown =
            source.path.startsWith(QLatin1String("file:")) ? QUrl(source.path).toLocalFile() : source.path;
        Core::bakersChannel().warning(
            QCoreApplication::translate("Ond::Baking::DetailMapBaker",
                                        "Could not load the normal map '%1': the mesh's own normals are used.")
                .arg(shown));
        return std::nullopt;
    }
    map = toRgbaFloat(map);
    const QSize size(int(map->width()), int(map->height()));

    GLBakeParameters parameters;
    parameters.uvSet = source.uvSet;
    parameters.uvTile = source.uvTile;
    parameters.invertGreen = source.invertGreen;
    // Coverage only: the positions themselves are never read.
    const Surfaces::SurfaceSPtr coverage =
        PositionMapBaker::renderPositions(context, &low, parameters, size, PositionEncoding());
    if (source.worldSpace)
        takeCoverage(*map, *coverage);
    else
        map = NormalWSMapBaker::renderWorldSpaceNormals(context, &low, parameters, size, map);
    // Texels beyond the islands take their neighbours' normals, so that a
    // sample at a border does not blend in whatever the file holds there.
    postProcess(map, kNormalDilation, false);

    DetailNormals detail;
    detail.normals.reset(Surfaces::createSampler(map, true));
    detail.positions.reset(Surfaces::createSampler(coverage, true));
    detail.width = map->width();
    detail.height = map->height();
    if (!detail.normals || !detail.positions)
        return std::nullopt;
    return detail;
}

} // namespace Ond::Baking
