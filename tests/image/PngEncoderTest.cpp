// The band-parallel PNG writer: what it writes must decode, through the
// image library's libpng, to exactly the pixels it was given, at every
// level and however the rows fall into bands, and its chunks must be sound
// for stricter readers than that one.

#include "ImageTestSupport.h"

#include "image/PngEncoder.h"
#include "image/SurfaceDesc.h"

#include "common/TestPaths.h"

#include <QBuffer>
#include <QFile>
#include <QSizeF>

#include <zlib.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using namespace ImageTest;
using Ond::Image::PngEncoder;
using Ond::Image::PngMetadata;
using Ond::Surfaces::SurfaceDesc;
using PF = PixelFormat;

namespace {

// Noise, with every seventh row a copy of the one two above, so that
// deflate finds matches reaching back across band seams.
SurfaceSPtr makeNoise(PF format, uint32_t width, uint32_t height)
{
    auto s = SurfaceSPtr::create(SurfaceDesc(width, height, format));
    uint32_t state = 0x9E3779B9u;
    for (uint32_t y = 0; y < height; ++y) {
        uint8_t* row = s->row(y);
        if (y % 7 == 3) {
            std::memcpy(row, s->row(y - 2), s->rowBytes());
            continue;
        }
        for (uint64_t i = 0; i < s->rowBytes(); ++i) {
            state ^= state << 13;
            state ^= state >> 17;
            state ^= state << 5;
            row[i] = uint8_t(i % 3 == 0 ? (state & 0xFF) : (i + y) & 0xFF);
        }
    }
    return s;
}

QByteArray encoded(const Surface& surface, int level, uint32_t bandRows, const PngMetadata& metadata = {})
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(PngEncoder::encode(surface, metadata, level, buffer, bandRows));
    return buffer.data();
}

struct Chunk
{
    std::string type;
    QByteArray data;
};

uint32_t bigEndian(const char* p)
{
    const auto* u = reinterpret_cast<const unsigned char*>(p);
    return uint32_t(u[0]) << 24 | uint32_t(u[1]) << 16 | uint32_t(u[2]) << 8 | u[3];
}

// Every chunk, each checked against its CRC; empty on any fault.
std::vector<Chunk> chunksOf(const QByteArray& file)
{
    std::vector<Chunk> chunks;
    if (!file.startsWith(QByteArray("\x89PNG\r\n\x1A\n", 8)))
        return {};
    qsizetype at = 8;
    while (at + 12 <= file.size()) {
        const uint32_t length = bigEndian(file.constData() + at);
        if (at + 12 + qsizetype(length) > file.size())
            return {};
        const auto* typeAndData = reinterpret_cast<const Bytef*>(file.constData() + at + 4);
        const uint32_t crc = uint32_t(crc32(0, typeAndData, 4 + length));
        if (crc != bigEndian(file.constData() + at + 8 + length))
            return {};
        chunks.push_back({std::string(file.constData() + at + 4, 4), file.mid(at + 8, length)});
        at += 12 + length;
    }
    return at == file.size() ? chunks : std::vector<Chunk>{};
}

SurfaceSPtr decoded(const QByteArray& file)
{
    static const QString path = ZmfTest::makeTempDir() + QStringLiteral("/decoded.png");
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly) || f.write(file) != file.size())
        return {};
    f.close();
    return readFile(path);
}

} // namespace

TEST(PngEncoder, EveryStoredFormatDecodesToItsPixelsWhateverTheBandsAndLevel)
{
    for (PF format : {PF::L8, PF::RGB8, PF::RGBA8, PF::L16, PF::RGB16, PF::RGBA16}) {
        const auto source = makeNoise(format, 37, 29); // odd rows: no band is whole
        for (int level : {0, 1, 6, 9}) {
            for (uint32_t bandRows : {1u, 5u, 0u}) {
                SCOPED_TRACE(std::string(pixelFormatName(format)) + " level " + std::to_string(level) + " bands of "
                             + std::to_string(bandRows));
                const QByteArray file = encoded(*source, level, bandRows);
                const auto chunks = chunksOf(file);
                ASSERT_GE(chunks.size(), 3u);
                EXPECT_EQ(chunks.front().type, "IHDR");
                EXPECT_EQ(chunks.back().type, "IEND");
                const auto back = decoded(file);
                ASSERT_TRUE(back);
                EXPECT_EQ(Ond::Surfaces::bytesPerComponent(back->format()),
                          Ond::Surfaces::bytesPerComponent(format));
                const QString diff = compareSurfaces(*source, *back);
                EXPECT_TRUE(diff.isEmpty()) << diff.toStdString();
            }
        }
    }
}

