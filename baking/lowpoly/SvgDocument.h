#pragma once
// A small SVG document model and a QPaintDevice that fills it, so that the
// UV baker draws with an ordinary QPainter and gets SVG text out.

#include <QByteArray>
#include <QPaintDevice>
#include <QSize>
#include <QString>

#include <memory>
#include <vector>

class QIODevice;

namespace Ond::Svg {

// Names and values are UTF-8 text; values are escaped when written.
class AttributeBase
{
public:
    AttributeBase(QByteArray name, QByteArray value) : m_name(std::move(name)), m_value(std::move(value)) {}
    const QByteArray& name() const { return m_name; }
    const QByteArray& value() const { return m_value; }

private:
    QByteArray m_name;
    QByteArray m_value;
};

class Node
{
public:
    explicit Node(QByteArray tag) : m_tag(std::move(tag)) {}
    virtual ~Node();

    const QByteArray& tag() const { return m_tag; }
    // Replaces an attribute of that name, or adds it at the end.
    void setAttribute(const QByteArray& name, QByteArray value);
    QByteArray attribute(const QByteArray& name) const;
    const std::vector<AttributeBase>& attributes() const { return m_attributes; }

    // Appends this node's XML to `out`, indented by `depth` blanks.
    virtual void write(QByteArray& out, int depth) const;

protected:
    void writeOpenTag(QByteArray& out, int depth, bool empty) const;

private:
    QByteArray m_tag;
    std::vector<AttributeBase> m_attributes;
};

class Container : public Node
{
public:
    using Node::Node;
    Node& append(std::unique_ptr<Node> child);
    const std::vector<std::unique_ptr<Node>>& children() const { return m_children; }
    void write(QByteArray& out, int depth) const override;

private:
    std::vector<std::unique_ptr<Node>> m_children;
};

// The <svg> element: a page of `size` user units, which readers show as
// that many pixels. The resolution tells devices how large a unit is.
class SvgRoot : public Container
{
public:
    SvgRoot(QSize size, double resolution);
    QSize size() const { return m_size; }
    double resolution() const { return m_resolution; }

    Container& definitions() { return *m_definitions; }
    // Where drawn shapes go.
    Container& content() { return *m_content; }

    // The whole document, XML declaration first.
    QByteArray text() const;

private:
    QSize m_size;
    double m_resolution;
    Container* m_definitions;
    Container* m_content;
};

// Writes a document's text to a device when flushed.
class IODeviceController
{
public:
    IODeviceController(SvgRoot& root, QIODevice& device) : m_root(root), m_device(device) {}
    SvgRoot& root() const { return m_root; }
    // False if the device took less than the whole text.
    bool flush();

private:
    SvgRoot& m_root;
    QIODevice& m_device;
};

class PaintEngine;

// Painting on it adds one <path> to the document's content for each filled
// or stroked shape, in painter coordinates with the painter's transform.
class PaintDevice : public QPaintDevice
{
public:
    explicit PaintDevice(IODeviceController& controller);
    ~PaintDevice() override;

    QPaintEngine* paintEngine() const override;

protected:
    int metric(PaintDeviceMetric metric) const override;

private:
    IODeviceController& m_controller;
    std::unique_ptr<PaintEngine> m_engine;
};

// Number text as SVG reads it: a point whatever the locale; the shortest text
// of a value that is a float, else ten digits.
void appendNumber(QByteArray& out, double value);
QByteArray number(double value);

} // namespace Ond::Svg
