// Every format the bakers write, through every writable file type that can
// hold it, checked against the quantisation of what the file stores.

#include "ImageTestSupport.h"

#include "image/FileTextureLoader.h"
#include "image/FreeimageSurfaceCodec.h"
#include "image/FreeimageSurfaceCodecFactory.h"
#include "image/DefaultCodecs.h"
#include "image/LYDSurfaceCodec.h"
#include "image/SurfaceCodecManager.h"

#include "common/TestPaths.h"

#include <QBuffer>
#include <QFile>
#include <QSizeF>

#include <FreeImage.h>
#include <gtest/gtest.h>

using namespace Ond::Surfaces;
using namespace ImageTest;
using Ond::Image::Plugins::FreeimageSurfaceCodec;
using Ond::Image::Plugins::LYDSurfaceCodec;
using PF = PixelFormat;

namespace {

struct Expectation
{
    const char* suffix;
    // Read-back format per baker format, in bakerFormats() order.
    PF stored[8];
    bool keepsAlpha;
};

// L8, L16, L16F, L32F, RGBA8, RGBA16, RGBA16F, RGBA32F.
const Expectation expectations[] = {
    {"surface", {PF::L8, PF::L16, PF::L16F, PF::L32F, PF::RGBA8, PF::RGBA16, PF::RGBA16F, PF::RGBA32F}, true},
    {"lyd", {PF::L8, PF::L16, PF::L16F, PF::L32F, PF::RGBA8, PF::RGBA16, PF::RGBA16F, PF::RGBA32F}, true},
    {"dds", {PF::L8, PF::L16, PF::L16F, PF::L32F, PF::BGRA8, PF::RGBA16, PF::RGBA16F, PF::RGBA32F}, true},
    {"png", {PF::L8, PF::L16, PF::L16, PF::L16, PF::BGRA8, PF::RGBA16, PF::RGBA16, PF::RGBA16}, true},
    {"tif", {PF::L8, PF::L16, PF::L32F, PF::L32F, PF::BGRA8, PF::RGBA16, PF::RGBA32F, PF::RGBA32F}, true},
    {"exr", {PF::L32F, PF::L32F, PF::L32F, PF::L32F, PF::RGBA32F, PF::RGBA32F, PF::RGBA32F, PF::RGBA32F}, true},
    {"tga", {PF::L8, PF::L8, PF::L8, PF::L8, PF::BGRA8, PF::BGRA8, PF::BGRA8, PF::BGRA8}, true},
    {"bmp", {PF::L8, PF::L8, PF::L8, PF::L8, PF::BGRA8, PF::BGRA8, PF::BGRA8, PF::BGRA8}, true},
};

QString tempPath(const char* name)
{
    static const QString dir = ZmfTest::makeTempDir();
    return dir + QLatin1Char('/') + QLatin1String(name);
}

} // namespace

TEST(CodecRoundTrip, EveryBakerFormatThroughEveryLosslessFileType)
{
    const auto& formats = bakerFormats();
    for (const Expectation& e : expectations) {
        for (size_t i = 0; i < formats.size(); ++i) {
            const PF f = formats[i];
            SCOPED_TRACE(std::string(e.suffix) + " " + pixelFormatName(f));
            const auto source = makePattern(f, 16, 8, true);
            const QString path = tempPath("rt.") + QLatin1String(e.suffix);
            ASSERT_TRUE(writeFile(source, path));
            const auto back = readFile(path);
            ASSERT_TRUE(back);
            EXPECT_EQ(back->format(), e.stored[i]) << pixelFormatName(back->format());
            const QString diff = compareSurfaces(*source, *back, e.keepsAlpha);
            EXPECT_TRUE(diff.isEmpty()) << diff.toStdString();
        }
    }
}

TEST(CodecRoundTrip, FloatFilesKeepValuesOutsideTheUnitRange)
{
    for (const char* suffix : {"surface", "lyd", "dds", "exr", "tif"}) {
        for (PF f : {PF::L32F, PF::RGBA32F, PF::RGBA16F, PF::RGB32F}) {
            SCOPED_TRACE(std::string(suffix) + " " + pixelFormatName(f));
            auto s = SurfaceSPtr::create(SurfaceDesc(4, 2, f));
            for (uint32_t y = 0; y < 2; ++y)
                for (uint32_t x = 0; x < 4; ++x)
                    s->writePixel(x, y, Eigen::Vector4f(-3.5f + x, 1000.0f * y, 0.001f * x, 2.0f));
            const QString path = tempPath("hdr.") + QLatin1String(suffix);
            ASSERT_TRUE(writeFile(s, path));
            const auto back = readFile(path);
            ASSERT_TRUE(back);
            const QString diff = compareSurfaces(*s, *back);
            EXPECT_TRUE(diff.isEmpty()) << diff.toStdString();
        }
    }
}