TEST(PngEncoder, BandsCostNoMoreThanOneDeflate)
{
    // Each band starts from the bytes before it, as one stream would.
    const auto source = makeNoise(PF::RGBA16, 300, 240);
    const qsizetype whole = encoded(*source, 6, 240).size();
    const qsizetype banded = encoded(*source, 6, 16).size();
    EXPECT_LT(double(banded), double(whole) * 1.01) << whole << " " << banded;
}

TEST(PngEncoder, MetadataChunksComeBeforeThePixels)
{
    PngMetadata metadata;
    metadata.pixelsPerMeterX = 3937;
    metadata.pixelsPerMeterY = 1968;
    metadata.xmp = "<x:xmpmeta/>";
    metadata.comment = "made here";
    const auto chunks = chunksOf(encoded(*makeNoise(PF::RGB8, 8, 4), 6, 0, metadata));
    std::vector<std::string> types;
    for (const Chunk& c : chunks)
        types.push_back(c.type);
    EXPECT_EQ(types, (std::vector<std::string>{"IHDR", "pHYs", "tEXt", "iTXt", "IDAT", "IEND"}));
    EXPECT_EQ(chunks[1].data, QByteArray::fromHex("00000f61000007b001"));
    EXPECT_EQ(chunks[2].data, QByteArray("Comment\0made here", 17));
    EXPECT_EQ(chunks[3].data, QByteArray("XML:com.adobe.xmp\0\0\0\0\0<x:xmpmeta/>", 34));

    // Without metadata nothing but the image.
    EXPECT_EQ(chunksOf(encoded(*makeNoise(PF::L8, 3, 3), 1, 0)).size(), 3u);
}

TEST(PngEncoder, RefusesWhatPngDoesNotStoreAsItIs)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    for (PF format : {PF::LA8, PF::BGR8, PF::BGRA8, PF::LA16, PF::RGBA16F, PF::RGBA32F}) {
        EXPECT_FALSE(PngEncoder::canEncode(format)) << pixelFormatName(format);
        EXPECT_FALSE(PngEncoder::encode(*makeNoise(format, 4, 4), {}, 6, buffer));
    }
    EXPECT_EQ(buffer.size(), 0);
}

TEST(PngEncoder, TheCodecWritesPngThroughItWithTheLibrarysMetadata)
{
    // The codec's own path: levels from the options, metadata as the
    // library wrote it, and pixels that come back exactly.
    const QString path = ZmfTest::makeTempDir() + QStringLiteral("/codec.png");
    const auto source = makeNoise(PF::RGBA16, 64, 40);
    ASSERT_TRUE(writeFile(source, path,
                          {{"png_compression", "best_speed"}, {"Description", "made here"}, {"physical_size", QSizeF(2.54, 2.54)}}));
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const auto chunks = chunksOf(f.readAll());
    ASSERT_EQ(chunks.size(), 6u);
    EXPECT_EQ(uint8_t(chunks[4].data[1]) >> 6, 0); // zlib's fastest level
    EXPECT_EQ(chunks[1].data.left(8), QByteArray::fromHex("000009d700000626")); // 64 and 40 px per inch
    EXPECT_TRUE(chunks[3].data.contains("<exif:PixelXDimension>64</exif:PixelXDimension>"));
    const QString diff = compareSurfaces(*source, *readFile(path));
    EXPECT_TRUE(diff.isEmpty()) << diff.toStdString();

    // Without options: no XMP, and the library's 72 dots per inch.
    ASSERT_TRUE(writeFile(source, path));
    QFile g(path);
    ASSERT_TRUE(g.open(QIODevice::ReadOnly));
    const auto plain = chunksOf(g.readAll());
    ASSERT_EQ(plain.size(), 4u);
    EXPECT_EQ(plain[1].data, QByteArray::fromHex("00000b1300000b1301"));
}
