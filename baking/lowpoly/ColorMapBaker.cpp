#include "baking/lowpoly/ColorMapBaker.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>

#include <cstring>

namespace Ond::Baking {

void ColorMapBaker::init()
{
    LowPolyMapBaker::init();
    m_svgBaker.setFileFilter(fileFilter());
    m_svgBaker.init();
}

QString ColorMapBaker::label() const
{
    return m_svgBaker.label();
}

QString ColorMapBaker::description() const
{
    return trBaking("This baker allows you to transform your UV into a vector graphic file to easily create "
                    "masks.");
}

std::string ColorMapBaker::identifier() const
{
    return "uvmap";
}

namespace {

Surfaces::SurfaceSPtr surfaceFromImage(QImage image)
{
    if (image.format() != QImage::Format_ARGB32 && image.format() != QImage::Format_ARGB32_Premultiplied)
        image = image.convertToFormat(QImage::Format_ARGB32);
    // ARGB32 words are B, G, R, A bytes in memory on little-endian machines.
    Surfaces::SurfaceDesc desc(uint32_t(image.width()), uint32_t(image.height()), Surfaces::PixelFormat::BGRA8);
    auto surface = Surfaces::SurfaceSPtr::create(desc);
    for (int y = 0; y < image.height(); ++y)
        std::memcpy(surface->row(uint32_t(y)), image.constScanLine(y), surface->rowBytes());
    return surface;
}

// Qt's SVG image plugin draws the text at the page size. Its guard against
// huge images would refuse the larger maps, which are a legitimate bake.
QImage renderSvg(const QByteArray& svg)
{
    QBuffer buffer;
    buffer.setData(svg);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "svg");
    const int limit = QImageReader::allocationLimit();
    QImageReader::setAllocationLimit(0);
    const QImage image = reader.read();
    QImageReader::setAllocationLimit(limit);
    return image;
}

} // namespace

Surfaces::SurfaceSPtr ColorMapBaker::process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& scene)
{
    const auto& tile = properties()["Common.UVTile"].valueAs<ComparableInt2>();
    m_svgBaker.setTile(tile.x, tile.y);
    PropertyBag& inner = m_svgBaker.properties();
    for (const std::string& id : properties().identifiers())
        if (properties().contains(id) && inner.contains(id))
            inner[id].setValue(properties()[id].value());

    if (!m_svgBaker.process(context, scene))
        return Surfaces::SurfaceSPtr::create();
    const QImage image = renderSvg(m_svgBaker.data());
    if (image.isNull())
        return Surfaces::SurfaceSPtr::create();
    return surfaceFromImage(image);
}

} // namespace Ond::Baking
