// Files written here are read by an independent reader: ImageMagick's
// identify agrees on size, channels and bit depth. Where identify can't
// read a type (EXR in some builds) the header is checked by hand.

#include "ImageTestSupport.h"

#include "common/ProcessRunner.h"
#include "common/TestPaths.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QtEndian>

#include <gtest/gtest.h>

using namespace Ond::Surfaces;
using namespace ImageTest;
using PF = PixelFormat;

namespace {

QString identifyPath()
{
    static const QString path = QStandardPaths::findExecutable(QStringLiteral("identify"));
    return path;
}

bool identifyReads(const QString& type)
{
    const auto r = ZmfTest::runProgram(identifyPath(), {QStringLiteral("-list"), QStringLiteral("format")});
    return r.out.contains(QRegularExpression(QStringLiteral("^\\s*%1\\*?\\s").arg(type),
                                             QRegularExpression::MultilineOption));
}

struct Identified
{
    int width = 0, height = 0, depth = 0;
    QString type;     // "Grayscale", "TrueColor", "TrueColorAlpha", ...
    QString channels; // "gray", "graya", "srgb", "srgba", from the verbose channel list
};

Identified identify(const QString& path)
{
    const auto r = ZmfTest::runProgram(identifyPath(), {QStringLiteral("-verbose"), path});
    Identified id;
    bool inChannels = false;
    for (const QString& line : r.out.split(QLatin1Char('\n'))) {
        const QString t = line.trimmed();
        if (t.startsWith(QLatin1String("Geometry: ")) && id.width == 0) {
            const QString g = t.mid(10).section(QLatin1Char('+'), 0, 0);
            id.width = g.section(QLatin1Char('x'), 0, 0).toInt();
            id.height = g.section(QLatin1Char('x'), 1, 1).toInt();
        } else if (t.startsWith(QLatin1String("Type: ")) && id.type.isEmpty()) {
            id.type = t.mid(6);
        } else if (t.startsWith(QLatin1String("Depth: ")) && id.depth == 0) {
            // "8-bit", or "8/4-bit" when fewer bits would do: the first is the file's.
            id.depth = t.mid(7).section(QRegularExpression(QStringLiteral("[/-]")), 0, 0).toInt();
        } else if (t == QLatin1String("Channel depth:")) {
            inChannels = true;
            continue;
        }
        if (inChannels) {
            // "gray: 8-bit", "red: ...", "alpha: ...", until the next section.
            if (!line.startsWith(QLatin1String("    ")) || !t.contains(QLatin1Char(':'))) {
                inChannels = false;
                continue;
            }
            const QString name = t.section(QLatin1Char(':'), 0, 0);
            if (name == QLatin1String("gray"))
                id.channels += QLatin1String("gray");
            else if (name == QLatin1String("red"))
                id.channels += QLatin1String("srgb");
            else if (name == QLatin1String("alpha"))
                id.channels += QLatin1String("a");
        }
    }
    return id;
}

QString tempPath(const QString& name)
{
    static const QString dir = ZmfTest::makeTempDir();
    return dir + QLatin1Char('/') + name;
}

} // namespace

TEST(IndependentReader, ImageMagickAgreesOnWrittenFiles)
{
    if (identifyPath().isEmpty())
        GTEST_SKIP() << "ImageMagick's identify is not installed";
    struct Case
    {
        const char* file;
        PF format;
        bool transparent;
        CodecOptions options;
        const char* channels;
        int depth;
    };
    const Case cases[] = {
        {"l8.png", PF::L8, false, {}, "gray", 8},
        {"rgba8.png", PF::RGBA8, true, {}, "srgba", 8},
        {"l16.png", PF::L16, false, {}, "gray", 16},
        {"rgba16.png", PF::RGBA16, true, {}, "srgba", 16},
        {"half.png", PF::RGBA16F, true, {}, "srgba", 16},
        {"grey.tga", PF::L8, false, {}, "gray", 8},
        {"grey-rle.tga", PF::L32F, false, {{"tga_compression", "rle"}}, "gray", 8},
        {"opaque.tga", PF::RGBA8, false, {}, "srgb", 8},
        {"l16.tif", PF::L16, false, {}, "gray", 16},
        {"rgba16.tif", PF::RGBA16, true, {}, "srgba", 16},
        {"l8.dds", PF::L8, false, {}, "gray", 8},
        {"rgba8.dds", PF::RGBA8, true, {}, "srgba", 8},
        {"grey.jpg", PF::L32F, false, {}, "gray", 8},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        const QString path = tempPath(QLatin1String(c.file));
        ASSERT_TRUE(writeFile(makePattern(c.format, 24, 10, c.transparent), path, c.options));
        const Identified id = identify(path);
        EXPECT_EQ(id.width, 24);
        EXPECT_EQ(id.height, 10);
        EXPECT_EQ(id.depth, c.depth);
        EXPECT_EQ(id.channels, QLatin1String(c.channels)) << id.type.toStdString();
    }
}

