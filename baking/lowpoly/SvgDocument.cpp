#include "baking/lowpoly/SvgDocument.h"

#include <QColor>
#include <QIODevice>
#include <QPaintEngine>
#include <QPainterPath>
#include <QTransform>

#include <charconv>

namespace Ond::Svg {

namespace {

void appendEscaped(QByteArray& out, const QByteArray& text)
{
    for (const char c : text) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out += c;
        }
    }
}

QByteArray colorText(const QColor& color) { return color.name(QColor::HexRgb).toLatin1(); }

void appendPoint(QByteArray& d, char command, double x, double y)
{
    d += command;
    appendNumber(d, x);
    d += ' ';
    appendNumber(d, y);
}

QByteArray pathData(const QPainterPath& path)
{
    QByteArray d;
    d.reserve(path.elementCount() * 24);
    QPointF subpathStart;
    QPointF last;
    bool open = false;
    const auto closeIfBack = [&] {
        if (open && last == subpathStart)
            d += 'Z';
        open = false;
    };
    const int count = path.elementCount();
    for (int i = 0; i < count; ++i) {
        const QPainterPath::Element& e = path.elementAt(i);
        switch (e.type) {
        case QPainterPath::MoveToElement:
            closeIfBack();
            appendPoint(d, 'M', e.x, e.y);
            subpathStart = last = e;
            open = true;
            break;
        case QPainterPath::LineToElement: {
            last = e;
            // The line back to the start of a closed outline is what Z says.
            const bool endsSubpath = i + 1 == count || path.elementAt(i + 1).type == QPainterPath::MoveToElement;
            if (endsSubpath && last == subpathStart)
                break;
            appendPoint(d, 'L', e.x, e.y);
            break;
        }
        case QPainterPath::CurveToElement: {
            // A curve is this element and two data elements.
            const QPainterPath::Element& c2 = path.elementAt(i + 1);
            const QPainterPath::Element& end = path.elementAt(i + 2);
            appendPoint(d, 'C', e.x, e.y);
            appendPoint(d, ' ', c2.x, c2.y);
            appendPoint(d, ' ', end.x, end.y);
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

QByteArray joinText(Qt::PenJoinStyle join)
{
    switch (join) {
    case Qt::RoundJoin: return QByteArrayLiteral("round");
    case Qt::BevelJoin: return QByteArrayLiteral("bevel");
    default: return QByteArrayLiteral("miter");
    }
}

QByteArray capText(Qt::PenCapStyle cap)
{
    switch (cap) {
    case Qt::RoundCap: return QByteArrayLiteral("round");
    case Qt::SquareCap: return QByteArrayLiteral("square");
    default: return QByteArrayLiteral("butt");
    }
}

} // namespace

void appendNumber(QByteArray& out, double value)
{
    char buffer[32];
    // Mesh coordinates are floats: their shortest text reads back the same
    // and is about half as long as ten digits of the double.
    const float single = float(value);
    const auto result = double(single) == value
                            ? std::to_chars(buffer, buffer + sizeof(buffer), single)
                            : std::to_chars(buffer, buffer + sizeof(buffer), value, std::chars_format::general, 10);
    out.append(buffer, result.ptr - buffer);
}

QByteArray number(double value)
{
    QByteArray out;
    appendNumber(out, value);
    return out;
}

Node::~Node() = default;

void Node::setAttribute(const QByteArray& name, QByteArray value)
{
    for (AttributeBase& a : m_attributes)
        if (a.name() == name) {
            a = AttributeBase(name, std::move(value));
            return;
        }
    m_attributes.emplace_back(name, std::move(value));
}

QByteArray Node::attribute(const QByteArray& name) const
{
    for (const AttributeBase& a : m_attributes)
        if (a.name() == name)
            return a.value();
    return QByteArray();
}

void Node::writeOpenTag(QByteArray& out, int depth, bool empty) const
{
    out.append(depth, ' ');
    out += '<';
    out += m_tag;
    for (const AttributeBase& a : m_attributes) {
        out += ' ';
        out += a.name();
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
    out.append(depth, ' ');
    out += "</";
    out += tag();
    out += ">\n";
}

SvgRoot::SvgRoot(QSize size, double resolution)
    : Container(QByteArrayLiteral("svg")), m_size(size), m_resolution(resolution)
{
    setAttribute("xmlns", "http://www.w3.org/2000/svg");
    setAttribute("version", "1.1");
    // Plain user units: every reader shows the page at the map's size.
    setAttribute("width", QByteArray::number(size.width()));
    setAttribute("height", QByteArray::number(size.height()));
    setAttribute("viewBox", "0 0 " + QByteArray::number(size.width()) + ' ' + QByteArray::number(size.height()));
    auto definitions = std::make_unique<Container>(QByteArrayLiteral("defs"));
    m_definitions = definitions.get();
    append(std::move(definitions));
    auto content = std::make_unique<Container>(QByteArrayLiteral("g"));
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
        if (dirty & DirtyTransform) {
            m_transform = state.transform();
            const QTransform& t = m_transform;
            QByteArray text("matrix(");
            for (double v : {t.m11(), t.m12(), t.m21(), t.m22(), t.dx(), t.dy()}) {
                appendNumber(text, v);
                text += ' ';
            }
            text.back() = ')';
            m_transformText = m_transform.isIdentity() ? QByteArray() : text;
        }
    }

    void drawPath(const QPainterPath& path) override
    {
        if (path.isEmpty())
            return;
        const bool filled = m_brush.style() != Qt::NoBrush;
        const bool stroked = m_pen.style() != Qt::NoPen;
        if (!filled && !stroked)
            return;
        auto node = std::make_unique<Node>(QByteArrayLiteral("path"));
        if (!m_transformText.isEmpty())
            node->setAttribute("transform", m_transformText);
        if (filled) {
            const QColor color = m_brush.color();
            node->setAttribute("fill", colorText(color));
            if (color.alpha() != 255)
                node->setAttribute("fill-opacity", number(color.alphaF()));
            node->setAttribute("fill-rule", path.fillRule() == Qt::WindingFill ? "nonzero" : "evenodd");
        } else {
            node->setAttribute("fill", "none");
        }
        if (stroked) {
            const QColor color = m_pen.color();
            node->setAttribute("stroke", colorText(color));
            if (color.alpha() != 255)
                node->setAttribute("stroke-opacity", number(color.alphaF()));
            node->setAttribute("stroke-width", number(m_pen.widthF()));
            node->setAttribute("stroke-linejoin", joinText(m_pen.joinStyle()));
            if (m_pen.joinStyle() == Qt::MiterJoin || m_pen.joinStyle() == Qt::SvgMiterJoin)
                node->setAttribute("stroke-miterlimit", number(m_pen.miterLimit()));
            node->setAttribute("stroke-linecap", capText(m_pen.capStyle()));
        } else {
            node->setAttribute("stroke", "none");
        }
        node->setAttribute("d", pathData(path));
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
    QByteArray m_transformText;
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