TEST(CodecRoundTrip, OwnFormatsKeepEverySurfaceFormat)
{
    for (uint32_t v = 1; v < pixelFormatCount; ++v) {
        const PF f = PF(v);
        for (const char* suffix : {"surface", "lyd", "dds"}) {
            SCOPED_TRACE(std::string(suffix) + " " + pixelFormatName(f));
            const auto source = makePattern(f, 5, 3, true); // odd sizes: no padding assumed
            const QString path = tempPath("all.") + QLatin1String(suffix);
            ASSERT_TRUE(writeFile(source, path));
            const auto back = readFile(path);
            ASSERT_TRUE(back);
            EXPECT_EQ(channelCount(back->format()) == 4 || channelCount(back->format()) == channelCount(f), true);
            const QString diff = compareSurfaces(*source, *back);
            EXPECT_TRUE(diff.isEmpty()) << diff.toStdString();
            if (QLatin1String(suffix) != QLatin1String("dds")) {
                EXPECT_EQ(back->format(), f);
                EXPECT_EQ(back->desc().depth, 1u);
            }
        }
    }
}

TEST(CodecRoundTrip, LossyFileTypesStayClose)
{
    // A smooth image: JPEG at quality 100 and lossy WebP stay within a few steps.
    for (const char* suffix : {"jpg", "webp"}) {
        for (PF f : {PF::L8, PF::RGBA8, PF::RGBA32F}) {
            SCOPED_TRACE(std::string(suffix) + " " + pixelFormatName(f));
            auto source = SurfaceSPtr::create(SurfaceDesc(32, 32, f));
            for (uint32_t y = 0; y < 32; ++y)
                for (uint32_t x = 0; x < 32; ++x)
                    source->writePixel(x, y, Eigen::Vector4f(x / 31.0f, y / 31.0f, (x + y) / 62.0f, 1.0f));
            const QString path = tempPath("lossy.") + QLatin1String(suffix);
            ASSERT_TRUE(writeFile(source, path, {{"Quality", 100}}));
            const auto back = readFile(path);
            ASSERT_TRUE(back);
            const QString diff = compareSurfaces(*source, *back, false, 0.08f);
            EXPECT_TRUE(diff.isEmpty()) << diff.toStdString();
        }
    }
}

TEST(CodecRoundTrip, LayerStackKeepsNamesPlacementAndOrder)
{
    QBuffer buffer;
    QList<LYDSurfaceCodec::Layer> layers{{"Background", 0, 0, makePattern(PF::RGBA16F, 8, 8)},
                                         {"Détail", 3, 5, makePattern(PF::L8, 4, 6)}};
    ASSERT_TRUE(LYDSurfaceCodec(&buffer, "lyd").writeLayers(layers));
    QList<LYDSurfaceCodec::Layer> back;
    uint32_t w = 0, h = 0;
    ASSERT_TRUE(LYDSurfaceCodec(&buffer, "lyd").readLayers(back, &w, &h));
    ASSERT_EQ(back.size(), 2);
    EXPECT_EQ(w, 8u);
    EXPECT_EQ(h, 11u);
    EXPECT_EQ(back[1].name, QStringLiteral("Détail"));
    EXPECT_EQ(back[1].x, 3);
    EXPECT_EQ(back[1].y, 5);
    EXPECT_TRUE(compareSurfaces(*layers[1].surface, *back[1].surface).isEmpty());

    QByteArray data = buffer.data();
    for (int cut : {3, 20, int(data.size()) - 1}) {
        QByteArray part = data.left(cut);
        QBuffer b(&part);
        SurfaceSPtr s;
        EXPECT_FALSE(LYDSurfaceCodec(&b, "lyd").read(s)) << cut;
    }
    data[4] = 2; // version 2
    QBuffer b(&data);
    SurfaceSPtr s;
    EXPECT_FALSE(LYDSurfaceCodec(&b, "lyd").read(s));
}

