#include "ImageTestSupport.h"

#include "image/DDSSurfaceCodec.h"

#include "common/TestPaths.h"

#include <QBuffer>
#include <QFile>
#include <QtEndian>

#include <gtest/gtest.h>

using namespace Ond::Surfaces;
using namespace ImageTest;
using Ond::Image::Plugins::DDSSurfaceCodec;

namespace {

// A DDS header by hand: the words after the magic, by their published offsets.
QByteArray header(uint32_t width, uint32_t height, uint32_t pfFlags, uint32_t fourCC, uint32_t bits,
                  std::array<uint32_t, 4> masks)
{
    std::array<uint32_t, 32> w{};
    w[0] = 0x20534444; // "DDS "
    w[1] = 124;
    w[2] = 0x100F;
    w[3] = height;
    w[4] = width;
    w[19] = 32;
    w[20] = pfFlags;
    w[21] = fourCC;
    w[22] = bits;
    for (int i = 0; i < 4; ++i)
        w[23 + i] = masks[i];
    w[27] = 0x1000;
    QByteArray out;
    for (uint32_t v : w) {
        const uint32_t le = qToLittleEndian(v);
        out.append(reinterpret_cast<const char*>(&le), 4);
    }
    return out;
}

SurfaceSPtr readBytes(const QByteArray& bytes, const QString& name)
{
    const QString path = ZmfTest::makeTempDir() + QLatin1Char('/') + name;
    QFile f(path);
    EXPECT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(bytes);
    f.close();
    return readFile(path);
}

} // namespace

TEST(DDSSurfaceCodec, HeaderOfWrittenFiles)
{
    QBuffer buffer;
    ASSERT_TRUE(DDSSurfaceCodec(&buffer, "dds").write(makePattern(PixelFormat::RGB32F, 3, 2)));
    const QByteArray d = buffer.data();
    ASSERT_EQ(d.size(), 128 + 20 + 3 * 2 * 12);
    EXPECT_EQ(d.left(4), QByteArray("DDS "));
    EXPECT_EQ(qFromLittleEndian<quint32>(d.constData() + 4 + 4 * 4), 36u); // pitch
    EXPECT_EQ(d.mid(84, 4), QByteArray("DX10"));
    EXPECT_EQ(qFromLittleEndian<quint32>(d.constData() + 128), 6u); // R32G32B32_FLOAT
    EXPECT_EQ(qFromLittleEndian<quint32>(d.constData() + 132), 3u); // texture 2D

    QBuffer rgba;
    ASSERT_TRUE(DDSSurfaceCodec(&rgba, "dds").write(makePattern(PixelFormat::RGBA8, 2, 2)));
    const QByteArray r = rgba.data();
    EXPECT_EQ(qFromLittleEndian<quint32>(r.constData() + 80), 0x41u);        // RGB | ALPHAPIXELS
    EXPECT_EQ(qFromLittleEndian<quint32>(r.constData() + 92), 0x00FF0000u);  // red mask
    EXPECT_EQ(qFromLittleEndian<quint32>(r.constData() + 104), 0xFF000000u); // alpha mask
}

TEST(DDSSurfaceCodec, ReadsOtherWritersLayouts)
{
    // 16-bit R5G6B5, decoded through its masks.
    QByteArray rgb565 = header(2, 1, 0x40, 0, 16, {0xF800, 0x07E0, 0x001F, 0});
    rgb565.append("\x00\xF8\x1F\x00", 4); // pure red, pure blue
    auto s = readBytes(rgb565, "r565.dds");
    ASSERT_TRUE(s);
    EXPECT_EQ(s->format(), PixelFormat::RGBA8);
    EXPECT_EQ(s->readPixel(0, 0), Eigen::Vector4f(1, 0, 0, 1));
    EXPECT_EQ(s->readPixel(1, 0), Eigen::Vector4f(0, 0, 1, 1));

    // The extension header with R8G8B8A8_UNORM.
    QByteArray dx10 = header(1, 1, 0x4, 0x30315844, 0, {0, 0, 0, 0});
    const uint32_t ext[5] = {28, 3, 0, 1, 0};
    dx10.append(reinterpret_cast<const char*>(ext), sizeof(ext));
    dx10.append("\x10\x20\x30\x40", 4);
    s = readBytes(dx10, "dx10.dds");
    ASSERT_TRUE(s);
    EXPECT_EQ(s->format(), PixelFormat::RGBA8);
    EXPECT_EQ(s->pixel<uint8_t>(0, 0)[2], 0x30);

    // Block-compressed DXT1 is left to the library codec, which reads it.
    QByteArray dxt1 = header(4, 4, 0x4, 0x31545844, 0, {0, 0, 0, 0});
    dxt1.append("\x00\xF8\x00\xF8\x00\x00\x00\x00", 8); // one red block
    EXPECT_FALSE(DDSSurfaceCodec::canRead(dxt1));
    s = readBytes(dxt1, "dxt1.dds");
    ASSERT_TRUE(s);
    EXPECT_EQ(s->width(), 4u);
    EXPECT_NEAR(s->readPixel(2, 2).x(), 1.0f, 0.01f);

    // Truncated pixels fail.
    QByteArray cut = header(8, 8, 0x20000, 0, 8, {0xFF, 0, 0, 0});
    cut.append(QByteArray(40, '\x7f'));
    LogCapture log;
    EXPECT_FALSE(readBytes(cut, "cut.dds"));
}
