#include "image/LYDSurfaceCodec.h"

#include <QDataStream>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace Ond::Image::Plugins {

using Surfaces::PixelFormat;
using Surfaces::Surface;
using Surfaces::SurfaceDesc;

namespace {

constexpr char lydMagic[4] = {'K', 'L', 'Y', 'D'};
constexpr quint32 lydVersion = 1;
constexpr quint32 encodingRaw = 0;
constexpr quint32 encodingZlib = 1;
// Layers above this many bytes are stored raw: qCompress takes an int size.
constexpr uint64_t zlibLimit = 1u << 30;

} // namespace

bool LYDSurfaceCodec::read(QSharedPointer<Surface>& result)
{
    result.reset();
    QList<Layer> layers;
    if (!readLayers(layers) || layers.isEmpty())
        return false;
    result = layers.first().surface;
    return true;
}

bool LYDSurfaceCodec::write(const QSharedPointer<Surface>& surface)
{
    if (!surface || surface->isEmpty())
        return false;
    return writeLayers({Layer{QStringLiteral("Background"), 0, 0, surface}});
}

bool LYDSurfaceCodec::readLayers(QList<Layer>& layers, uint32_t* canvasWidth, uint32_t* canvasHeight)
{
    layers.clear();
    if (!prepareDevice(QIODevice::ReadOnly))
        return false;
    const bool ok = readStream(layers, canvasWidth, canvasHeight);
    finishDevice();
    if (!ok)
        layers.clear();
    return ok;
}

bool LYDSurfaceCodec::writeLayers(const QList<Layer>& layers)
{
    for (const Layer& l : layers) {
        if (!l.surface || l.surface->isEmpty() || !Surfaces::isValid(l.surface->format()))
            return false;
    }
    if (!prepareDevice(QIODevice::WriteOnly))
        return false;
    const bool ok = writeStream(layers);
    finishDevice();
    return ok;
}

bool LYDSurfaceCodec::writeStream(const QList<Layer>& layers)
{
    int64_t right = 0, bottom = 0;
    for (const Layer& l : layers) {
        right = std::max<int64_t>(right, int64_t(l.x) + l.surface->width());
        bottom = std::max<int64_t>(bottom, int64_t(l.y) + l.surface->height());
    }
    QDataStream out(m_device);
    out.setByteOrder(QDataStream::LittleEndian);
    out.writeRawData(lydMagic, 4);
    out << lydVersion << quint32(std::max<int64_t>(right, 0)) << quint32(std::max<int64_t>(bottom, 0))
        << quint32(layers.size());
    for (const Layer& l : layers) {
        const Surface& s = *l.surface;
        const SurfaceDesc& d = s.desc();
        const QByteArray name = l.name.toUtf8();
        out << quint32(name.size());
        out.writeRawData(name.constData(), int(name.size()));
        out << qint32(l.x) << qint32(l.y) << quint32(d.format) << quint32(d.width) << quint32(d.height)
            << quint32(d.depth) << quint32(d.flags) << quint32(d.userData);

        const uint64_t rowBytes = s.rowBytes();
        const uint64_t size = rowBytes * d.height;
        if (size <= zlibLimit) {
            QByteArray packed(qsizetype(size), Qt::Uninitialized);
            for (uint32_t y = 0; y < d.height; ++y)
                std::memcpy(packed.data() + y * rowBytes, s.row(y), rowBytes);
            const QByteArray stored = qCompress(packed, 1);
            out << encodingZlib << quint64(stored.size());
            if (out.writeRawData(stored.constData(), int(stored.size())) != int(stored.size()))
                return false;
        } else {
            out << encodingRaw << quint64(size);
            for (uint32_t y = 0; y < d.height; ++y) {
                if (out.writeRawData(reinterpret_cast<const char*>(s.row(y)), int(rowBytes)) != int(rowBytes))
                    return false;
            }
        }
    }
    return out.status() == QDataStream::Ok;
}

bool LYDSurfaceCodec::readStream(QList<Layer>& layers, uint32_t* canvasWidth, uint32_t* canvasHeight)
{
    QDataStream in(m_device);
    in.setByteOrder(QDataStream::LittleEndian);
    char magic[4];
    if (in.readRawData(magic, 4) != 4 || std::memcmp(magic, lydMagic, 4) != 0)
        return false;
    quint32 version = 0, cw = 0, ch = 0, count = 0;
    in >> version >> cw >> ch >> count;
    if (in.status() != QDataStream::Ok || version != lydVersion)
        return false;
    for (quint32 i = 0; i < count; ++i) {
        quint32 nameLength = 0;
        in >> nameLength;
        if (in.status() != QDataStream::Ok || nameLength > (1u << 16))
            return false;
        QByteArray name(qsizetype(nameLength), Qt::Uninitialized);
        if (in.readRawData(name.data(), int(nameLength)) != int(nameLength))
            return false;
        qint32 x = 0, y = 0;
        quint32 format = 0, width = 0, height = 0, depth = 0, flags = 0, userData = 0, encoding = 0;
        quint64 storedSize = 0;
        in >> x >> y >> format >> width >> height >> depth >> flags >> userData >> encoding >> storedSize;
        if (in.status() != QDataStream::Ok)
            return false;
        SurfaceDesc desc(width, height, PixelFormat(format));
        desc.depth = depth;
        desc.flags = flags;
        desc.userData = userData;
        // Sizes beyond 2^24 a side are damage, and would overflow below.
        if (!Surfaces::isValid(desc.format) || desc.isEmpty() || width > (1u << 24) || height > (1u << 24))
            return false;
        const uint64_t size = desc.rowBytes() * height;
        if (storedSize > uint64_t(std::numeric_limits<int>::max())
            || (!m_device->isSequential() && uint64_t(m_device->bytesAvailable()) < storedSize))
            return false;
        if (encoding == encodingRaw ? storedSize != size : encoding != encodingZlib)
            return false;
        // The data first: nothing is allocated for a size the file can't back.
        QByteArray stored(qsizetype(storedSize), Qt::Uninitialized);
        if (in.readRawData(stored.data(), int(storedSize)) != int(storedSize))
            return false;
        if (encoding == encodingZlib) {
            // qCompress leads with the uncompressed size, big-endian.
            if (storedSize < 4 || qFromBigEndian<quint32>(stored.constData()) != size)
                return false;
            stored = qUncompress(stored);
            if (uint64_t(stored.size()) != size)
                return false;
        }
        QSharedPointer<Surface> surface;
        try {
            surface = QSharedPointer<Surface>::create(desc);
        } catch (const std::bad_alloc&) {
            return false;
        }
        for (uint32_t r = 0; r < height; ++r)
            std::memcpy(surface->row(r), stored.constData() + r * desc.rowBytes(), desc.rowBytes());
        layers.append(Layer{QString::fromUtf8(name), x, y, surface});
    }
    if (canvasWidth)
        *canvasWidth = cw;
    if (canvasHeight)
        *canvasHeight = ch;
    return true;
}

} // namespace Ond::Image::Plugins