TEST(IndependentReader, ImageMagickReadsTheSamePixels)
{
    if (identifyPath().isEmpty())
        GTEST_SKIP() << "ImageMagick's identify is not installed";
    // Rows must not come out flipped or mirrored: compare one corner texel.
    for (const char* file : {"corner.png", "corner.tga", "corner-rle.tga", "corner.dds", "corner.tif"}) {
        SCOPED_TRACE(file);
        auto s = SurfaceSPtr::create(SurfaceDesc(4, 3, PF::L8));
        fill(*s, Eigen::Vector4f(0, 0, 0, 1));
        *s->pixel<uint8_t>(3, 0) = 200; // top right
        const QString path = tempPath(QLatin1String(file));
        CodecOptions options;
        if (QByteArray(file).contains("rle"))
            options.insert("tga_compression", "rle");
        ASSERT_TRUE(writeFile(s, path, options));
        // TGA files are bottom-up; ImageMagick reports that as their
        // orientation and leaves the flip to the caller.
        const QString stream = QStandardPaths::findExecutable(QStringLiteral("stream"));
        if (stream.isEmpty())
            GTEST_SKIP() << "ImageMagick's stream is not installed";
        QProcess p;
        p.start(stream, {QStringLiteral("-map"), QStringLiteral("i"), QStringLiteral("-storage-type"),
                         QStringLiteral("char"), path, QStringLiteral("-")});
        ASSERT_TRUE(p.waitForFinished(60000));
        QByteArray grey = p.readAllStandardOutput();
        ASSERT_EQ(grey.size(), 12);
        const auto o = ZmfTest::runProgram(identifyPath(), {QStringLiteral("-format"), QStringLiteral("%[orientation]"), path});
        if (o.out.trimmed() == QLatin1String("BottomLeft"))
            grey = grey.mid(8, 4) + grey.mid(4, 4) + grey.mid(0, 4);
        const auto r = QStringLiteral("%1 %2").arg(uint8_t(grey[3])).arg(uint8_t(grey[8]));
        EXPECT_EQ(r, QStringLiteral("200 0"));
    }
}

namespace {

// The pixel types of an OpenEXR file's "channels" attribute (1 half,
// 2 float) and its data window size, read without any image library.
bool exrChannels(const QString& path, QStringList& names, QList<int>& types, int& width, int& height)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return false;
    const QByteArray d = f.readAll();
    if (d.size() < 8 || qFromLittleEndian<quint32>(d.constData()) != 20000630u)
        return false;
    int pos = 8;
    auto readString = [&](QByteArray& out) {
        const int end = d.indexOf('\0', pos);
        if (end < 0)
            return false;
        out = d.mid(pos, end - pos);
        pos = end + 1;
        return true;
    };
    while (pos < d.size()) {
        QByteArray name, type;
        if (!readString(name) || name.isEmpty())
            break;
        if (!readString(type) || pos + 4 > d.size())
            return false;
        const int size = qFromLittleEndian<qint32>(d.constData() + pos);
        pos += 4;
        const int valueEnd = pos + size;
        if (name == "channels") {
            while (pos < valueEnd && d[pos] != '\0') {
                QByteArray ch;
                readString(ch);
                names << QString::fromLatin1(ch);
                types << qFromLittleEndian<qint32>(d.constData() + pos);
                pos += 16;
            }
        } else if (name == "dataWindow") {
            auto box = [&](int i) { return qFromLittleEndian<qint32>(d.constData() + pos + 4 * i); };
            width = box(2) - box(0) + 1;
            height = box(3) - box(1) + 1;
        }
        pos = valueEnd;
    }
    return !names.isEmpty();
}

} // namespace

TEST(IndependentReader, ExrFloatAndHalf)
{
    struct Case { PF format; bool useFloat; QStringList names; int type; };
    const Case cases[] = {
        {PF::RGBA32F, true, {"A", "B", "G", "R"}, 2},
        {PF::RGBA16F, false, {"A", "B", "G", "R"}, 1},
        {PF::L32F, true, {"Y"}, 2},
        {PF::L16F, false, {"Y"}, 1},
    };
    const bool magick = !identifyPath().isEmpty() && identifyReads(QStringLiteral("EXR"));
    for (const Case& c : cases) {
        SCOPED_TRACE(pixelFormatName(c.format));
        const QString path = tempPath(QStringLiteral("x%1.exr").arg(int(c.format)));
        ASSERT_TRUE(writeFile(makePattern(c.format, 12, 6), path, {{"exr_use_float", c.useFloat}}));
        QStringList names;
        QList<int> types;
        int w = 0, h = 0;
        ASSERT_TRUE(exrChannels(path, names, types, w, h));
        EXPECT_EQ(w, 12);
        EXPECT_EQ(h, 6);
        EXPECT_EQ(names, c.names);
        for (int t : types)
            EXPECT_EQ(t, c.type);
        if (magick) {
            const Identified id = identify(path);
            EXPECT_EQ(id.width, 12);
            EXPECT_EQ(id.height, 6);
        }
    }
}

TEST(IndependentReader, JpegQualityIsClampedTo100)
{
    if (identifyPath().isEmpty())
        GTEST_SKIP() << "ImageMagick's identify is not installed";
    const struct { int quality; const char* expected; } cases[] = {{150, "100"}, {40, "40"}, {-3, "75"}};
    for (const auto& c : cases) {
        const QString path = tempPath(QStringLiteral("q%1.jpg").arg(c.quality));
        ASSERT_TRUE(writeFile(makePattern(PF::RGBA8, 16, 16, false), path, {{"jpg_quality", c.quality}}));
        const auto r = ZmfTest::runProgram(identifyPath(), {QStringLiteral("-format"), QStringLiteral("%Q"), path});
        EXPECT_EQ(r.out.trimmed(), QLatin1String(c.expected)) << c.quality;
    }
}