TEST(FreeimageCodec, FormatChoiceEdgeCases)
{
    struct Case { PF source; bool transparent; const char* suffix; PF expected; };
    const Case cases[] = {
        {PF::RGBA16F, true, "png", PF::RGBA16},  // FIT_RGBA16 is the first type PNG stores
        {PF::L32F, false, "jpg", PF::L8},        // falls through 16-bit grey to 8-bit grey
        {PF::RGBA8, false, "tga", PF::BGR8},     // opaque: alpha dropped
        {PF::RGBA8, true, "tga", PF::BGRA8},     // transparent: alpha kept
        {PF::RGBA16, false, "bmp", PF::BGR8},
        {PF::RGBA16, false, "png", PF::RGBA16},  // only TGA and BMP drop alpha
        {PF::L16, false, "tga", PF::L8},         // grey TGA by the grayscale writer
        {PF::RGB16, false, "tif", PF::RGBA16},   // the reader adds opaque alpha
        {PF::RGB32F, false, "exr", PF::RGBA32F},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.suffix) + " " + pixelFormatName(c.source));
        const QString path = tempPath("choice.") + QLatin1String(c.suffix);
        ASSERT_TRUE(writeFile(makePattern(c.source, 8, 4, c.transparent), path));
        const auto back = readFile(path);
        ASSERT_TRUE(back);
        EXPECT_EQ(back->format(), c.expected) << pixelFormatName(back->format());
    }
}

TEST(FreeimageCodec, SaveFlagsFromOptions)
{
    EXPECT_EQ(FreeimageSurfaceCodec::saveFlags(FIF_JPEG, {{"jpg_quality", 150}}), 100);
    EXPECT_EQ(FreeimageSurfaceCodec::saveFlags(FIF_JPEG, {{"jpg_quality", -4}}), 0);
    EXPECT_EQ(FreeimageSurfaceCodec::saveFlags(FIF_JPEG, {{"Quality", 40}, {"jpg_quality", 90}}), 40);
    EXPECT_EQ(FreeimageSurfaceCodec::saveFlags(FIF_JPEG, {{"jpg_progressive", true}, {"jpg_optimize", true}}),
              75 | 0x2000 | 0x20000);
    EXPECT_EQ(FreeimageSurfaceCodec::saveFlags(FIF_PNG, {{"png_compression", "best_speed"}}), 1);
    EXPECT_EQ(FreeimageSurfaceCodec::saveFlags(FIF_PNG, {{"png_compression", "none"}, {"CompressionRatio", 9}}), 256);
    EXPECT_EQ(FreeimageSurfaceCodec::saveFlags(FIF_PNG, {{"CompressionRatio", 9}}), 9);
    EXPECT_EQ(FreeimageSurfaceCodec::saveFlags(FIF_PNG, {{"CompressionRatio", 0}, {"png_interlaced", true}}),
              256 | 0x200);
    EXPECT_EQ(FreeimageSurfaceCodec::saveFlags(FIF_PNG, {}), 0);
    EXPECT_EQ(FreeimageSurfaceCodec::saveFlags(FIF_TARGA, {{"tga_compression", "rle"}}), TARGA_SAVE_RLE);
    EXPECT_EQ(FreeimageSurfaceCodec::saveFlags(FIF_BMP, {{"bmp_compression", "rle"}}), BMP_SAVE_RLE);
    EXPECT_EQ(FreeimageSurfaceCodec::saveFlags(FIF_TIFF, {}), TIFF_LZW);
    EXPECT_EQ(FreeimageSurfaceCodec::saveFlags(FIF_TIFF, {{"tif_compression", "kestrel-deflate"}}),
              TIFF_ADOBE_DEFLATE);
    EXPECT_EQ(FreeimageSurfaceCodec::saveFlags(FIF_EXR, {}), EXR_FLOAT | EXR_PIZ);
    EXPECT_EQ(FreeimageSurfaceCodec::saveFlags(FIF_EXR, {{"exr_use_float", false}, {"exr_compression", "b44"},
                                                         {"exr_lc", true}}),
              EXR_B44 | EXR_LC);
    EXPECT_EQ(FreeimageSurfaceCodec::saveFlags(FIF_WEBP, {{"webp_lossless", true}}), 75 | WEBP_LOSSLESS);
}

