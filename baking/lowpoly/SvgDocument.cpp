#include "baking/lowpoly/SvgDocument.h"

#include <QColor>
#include <QIODevice>
#include <QPaintEngine>
#include <QPainterPath>
#include <QTransform>

namespace Ond::Svg {

namespace {

void appendEscaped(QByteArray& out, const QString& text)
{
    for (const QChar c : text) {
        switch (c.unicode()) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out += QString(c).toUtf8();
        }
    }
}

QString colorText(const QColor& color) { return color.name(QColor::HexRgb); }

QString pathData(const QPainterPath& path)
{
    QString d;
    QPointF subpathStart;
    QPointF last;
    bool open = false;
    const auto closeIfBack = [&] {
        if (open && last == subpathStart)
            d += QLatin1Char('Z');
        open = false;
    };
    const int count = path.elementCount();
    for (int i = 0; i < count; ++i) {
        const QPainterPath::Element& e = path.elementAt(i);
        switch (e.type) {
        case QPainterPath::MoveToElement:
            closeIfBack();
            d += QStringLiteral("M%1 %2").arg(number(e.x), number(e.y));
            subpathStart = last = e;
            open = true;
            break;
        case QPainterPath::LineToElement: {
            last = e;
            // The line back to the start of a closed outline is what Z says.
            const bool endsSubpath = i + 1 == count || path.elementAt(i + 1).type == QPainterPath::MoveToElement;
            if (endsSubpath && last == subpathStart)
                break;
            d += QStringLiteral("L%1 %2").arg(number(e.x), number(e.y));
            break;
        }
        case QPainterPath::CurveToElement: {
            // A curve is this element and two data elements.
            const QPainterPath::Element& c2 = path.elementAt(i + 1);
            const QPainterPath::Element& end = path.elementAt(i + 2);
            d += QStringLiteral("C%1 %2 %3 %4 %5 %6")
                     .arg(number(e.x), number(e.y), number(c2.x), number(c2.y), number(end.x), number(end.y));
            last = end;
            i += 2;
            break;
        }
        case QPainterPath::CurveToDataElement:
            break;
        }
    }
    closeIfBack();
    return d;
}

QString joinText(Qt::PenJoinStyle join)
{
    switch (join) {
    case Qt::RoundJoin: return QStringLiteral("round");
    case Qt::BevelJoin: return QStringLiteral("bevel");
    default: return QStringLiteral("miter");
    }
}

QString capText(Qt::PenCapStyle cap)
{
    switch (cap) {
    case Qt::RoundCap: return QStringLiteral("round");
    case Qt::SquareCap: return QStringLiteral("square");
    default: return QStringLiteral("butt");
    }
}

} // namespace

QString number(double value) { return QString::number(value, 'g', 10); }

Node::~Node() = default;

void Node::setAttribute(const QString& name, const QString& value)
{
    for (AttributeBase& a : m_attributes)
        if (a.name() == name) {
            a = AttributeBase(name, value);
            return;
        }
    m_attributes.emplace_back(name, value);
}

QString Node::attribute(const QString& name) const
{
    for (const AttributeBase& a : m_attributes)
        if (a.name() == name)
            return a.value();
    return QString();
}

void Node::writeOpenTag(QByteArray& out, int depth, bool empty) const
{
    out += QByteArray(depth, ' ');
    out += '<';
    out += m_tag.toUtf8();
    for (const AttributeBase& a : m_attributes) {
        out += ' ';
        out += a.name().toUtf8();
        out += "=\"";
        appendEscaped(out, a.value());
        out += '"';
    }
    out += empty ? "/>\n" : ">\n";
}

void Node::write(QByteArray& out, int depth) const { writeOpenTag(out, depth, true); }

Node& Container::append(std::unique_ptr<Node> child)
{
    m_children.push_back(std::move(child));
    return *m_children.back();
}

void Container::write(QByteArray& out, int depth) const
{
    if (m_children.empty()) {
        writeOpenTag(out, depth, true);
        return;
    }
    writeOpenTag(out, depth, false);
    for (const auto& child : m_children)
        child->write(out, depth + 1);
    out += QByteArray(depth, ' ');
    out += "</";
    out += tag().toUtf8();
    out += ">\n";
}

SvgRoot::SvgRoot(QSize size, double resolution) : Container(QStringLiteral("svg")), m_size(size), m_resolution(resolution)
{
    setAttribute(QStringLiteral("xmlns"), QStringLiteral("http://www.w3.org/2000/svg"));
    setAttribute(QStringLiteral("version"), QStringLiteral("1.1"));
    // Plain user units: every reader shows the page at the map's size.
    setAttribute(QStringLiteral("width"), QString::number(size.width()));
    setAttribute(QStringLiteral("height"), QString::number(size.height()));
    setAttribute(QStringLiteral("viewBox"), QStringLiteral("0 0 %1 %2").arg(size.width()).arg(size.height()));
    auto definitions = std::make_unique<Container>(QStringLiteral("defs"));
    m_definitions = definitions.get();
    append(std::move(definitions));
    auto content = std::make_unique<Container>(QStringLiteral("g"));
    m_content = content.get();
    append(std::move(content));
}

