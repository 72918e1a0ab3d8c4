#include "image/RawSurfaceCodec.h"

#include <QDataStream>

#include <new>
#include <vector>

namespace Ond::Surfaces {

bool RawSurfaceCodec::read(QSharedPointer<Surface>& result)
{
    result.reset();
    if (!prepareDevice(QIODevice::ReadOnly))
        return false;
    const bool ok = readStream(result);
    finishDevice();
    if (!ok)
        result.reset();
    return ok;
}

bool RawSurfaceCodec::write(const QSharedPointer<Surface>& surface)
{
    if (!prepareDevice(QIODevice::WriteOnly))
        return false;
    const bool ok = writeStream(surface);
    finishDevice();
    return ok;
}

bool RawSurfaceCodec::readStream(QSharedPointer<Surface>& result)
{
    QDataStream in(m_device);
    in.setVersion(17);
    qint32 m = 0, v = 0;
    in >> m >> v;
    if (in.status() != QDataStream::Ok || quint32(m) != magic || v >= 2)
        return false;
    qint32 depth = 0, flags = 0, userData = 0, format = 0, height = 0, width = 0;
    qint64 stride = 0;
    in >> depth;
    if (in.status() == QDataStream::ReadPastEnd) {
        // Only magic and version: a null surface was stored.
        result = QSharedPointer<Surface>::create();
        return true;
    }
    in >> flags >> userData >> format >> height >> stride >> width;
    if (in.status() != QDataStream::Ok)
        return false;
    SurfaceDesc desc(uint32_t(width), uint32_t(height), PixelFormat(format), stride);
    desc.depth = uint32_t(depth);
    desc.flags = uint32_t(flags);
    desc.userData = uint32_t(userData);
    if (width < 0 || height < 0)
        return false;
    if (desc.isEmpty() || stride == 0) {
        result = QSharedPointer<Surface>::create(desc);
        return true;
    }
    // Strides beyond 2^40 or heights beyond 2^24 are damage, and would
    // overflow the size below.
    if (!isValid(desc.format) || desc.absStride() < desc.rowBytes() || desc.absStride() > (uint64_t(1) << 40)
        || desc.height >= (1u << 24))
        return false;
    const uint64_t size = desc.byteSize();
    if (!m_device->isSequential() && uint64_t(m_device->bytesAvailable()) < size)
        return false;
    QSharedPointer<Surface> surface;
    try {
        surface = QSharedPointer<Surface>::create(desc, Surface::defaultAlignment);
    } catch (const std::bad_alloc&) {
        return false;
    }
    // The block starts at the lowest address, whatever the sign of the stride.
    uint8_t* lowest = stride < 0 ? surface->row(desc.height - 1) : surface->data();
    uint64_t done = 0;
    while (done < size) {
        const int chunk = int(std::min<uint64_t>(size - done, 1u << 30));
        if (in.readRawData(reinterpret_cast<char*>(lowest + done), chunk) != chunk)
            return false;
        done += uint64_t(chunk);
    }
    result = surface;
    return true;
}

bool RawSurfaceCodec::writeStream(const QSharedPointer<Surface>& surface)
{
    QDataStream out(m_device);
    out.setVersion(17);
    out << qint32(magic) << version;
    if (!surface || surface->isEmpty())
        return out.status() == QDataStream::Ok;
    const SurfaceDesc& d = surface->desc();
    out << qint32(d.depth) << qint32(d.flags) << qint32(d.userData) << qint32(d.format) << qint32(d.height)
        << qint64(d.rowStride) << qint32(d.width);
    // Row by row so that a view never reads past its parent's last row;
    // the padding of each stride is written as zeros.
    const uint64_t rowBytes = surface->rowBytes();
    const uint64_t absStride = d.absStride();
    std::vector<char> padding(absStride - rowBytes, 0);
    for (uint32_t i = 0; i < d.height; ++i) {
        const uint32_t y = d.rowStride < 0 ? d.height - 1 - i : i;
        if (out.writeRawData(reinterpret_cast<const char*>(surface->row(y)), int(rowBytes)) != int(rowBytes))
            return false;
        if (!padding.empty() && out.writeRawData(padding.data(), int(padding.size())) != int(padding.size()))
            return false;
    }
    return out.status() == QDataStream::Ok;
}

} // namespace Ond::Surfaces