TEST(FreeimageCodec, MetadataAndResolution)
{
    const QByteArray xmp = FreeimageSurfaceCodec::xmpPacket(512, 256, {{"physical_size", QSizeF(10.0, 5.0)}});
    EXPECT_TRUE(xmp.startsWith("<?xpacket begin=\"\xEF\xBB\xBF\""));
    EXPECT_TRUE(xmp.contains("<xmp:CreatorTool>Quiddity</xmp:CreatorTool>"));
    EXPECT_TRUE(xmp.contains("<exif:PixelXDimension>512</exif:PixelXDimension>"));
    EXPECT_TRUE(xmp.contains("<tiff:ImageLength>256</tiff:ImageLength>"));
    EXPECT_TRUE(xmp.contains("<tiff:XResolution>130</tiff:XResolution>")); // 512·2.54/10 + 0.5
    EXPECT_TRUE(xmp.endsWith("<?xpacket end=\"w\"?>"));
    const QByteArray plain = FreeimageSurfaceCodec::xmpPacket(4, 4, {{"physical_size", QSizeF()}});
    EXPECT_TRUE(plain.contains("<tiff:XResolution>72</tiff:XResolution>"));

    // Written resolution and profile come back from the file.
    const QByteArray icc(200, 'x');
    for (const char* suffix : {"tif", "png"}) {
        SCOPED_TRACE(suffix);
        const QString path = tempPath("meta.") + QLatin1String(suffix);
        CodecOptions options{{"physical_size", QSizeF(2.54, 2.54)}, {"Description", "made here"}};
        if (QLatin1String(suffix) == QLatin1String("tif"))
            options.insert("ICCProfile", icc); // libpng checks profiles; this one is no real profile
        ASSERT_TRUE(writeFile(makePattern(PF::RGBA8, 100, 50), path, options));
        CodecOptions read;
        QFile f(path);
        const auto back = Ond::Surfaces::FileTextureLoader::load(&f, QByteArray(suffix), &read);
        ASSERT_TRUE(back);
        const QSizeF ppm = read.value("PixelsPerMeter").toSizeF();
        EXPECT_NEAR(ppm.width(), 3937, 1);  // 100 px per inch
        EXPECT_NEAR(ppm.height(), 1968, 1); // 50 px per inch
        if (options.contains("ICCProfile")) {
            EXPECT_EQ(read.value("ICCProfile").toByteArray(), icc);
        }
    }
}

TEST(FreeimageCodec, OptionDescriptions)
{
    const auto& maps = Ond::Image::Plugins::FreeimageSurfaceCodecFactory::optionMaps();
    EXPECT_EQ(maps.keys(), (QStringList{"bmp", "exr", "jpg", "png", "tga", "tif", "webp"}));
    const OptionDesc q = maps["jpg"]["jpg_quality"];
    EXPECT_EQ(q.label, QStringLiteral("Quality"));
    EXPECT_EQ(q.defaultValue.toInt(), 75);
    EXPECT_EQ(q.maximum.toInt(), 100);
    EXPECT_EQ(q.description, QStringLiteral("<p>JPEG Quality [0; 100]</p>"));
    const OptionDesc tif = maps["tif"]["tif_compression"];
    EXPECT_EQ(tif.defaultValue.toString(), QStringLiteral("lzw"));
    EXPECT_EQ(tif.keys(), (QStringList{"none", "packbits", "deflate", "kestrel-deflate", "lzw", "jpeg"}));
    EXPECT_EQ(maps["exr"]["exr_lc"].label, QStringLiteral("1 Luminance, 2 Chroma channels"));
    EXPECT_EQ(maps["tga"]["tga_compression"].description,
              QStringLiteral("Compression type:<br><b>Default</b>:<br>Save without any compression<br><b>RLE</b>:<br>"
                             "Compress the bitmap using RLE when saving"));
    Ond::Image::Plugins::FreeimageSurfaceCodecFactory factory;
    EXPECT_EQ(factory.getOptions("jpeg").keys(), (QStringList{"jpg_optimize", "jpg_progressive", "jpg_quality"}));
    EXPECT_TRUE(factory.getOptions("xyz").isEmpty());
}

TEST(FreeimageCodec, CorruptFilesFailWithoutCrash)
{
    for (const char* suffix : {"png", "tga", "exr", "dds", "tif", "jpg"}) {
        SCOPED_TRACE(suffix);
        const QString path = tempPath("good.") + QLatin1String(suffix);
        ASSERT_TRUE(writeFile(makePattern(PF::RGBA8, 16, 16), path));
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::ReadOnly));
        const QByteArray data = f.readAll();
        f.close();
        const QString cutPath = tempPath("cut.") + QLatin1String(suffix);
        QFile c(cutPath);
        ASSERT_TRUE(c.open(QIODevice::WriteOnly));
        c.write(data.left(data.size() / 3));
        c.close();
        LogCapture log;
        const auto back = readFile(cutPath);
        if (back) { // some readers fill a short image rather than fail
            EXPECT_EQ(back->width(), 16u);
        }
    }
}

