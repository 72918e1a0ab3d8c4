#include "image/PngEncoder.h"

#include "image/Surface.h"
#include "program/ThreadLimit.h"

#include <QIODevice>
#include <QtConcurrent/QtConcurrentMap>

#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace Ond::Image {

using Surfaces::PixelFormat;

namespace {

constexpr uint32_t WindowBytes = 32768;
// Below this many filtered bytes a band is not worth a thread.
constexpr uint64_t MinimumBandBytes = 1u << 20;
constexpr size_t MaximumChunkBytes = 1u << 20;
constexpr size_t ZlibHeaderBytes = 2;

enum Filter : uint8_t { None = 0, Sub = 1, Up = 2, Average = 3, Paeth = 4 };

uint8_t colorType(PixelFormat format)
{
    switch (Surfaces::channelCount(format)) {
    case 1: return 0;
    case 3: return 2;
    default: return 6;
    }
}

void putBigEndian(uint8_t* out, uint32_t value)
{
    out[0] = uint8_t(value >> 24);
    out[1] = uint8_t(value >> 16);
    out[2] = uint8_t(value >> 8);
    out[3] = uint8_t(value);
}

uint8_t paethPredictor(int a, int b, int c)
{
    const int p = a + b - c;
    const int pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
    if (pa <= pb && pa <= pc)
        return uint8_t(a);
    return uint8_t(pb <= pc ? b : c);
}

// Sum of the bytes read as signed: the usual guess at which filter
// deflates best.
uint64_t signedSum(const uint8_t* bytes, size_t count)
{
    uint64_t sum = 0;
    for (size_t i = 0; i < count; ++i)
        sum += uint64_t(std::abs(int(int8_t(bytes[i]))));
    return sum;
}

struct Layout
{
    uint32_t width = 0;
    uint32_t height = 0;
    size_t rowBytes = 0;   // pixels of one row as the file stores them
    size_t pixelBytes = 1; // the distance filters look back, at least 1
    bool sixteen = false;
};

// One band's rows: the file's byte order, then the filter each row
// deflates best with, into the filtered image at the band's rows.
class BandFilter
{
public:
    BandFilter(const Surfaces::Surface& surface, const Layout& layout, bool filtering, uint8_t* filtered)
        : m_surface(surface)
        , m_layout(layout)
        , m_filtering(filtering)
        , m_filtered(filtered)
        , m_current(layout.rowBytes)
        , m_prior(layout.rowBytes)
    {
        if (filtering)
            for (auto& candidate : m_candidates)
                candidate.resize(layout.rowBytes);
    }

    void run(uint32_t firstRow, uint32_t endRow)
    {
        if (firstRow > 0)
            fileRow(firstRow - 1, m_prior.data());
        else
            std::fill(m_prior.begin(), m_prior.end(), uint8_t(0));
        for (uint32_t y = firstRow; y < endRow; ++y) {
            fileRow(y, m_current.data());
            uint8_t* out = m_filtered + size_t(y) * (m_layout.rowBytes + 1);
            filterRow(out);
            std::swap(m_current, m_prior);
        }
    }

private:
    void fileRow(uint32_t y, uint8_t* out) const
    {
        const uint8_t* in = m_surface.row(y);
        if (!m_layout.sixteen) {
            std::memcpy(out, in, m_layout.rowBytes);
            return;
        }
        // Components are stored big-endian.
        for (size_t i = 0; i < m_layout.rowBytes; i += 2) {
            uint16_t v;
            std::memcpy(&v, in + i, 2);
            out[i] = uint8_t(v >> 8);
            out[i + 1] = uint8_t(v);
        }
    }

    void filterRow(uint8_t* out)
    {
        const size_t n = m_layout.rowBytes;
        const uint8_t* raw = m_current.data();
        if (!m_filtering) {
            out[0] = None;
            std::memcpy(out + 1, raw, n);
            return;
        }
        const uint8_t* prior = m_prior.data();
        const size_t bpp = m_layout.pixelBytes;
        uint8_t* sub = m_candidates[0].data();
        uint8_t* up = m_candidates[1].data();
        uint8_t* average = m_candidates[2].data();
        uint8_t* paeth = m_candidates[3].data();
        for (size_t i = 0; i < n; ++i) {
            const int a = i >= bpp ? raw[i - bpp] : 0;
            const int b = prior[i];
            const int c = i >= bpp ? prior[i - bpp] : 0;
            sub[i] = uint8_t(raw[i] - a);
            up[i] = uint8_t(raw[i] - b);
            average[i] = uint8_t(raw[i] - ((a + b) >> 1));
            paeth[i] = uint8_t(raw[i] - paethPredictor(a, b, c));
        }
        Filter best = None;
        uint64_t bestSum = signedSum(raw, n);
        const uint8_t* bestBytes = raw;
        for (int f = 0; f < 4; ++f) {
            const uint64_t sum = signedSum(m_candidates[f].data(), n);
            if (sum < bestSum) {
                bestSum = sum;
                best = Filter(f + 1);
                bestBytes = m_candidates[f].data();
            }
        }
        out[0] = best;
        std::memcpy(out + 1, bestBytes, n);
    }

