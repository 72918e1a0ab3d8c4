#include "ImageTestSupport.h"

#include "image/DefaultCodecs.h"
#include "image/FileTextureLoader.h"
#include "image/RawSurfaceCodec.h"
#include "image/SurfaceCodecManager.h"

#include "common/TestPaths.h"

#include <QBuffer>
#include <QDataStream>
#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using namespace Ond::Surfaces;
using namespace ImageTest;

namespace {

// Counts the factory calls that reach it; answers for "probe" only.
struct ProbeFactory : SurfaceCodecFactory
{
    mutable int calls = 0;
    ProbeFactory() : SurfaceCodecFactory({}, {}) {}
    int canHandle(QIODevice*, const QByteArray& suffix) const override
    {
        ++calls;
        return suffix == "probe" ? CapabilityRead : CapabilityNone;
    }
    QSharedPointer<SurfaceCodec> createCodec(QIODevice* d, const QByteArray& s) const override
    {
        return QSharedPointer<RawSurfaceCodec>::create(d, s);
    }
};

} // namespace

TEST(SurfaceCodecManager, RegistersInOrderAndListsFormats)
{
    registerDefaultCodecs();
    registerDefaultCodecs(); // a second call adds nothing
    auto& manager = SurfaceCodecManager::instance();
    const auto factories = manager.factories();
    ASSERT_GE(factories.size(), 4);
    const SurfaceFormatList writes = manager.getFormats(CapabilityWrite);
    ASSERT_FALSE(writes.isEmpty());
    EXPECT_EQ(writes.first().label, QStringLiteral("Raw surface"));
    EXPECT_EQ(writes.at(1).label, QStringLiteral("DirectDraw Surface"));
    EXPECT_EQ(writes.last().label, QStringLiteral("Kestrel Layerdoc"));

    QStringList labels;
    for (const auto& f : writes) {
        EXPECT_FALSE(labels.contains(f.label)) << f.label.toStdString();
        labels << f.label;
    }
    const QString text = manager.formatsText(CapabilityWrite);
    EXPECT_TRUE(text.startsWith(QStringLiteral("surface, dds, "))) << text.toStdString();
    EXPECT_TRUE(text.endsWith(QStringLiteral(", lyd"))) << text.toStdString();
    for (const char* ext : {"png", "jpg", "tga", "tif", "exr", "bmp"})
        EXPECT_TRUE(text.contains(QLatin1String(ext))) << ext;
    // Read-only by decision.
    for (const char* ext : {"gif", "pfm", "ppm", "j2k", "ico"})
        EXPECT_FALSE(text.split(QStringLiteral(", ")).contains(QLatin1String(ext))) << ext;
    EXPECT_TRUE(manager.getFormats(CapabilityRead).size() >= writes.size());
    EXPECT_TRUE(manager.getExtensions().contains(QStringLiteral("gif")));
    EXPECT_FALSE(manager.supportsCompression("dds"));
}

TEST(SurfaceCodecManager, CapabilitiesFollowTheDevice)
{
    registerDefaultCodecs();
    auto& manager = SurfaceCodecManager::instance();
    const auto raw = manager.factories().first();

    QBuffer writeOnly;
    writeOnly.open(QIODevice::WriteOnly);
    EXPECT_EQ(raw->canHandle(&writeOnly, "surface"), CapabilityWrite);
    EXPECT_EQ(raw->canHandle(&writeOnly, "Surface"), CapabilityNone);
    EXPECT_TRUE(manager.findCodec(&writeOnly, "surface", CapabilityWrite));
    EXPECT_FALSE(manager.findCodec(&writeOnly, "surface", CapabilityRead));

    QBuffer closed;
    EXPECT_EQ(raw->canHandle(&closed, "surface"), CapabilityRead | CapabilityWrite);
    EXPECT_FALSE(closed.isOpen());

    EXPECT_FALSE(manager.findCodec(&closed, "nosuchformat", CapabilityRead | CapabilityWrite));
    QBuffer dds;
    EXPECT_TRUE(manager.findFactory(&dds, "DDS", CapabilityWrite) == manager.factories().at(1));
    EXPECT_FALSE(manager.findCodec(&closed, "gif", CapabilityWrite));
    EXPECT_TRUE(manager.findCodec(&closed, "gif", CapabilityRead));
}