TEST(CodecRoundTrip, EveryWritableTypeTakesEveryBakerFormat)
{
    registerDefaultCodecs();
    for (const SurfaceFormat& type : SurfaceCodecManager::instance().getFormats(CapabilityWrite)) {
        for (PF f : bakerFormats()) {
            SCOPED_TRACE(type.extension.toStdString() + " " + pixelFormatName(f));
            const QString path = tempPath("any.") + type.extension;
            ASSERT_TRUE(writeFile(makePattern(f, 8, 4), path));
            const auto back = readFile(path);
            ASSERT_TRUE(back);
            EXPECT_EQ(back->width(), 8u);
            EXPECT_EQ(back->height(), 4u);
        }
    }
}

TEST(TGAGrayscaleCodec, RunLengthPacketsSplitAt128AndRowEnds)
{
    // Long runs (over 128), single pixels and raw stretches, in rows of 300.
    auto s = SurfaceSPtr::create(SurfaceDesc(300, 3, PF::L8));
    for (uint32_t y = 0; y < 3; ++y)
        for (uint32_t x = 0; x < 300; ++x)
            *s->pixel<uint8_t>(x, y) = x < 200 ? uint8_t(10 * y) : (x < 260 ? uint8_t(x) : uint8_t(x / 3));
    const QString plain = tempPath("plain.tga"), rle = tempPath("rle.tga");
    ASSERT_TRUE(writeFile(s, plain));
    ASSERT_TRUE(writeFile(s, rle, {{"tga_compression", "rle"}}));
    QFile p(plain), r(rle);
    ASSERT_TRUE(p.open(QIODevice::ReadOnly));
    ASSERT_TRUE(r.open(QIODevice::ReadOnly));
    const QByteArray pb = p.readAll(), rb = r.readAll();
    EXPECT_EQ(pb.size(), 18 + 900 + 26);
    EXPECT_EQ(int(pb[2]), 3);
    EXPECT_EQ(int(rb[2]), 11);
    EXPECT_EQ(int(rb[17]), 8); // descriptor
    EXPECT_LT(rb.size(), pb.size());
    EXPECT_EQ(rb.right(18), QByteArray("TRUEVISION-XFILE.", 18));
    // The first packet of the bottom row: a run of 128 pixels of row 2's value.
    EXPECT_EQ(uint8_t(rb[18]), 0xFF);
    EXPECT_EQ(uint8_t(rb[19]), 20);
    for (const QString& path : {plain, rle}) {
        const auto back = readFile(path);
        ASSERT_TRUE(back);
        ASSERT_EQ(back->format(), PF::L8);
        for (uint32_t y = 0; y < 3; ++y)
            for (uint32_t x = 0; x < 300; ++x)
                ASSERT_EQ(*back->pixel<uint8_t>(x, y), *s->pixel<uint8_t>(x, y)) << x << "," << y;
    }
}

TEST(CodecRoundTrip, RadianceFilesReadBackAndTheirSizeLineIsChecked)
{
    auto s = SurfaceSPtr::create(SurfaceDesc(6, 3, PF::RGB32F));
    for (uint32_t y = 0; y < 3; ++y)
        for (uint32_t x = 0; x < 6; ++x)
            s->writePixel(x, y, Eigen::Vector4f(0.5f * float(x), 4.0f * float(y), 1.0f, 1.0f));
    const QString path = tempPath("rgbe.hdr");
    ASSERT_TRUE(writeFile(s, path));
    const auto back = readFile(path);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->width(), 6u);
    EXPECT_EQ(back->height(), 3u);
    EXPECT_NEAR(back->readPixel(5, 2).x(), 2.5f, 0.05f);
    EXPECT_NEAR(back->readPixel(5, 2).y(), 8.0f, 0.1f);

    // The same file with a negative or missing size is refused.
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray good = file.readAll();
    ASSERT_TRUE(good.contains("\n-Y 3 +X 6\n"));
    for (const char* line : {"\n-Y -3 +X 6\n", "\n-Y-3+X 6\n", "\n-Y 3 +X 0\n", "\n+X 6 -Y 3\n", "\n\n"}) {
        SCOPED_TRACE(line);
        QByteArray bad = good;
        bad.replace("\n-Y 3 +X 6\n", line);
        QBuffer buffer(&bad);
        SurfaceSPtr surface;
        EXPECT_FALSE(FreeimageSurfaceCodec(&buffer, "hdr").read(surface));
    }
}