QByteArray SvgRoot::text() const
{
    QByteArray out("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\n");
    write(out, 0);
    return out;
}

bool IODeviceController::flush()
{
    const QByteArray text = m_root.text();
    return m_device.write(text) == text.size();
}

// Keeps the painter's state and turns each shape into a <path> node.
class PaintEngine : public QPaintEngine
{
public:
    explicit PaintEngine(IODeviceController& controller) : QPaintEngine(AllFeatures), m_controller(controller) {}

    bool begin(QPaintDevice*) override { return true; }
    bool end() override { return true; }
    Type type() const override { return QPaintEngine::User; }

    void updateState(const QPaintEngineState& state) override
    {
        const DirtyFlags dirty = state.state();
        if (dirty & DirtyPen)
            m_pen = state.pen();
        if (dirty & DirtyBrush)
            m_brush = state.brush();
        if (dirty & DirtyTransform)
            m_transform = state.transform();
    }

    void drawPath(const QPainterPath& path) override
    {
        if (path.isEmpty())
            return;
        const bool filled = m_brush.style() != Qt::NoBrush;
        const bool stroked = m_pen.style() != Qt::NoPen;
        if (!filled && !stroked)
            return;
        auto node = std::make_unique<Node>(QStringLiteral("path"));
        if (!m_transform.isIdentity()) {
            const QTransform& t = m_transform;
            node->setAttribute(QStringLiteral("transform"), QStringLiteral("matrix(%1 %2 %3 %4 %5 %6)")
                                                               .arg(number(t.m11()), number(t.m12()), number(t.m21()),
                                                                    number(t.m22()), number(t.dx()), number(t.dy())));
        }
        if (filled) {
            const QColor color = m_brush.color();
            node->setAttribute(QStringLiteral("fill"), colorText(color));
            if (color.alpha() != 255)
                node->setAttribute(QStringLiteral("fill-opacity"), number(color.alphaF()));
            node->setAttribute(QStringLiteral("fill-rule"),
                               path.fillRule() == Qt::WindingFill ? QStringLiteral("nonzero") : QStringLiteral("evenodd"));
        } else {
            node->setAttribute(QStringLiteral("fill"), QStringLiteral("none"));
        }
        if (stroked) {
            const QColor color = m_pen.color();
            node->setAttribute(QStringLiteral("stroke"), colorText(color));
            if (color.alpha() != 255)
                node->setAttribute(QStringLiteral("stroke-opacity"), number(color.alphaF()));
            node->setAttribute(QStringLiteral("stroke-width"), number(m_pen.widthF()));
            node->setAttribute(QStringLiteral("stroke-linejoin"), joinText(m_pen.joinStyle()));
            if (m_pen.joinStyle() == Qt::MiterJoin || m_pen.joinStyle() == Qt::SvgMiterJoin)
                node->setAttribute(QStringLiteral("stroke-miterlimit"), number(m_pen.miterLimit()));
            node->setAttribute(QStringLiteral("stroke-linecap"), capText(m_pen.capStyle()));
        } else {
            node->setAttribute(QStringLiteral("stroke"), QStringLiteral("none"));
        }
        node->setAttribute(QStringLiteral("d"), pathData(path));
        m_controller.root().content().append(std::move(node));
    }

    void drawPolygon(const QPointF* points, int count, PolygonDrawMode mode) override
    {
        QPainterPath path;
        path.addPolygon(QPolygonF(QList<QPointF>(points, points + count)));
        if (mode != PolylineMode)
            path.closeSubpath();
        path.setFillRule(mode == WindingMode ? Qt::WindingFill : Qt::OddEvenFill);
        if (mode == PolylineMode) {
            const QBrush brush = m_brush;
            m_brush = Qt::NoBrush;
            drawPath(path);
            m_brush = brush;
        } else {
            drawPath(path);
        }
    }

    // Images have no place in a UV layout.
    void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}

private:
    IODeviceController& m_controller;
    QPen m_pen;
    QBrush m_brush;
    QTransform m_transform;
};

PaintDevice::PaintDevice(IODeviceController& controller)
    : m_controller(controller), m_engine(std::make_unique<PaintEngine>(controller))
{
}

PaintDevice::~PaintDevice() = default;

QPaintEngine* PaintDevice::paintEngine() const { return m_engine.get(); }

int PaintDevice::metric(PaintDeviceMetric metric) const
{
    const SvgRoot& root = m_controller.root();
    const double resolution = root.resolution();
    switch (metric) {
    case PdmWidth: return root.size().width();
    case PdmHeight: return root.size().height();
    case PdmWidthMM: return qRound(root.size().width() * 25.4 / resolution);
    case PdmHeightMM: return qRound(root.size().height() * 25.4 / resolution);
    case PdmNumColors: return 0x7fffffff;
    case PdmDepth: return 32;
    case PdmDpiX:
    case PdmDpiY:
    case PdmPhysicalDpiX:
    case PdmPhysicalDpiY: return qRound(resolution);
    case PdmDevicePixelRatio: return 1;
    case PdmDevicePixelRatioScaled: return int(QPaintDevice::devicePixelRatioFScale());
    default: return QPaintDevice::metric(metric);
    }
}

} // namespace Ond::Svg