TEST(RawSurfaceCodec, ByteLayoutAndRoundTrip)
{
    auto s = SurfaceSPtr::create(SurfaceDesc(3, 2, PixelFormat::LA16, -16));
    for (uint32_t y = 0; y < 2; ++y)
        for (uint32_t x = 0; x < 3; ++x) {
            s->pixel<uint16_t>(x, y)[0] = uint16_t(1000 * y + x);
            s->pixel<uint16_t>(x, y)[1] = uint16_t(7);
        }
    QBuffer buffer;
    RawSurfaceCodec writer(&buffer, "surface");
    ASSERT_TRUE(writer.write(s));
    EXPECT_FALSE(buffer.isOpen());
    const QByteArray bytes = buffer.data();
    ASSERT_EQ(bytes.size(), 4 * 7 + 8 + 4 + 2 * 16);
    EXPECT_EQ(bytes.left(8).toHex(), QByteArray("a134568a00000001"));
    EXPECT_EQ(bytes.mid(8, 12).toHex(), QByteArray("000000010000000000000000")); // depth 1, 0, 0
    EXPECT_EQ(bytes.mid(20, 8).toHex(), QByteArray("0000000800000002")); // format, height
    EXPECT_EQ(bytes.mid(28, 8).toHex(), QByteArray("fffffffffffffff0")); // stride -16
    EXPECT_EQ(bytes.mid(36, 4).toHex(), QByteArray("00000003"));
    // Ascending addresses: the last logical row comes first.
    EXPECT_EQ(bytes.mid(40, 2).toHex(), QByteArray("e803")); // 1000, native order
    EXPECT_EQ(bytes.mid(52, 4), QByteArray(4, '\0'));         // stride padding

    RawSurfaceCodec reader(&buffer, "surface");
    SurfaceSPtr back;
    ASSERT_TRUE(reader.read(back));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->desc(), s->desc());
    EXPECT_EQ(reinterpret_cast<uintptr_t>(back->row(1)) % 64, 0u);
    EXPECT_EQ(back->pixel<uint16_t>(2, 1)[0], 1002);
    EXPECT_EQ(back->pixel<uint16_t>(0, 0)[0], 0);
}

TEST(RawSurfaceCodec, NullSurfaceVersionAndTruncation)
{
    QBuffer buffer;
    RawSurfaceCodec writer(&buffer, "surface");
    ASSERT_TRUE(writer.write(SurfaceSPtr()));
    EXPECT_EQ(buffer.data().size(), 8);
    SurfaceSPtr back;
    ASSERT_TRUE(RawSurfaceCodec(&buffer, "surface").read(back));
    ASSERT_TRUE(back);
    EXPECT_TRUE(back->isEmpty());

    QBuffer full;
    ASSERT_TRUE(RawSurfaceCodec(&full, "surface").write(makePattern(PixelFormat::RGBA8, 4, 4)));
    QByteArray v2 = full.data();
    v2[7] = 2;
    QBuffer b2(&v2);
    EXPECT_FALSE(RawSurfaceCodec(&b2, "surface").read(back));
    EXPECT_FALSE(back);

    for (int cut : {12, 39, 40, 40 + 63}) {
        QByteArray shortData = full.data().left(cut);
        QBuffer b(&shortData);
        EXPECT_FALSE(RawSurfaceCodec(&b, "surface").read(back)) << cut;
    }
    QBuffer writing;
    writing.open(QIODevice::WriteOnly);
    EXPECT_FALSE(RawSurfaceCodec(&writing, "surface").read(back)); // open in the other mode
}

TEST(FileTextureLoader, LogsFailuresInItsOwnWords)
{
    registerDefaultCodecs();
    const QString dir = ZmfTest::makeTempDir();
    auto probe = QSharedPointer<ProbeFactory>::create();
    SurfaceCodecManager::instance().registerFactory(probe);
    {
        LogCapture log;
        EXPECT_FALSE(FileTextureLoader::load(dir + "/missing.probe"));
        EXPECT_EQ(probe->calls, 0);
        ASSERT_EQ(log.lines().size(), 1);
        EXPECT_EQ(log.lines().first(),
                  QStringLiteral("1|ZMFBaker|FileTextureLoader >> Loading %1/missing.probe Failed").arg(dir));
    }
    {
        QFile f(dir + "/x.unknownsuffix");
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("nothing");
        f.close();
        LogCapture log;
        EXPECT_FALSE(FileTextureLoader::load(f.fileName()));
        ASSERT_EQ(log.lines().size(), 1);
        EXPECT_EQ(log.lines().first(), QStringLiteral("1|ZMFBaker|FileTextureLoader >> Can't find image codec"));
    }
    {
        QFile f(dir + "/broken.surface");
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("garbage, not a surface");
        f.close();
        LogCapture log;
        EXPECT_FALSE(FileTextureLoader::load(f.fileName()));
        ASSERT_EQ(log.lines().size(), 1);
        EXPECT_EQ(log.lines().first(),
                  QStringLiteral("1|ZMFBaker|FileTextureLoader >> Can't load io device: corrupted or bad format ?"));
    }
}

TEST(SurfaceCodecManager, ProbingAClosedFileCreatesNothing)
{
    registerDefaultCodecs();
    const QString dir = ZmfTest::makeTempDir();
    for (const char* suffix : {"surface", "dds", "lyd", "png"}) {
        SCOPED_TRACE(suffix);
        QFile missing(dir + "/missing." + suffix);
        SurfaceCodecManager::instance().findCodec(&missing, suffix, CapabilityRead);
        EXPECT_TRUE(SurfaceCodecManager::instance().findCodec(&missing, suffix, CapabilityWrite));
        EXPECT_FALSE(missing.exists());
        EXPECT_FALSE(missing.isOpen());
    }
}