    const Surfaces::Surface& m_surface;
    const Layout& m_layout;
    bool m_filtering;
    uint8_t* m_filtered;
    std::vector<uint8_t> m_current, m_prior;
    std::vector<uint8_t> m_candidates[4];
};

struct Band
{
    uint32_t firstRow = 0;
    uint32_t endRow = 0;
    size_t begin = 0; // byte range in the filtered image
    size_t end = 0;
    std::vector<uint8_t> deflated;
    uLong adler = 1;
    bool ok = false;
};

// A raw deflate of the band that continues the previous one: primed with
// the bytes before it, ended on a byte boundary, or with the final block.
// The output starts after `reserved` bytes, left for the zlib header.
void deflateBand(Band& band, const uint8_t* filtered, int level, bool filtering, bool last, size_t reserved)
{
    z_stream z{};
    if (deflateInit2(&z, level, Z_DEFLATED, -15, 8, filtering ? Z_FILTERED : Z_DEFAULT_STRATEGY) != Z_OK)
        return;
    if (band.begin > 0) {
        const size_t dictionary = std::min<size_t>(band.begin, WindowBytes);
        deflateSetDictionary(&z, filtered + band.begin - dictionary, uInt(dictionary));
    }
    const size_t inputBytes = band.end - band.begin;
    try {
        band.deflated.resize(reserved + deflateBound(&z, uLong(inputBytes)) + 64);
    } catch (const std::bad_alloc&) {
        deflateEnd(&z);
        return;
    }
    // zlib counts in 32 bits: feed and drain in pieces.
    constexpr size_t Piece = 1u << 30;
    size_t fed = 0, written = reserved;
    int status = Z_OK;
    for (;;) {
        const size_t in = std::min(Piece, inputBytes - fed);
        z.next_in = const_cast<Bytef*>(filtered + band.begin + fed);
        z.avail_in = uInt(in);
        const bool lastPiece = fed + in == inputBytes;
        const int flush = lastPiece ? (last ? Z_FINISH : Z_SYNC_FLUSH) : Z_NO_FLUSH;
        do {
            if (written == band.deflated.size())
                band.deflated.resize(band.deflated.size() * 2);
            const size_t room = std::min(Piece, band.deflated.size() - written);
            z.next_out = band.deflated.data() + written;
            z.avail_out = uInt(room);
            status = deflate(&z, flush);
            written += room - z.avail_out;
        } while (status == Z_OK && (z.avail_in > 0 || z.avail_out == 0));
        fed += in;
        if (lastPiece || (status != Z_OK && status != Z_BUF_ERROR))
            break;
    }
    deflateEnd(&z);
    band.ok = last ? status == Z_STREAM_END : (status == Z_OK || status == Z_BUF_ERROR);
    band.deflated.resize(written);
    band.adler = adler32_z(1, filtered + band.begin, inputBytes);
}

class ChunkWriter
{
public:
    explicit ChunkWriter(QIODevice& device) : m_device(device) {}

    bool ok() const { return m_ok; }

    void raw(const void* data, size_t size)
    {
        if (m_ok && size > 0)
            m_ok = m_device.write(static_cast<const char*>(data), qint64(size)) == qint64(size);
    }

    void chunk(const char type[4], const uint8_t* data, size_t size)
    {
        uint8_t head[8];
        putBigEndian(head, uint32_t(size));
        std::memcpy(head + 4, type, 4);
        uLong crc = crc32(0, reinterpret_cast<const Bytef*>(type), 4);
        if (size > 0) // zlib answers a null buffer with the initial value
            crc = crc32_z(crc, data, size);
        uint8_t tail[4];
        putBigEndian(tail, uint32_t(crc));
        raw(head, 8);
        raw(data, size);
        raw(tail, 4);
    }

    void chunk(const char type[4], const QByteArray& data)
    {
        chunk(type, reinterpret_cast<const uint8_t*>(data.constData()), size_t(data.size()));
    }

    // The zlib stream, cut into IDAT chunks of a bounded size.
    void imageData(const uint8_t* data, size_t size)
    {
        for (size_t at = 0; at < size; at += MaximumChunkBytes)
            chunk("IDAT", data + at, std::min(MaximumChunkBytes, size - at));
    }

private:
    QIODevice& m_device;
    bool m_ok = true;
};

uint8_t zlibLevelFlags(int level)
{
    if (level < 2)
        return 0;
    if (level < 6)
        return 1;
    return level == 6 ? 2 : 3;
}

} // namespace

bool PngEncoder::canEncode(PixelFormat format)
{
    switch (format) {
    case PixelFormat::L8:
    case PixelFormat::RGB8:
    case PixelFormat::RGBA8:
    case PixelFormat::L16:
    case PixelFormat::RGB16:
    case PixelFormat::RGBA16:
        return true;
    default:
        return false;
    }
}

bool PngEncoder::encode(const Surfaces::Surface& surface, const PngMetadata& metadata, int level, QIODevice& device,
                        uint32_t bandRows)
{
    const PixelFormat format = surface.format();
    if (!canEncode(format) || surface.isEmpty() || surface.width() == 0 || surface.height() == 0
        || surface.width() > 0x7FFFFFFFu || surface.height() > 0x7FFFFFFFu)
        return false;
    level = std::clamp(level, 0, 9);
    const bool filtering = level > 0;

    Layout layout;
    layout.width = surface.width();
    layout.height = surface.height();
    layout.rowBytes = size_t(surface.rowBytes());
    layout.pixelBytes = std::max<size_t>(1, Surfaces::bytesPerPixel(format));
    layout.sixteen = Surfaces::bytesPerComponent(format) == 2;

    const size_t filteredRowBytes = layout.rowBytes + 1;
    std::unique_ptr<uint8_t[]> filtered(new (std::nothrow) uint8_t[filteredRowBytes * layout.height]);
    if (!filtered)
        return false;

    if (bandRows == 0) {
        const uint64_t total = uint64_t(filteredRowBytes) * layout.height;
        const uint64_t bands =
            std::clamp<uint64_t>(total / MinimumBandBytes, 1, std::max(1u, Core::threadCount()));
        bandRows = uint32_t((layout.height + bands - 1) / bands);
    }
    std::vector<Band> bands;
    for (uint32_t first = 0; first < layout.height; first += bandRows) {
        Band band;
        band.firstRow = first;
        band.endRow = uint32_t(std::min<uint64_t>(uint64_t(first) + bandRows, layout.height));
        band.begin = size_t(band.firstRow) * filteredRowBytes;
        band.end = size_t(band.endRow) * filteredRowBytes;
        bands.push_back(std::move(band));
    }

    auto forEachBand = [&bands](const auto& body) {
        if (bands.size() == 1)
            body(bands.front());
        else
            QtConcurrent::blockingMap(bands, body);
    };
    // Filtering reads the row above from the surface, so bands are
    // independent; deflating reads the bytes before from the filtered image,
    // so it waits for all of it.
    forEachBand([&](Band& band) {
        BandFilter filter(surface, layout, filtering, filtered.get());
        filter.run(band.firstRow, band.endRow);
    });
    const size_t lastBand = bands.size() - 1;
    forEachBand([&](Band& band) {
        deflateBand(band, filtered.get(), level, filtering, &band == &bands[lastBand],
                    &band == &bands.front() ? ZlibHeaderBytes : 0);
    });
    uLong adler = bands.front().adler;
    for (size_t b = 0; b < bands.size(); ++b) {
        if (!bands[b].ok)
            return false;
        if (b > 0)
            adler = adler32_combine(adler, bands[b].adler, z_off_t(bands[b].end - bands[b].begin));
    }
    filtered.reset();

    ChunkWriter out(device);
    static const uint8_t signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    out.raw(signature, 8);

    uint8_t header[13];
    putBigEndian(header, layout.width);
    putBigEndian(header + 4, layout.height);
    header[8] = layout.sixteen ? 16 : 8;
    header[9] = colorType(format);
    header[10] = 0; // deflate
    header[11] = 0; // adaptive filtering
    header[12] = 0; // not interlaced
    out.chunk("IHDR", header, sizeof header);

    if (metadata.pixelsPerMeterX > 0 && metadata.pixelsPerMeterY > 0) {
        uint8_t physical[9];
        putBigEndian(physical, metadata.pixelsPerMeterX);
        putBigEndian(physical + 4, metadata.pixelsPerMeterY);
        physical[8] = 1; // metres
        out.chunk("pHYs", physical, sizeof physical);
    }
    if (!metadata.comment.isEmpty())
        out.chunk("tEXt", QByteArray("Comment", 8) + metadata.comment);
    if (!metadata.xmp.isEmpty()) {
        // Keyword, no compression, empty language tag and translation.
        static const char prefix[] = "XML:com.adobe.xmp\0\0\0\0";
        out.chunk("iTXt", QByteArray(prefix, int(sizeof prefix)) + metadata.xmp);
    }

    const uint16_t cmf = 0x7800 | uint16_t(zlibLevelFlags(level) << 6);
    const uint16_t zlibHeader = uint16_t(cmf + 31 - cmf % 31);
    bands.front().deflated[0] = uint8_t(zlibHeader >> 8);
    bands.front().deflated[1] = uint8_t(zlibHeader);
    uint8_t trailer[4];
    putBigEndian(trailer, uint32_t(adler));
    bands.back().deflated.insert(bands.back().deflated.end(), trailer, trailer + 4);
    for (const Band& band : bands)
        out.imageData(band.deflated.data(), band.deflated.size());
    out.chunk("IEND", nullptr, 0);
    return out.ok();
}

} // namespace Ond::Image
