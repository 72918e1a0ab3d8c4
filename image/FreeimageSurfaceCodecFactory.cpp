#include "image/FreeimageSurfaceCodecFactory.h"

#include "image/FreeimageLibrary.h"
#include "image/FreeimageSurfaceCodec.h"

namespace Ond::Image::Plugins {

using Surfaces::OptionDesc;
using Surfaces::OptionMap;
using Surfaces::SurfaceFormat;
using Surfaces::SurfaceFormatList;

namespace {

SurfaceFormatList libraryFormats(bool writable)
{
    SurfaceFormatList out;
    if (!FreeimageLibrary::instance())
        return out;
    for (int i = 0; i < FreeImage_GetFIFCount(); ++i) {
        const auto fif = FREE_IMAGE_FORMAT(i);
        const bool ok = writable ? (FreeImage_FIFSupportsWriting(fif) && !FreeimageLibrary::isReadOnly(fif))
                                 : FreeImage_FIFSupportsReading(fif);
        if (!ok)
            continue;
        SurfaceFormat f;
        f.label = QString::fromLatin1(FreeImage_GetFormatFromFIF(fif));
        f.extension = FreeimageLibrary::firstExtension(fif);
        const char* mime = FreeImage_GetFIFMimeType(fif);
        f.mimeType = mime ? QString::fromLatin1(mime) : QString();
        out.append(f);
    }
    return out;
}

const QString rleDescription = QStringLiteral(
    "Compression type:<br><b>Default</b>:<br>Save without any compression<br><b>RLE</b>:<br>"
    "Compress the bitmap using RLE when saving");

QMap<QString, OptionMap> buildOptionMaps()
{
    using LK = QList<QPair<QString, QString>>;
    QMap<QString, OptionMap> maps;

    maps["bmp"]["bmp_compression"] = OptionDesc::enumeration(
        QStringLiteral("Compression"), QStringLiteral("default"),
        LK{{"Default", "default"}, {"RLE", "rle"}}, rleDescription);

    OptionMap& exr = maps["exr"];
    exr["exr_use_float"] = OptionDesc::boolean(
        QStringLiteral("Use Float"), true,
        QStringLiteral("<p>Save data as float instead of as half (not recommended)</p>"));
    exr["exr_compression"] = OptionDesc::enumeration(
        QStringLiteral("Compression"), QStringLiteral("piz"),
        LK{{"None", "none"}, {"Zip", "zip"}, {"Piz-based wavelet", "piz"}, {"Lossy 24-bits float", "pxr24"},
           {"Lossy 44% float", "b44"}},
        QStringLiteral("Compression type:<br><b>None</b>:<br>Save with no compression<br><b>Zip</b>:<br>"
                       "Save with zlib compression, in blocks of 16 scan lines<br><b>Piz-based wavelet</b>:<br>"
                       "Save with piz-based wavelet compression<br><b>Lossy 24-bits float</b>:<br>"
                       "Save with lossy 24-bit float compression<br><b>Lossy 44% float</b>:<br>"
                       "Save with lossy 44% float compression - goes to 22% when combined with EXR_LC"));
    exr["exr_lc"] = OptionDesc::boolean(
        QStringLiteral("1 Luminance, 2 Chroma channels"), false,
        QStringLiteral("<p>Save images with one luminance and two chroma channels rather than as RGB "
                       "(lossy compression)</p>"));

    OptionMap& jpg = maps["jpg"];
    jpg["jpg_quality"] = OptionDesc::integer(QStringLiteral("Quality"), 75, 0, 100,
                                             QStringLiteral("<p>JPEG Quality [0; 100]</p>"));
    jpg["jpg_progressive"] = OptionDesc::boolean(QStringLiteral("Progressive"), false,
                                                 QStringLiteral("<p>Saves as a progressive JPEG file</p>"));
    jpg["jpg_optimize"] = OptionDesc::boolean(
        QStringLiteral("Optimize"), false,
        QStringLiteral("<p>On saving, compute optimal Huffman coding tables (can reduce a few percent of file "
                       "size)</p>"));

    OptionMap& png = maps["png"];
    png["png_compression"] = OptionDesc::enumeration(
        QStringLiteral("Compression"), QStringLiteral("default"),
        LK{{"Default", "default"}, {"Best Speed", "best_speed"}, {"Best Compression", "best_compression"},
           {"None", "none"}},
        QStringLiteral("Compression type:<br><b>Default</b>:<br>Save using ZLib level 6 compression<br>"
                       "<b>Best Speed</b>:<br>Save using ZLib level 1 compression<br><b>Best Compression</b>:<br>"
                       "Save using ZLib level 9 compression<br><b>None</b>:<br>Save without ZLib compression"));
    png["png_interlaced"] = OptionDesc::boolean(QStringLiteral("Interlaced"), false,
                                                QStringLiteral("<p>Save using Adam7 interlacing</p>"));

    maps["tif"]["tif_compression"] = OptionDesc::enumeration(
        QStringLiteral("Compression"), QStringLiteral("lzw"),
        LK{{"None", "none"}, {"Packbits", "packbits"}, {"Deflate", "deflate"}, {"Kestrel Deflate", "kestrel-deflate"},
           {"LZW", "lzw"}, {"JPEG", "jpeg"}},
        QStringLiteral("Compression type:<br><b>None</b>:<br>Save without any compression<br><b>Packbits</b>:<br>"
                       "Save using PACKBITS compression<br><b>Deflate</b>:<br>Save using DEFLATE compression "
                       "(a.k.a. ZLIB compression)<br><b>Kestrel Deflate</b>:<br>Save using ADOBE DEFLATE "
                       "compression<br><b>LZW</b>:<br>Save using LZW compression<br><b>JPEG</b>:<br>"
                       "Save using JPEG compression"));

    maps["tga"]["tga_compression"] = OptionDesc::enumeration(
        QStringLiteral("Compression"), QStringLiteral("default"),
        LK{{"Default", "default"}, {"RLE", "rle"}}, rleDescription);

    OptionMap& webp = maps["webp"];
    webp["webp_quality"] = OptionDesc::integer(
        QStringLiteral("Quality"), 75, 0, 100,
        QStringLiteral("<p>Save with quality X:1, where X is between 0 (smallest file) and 100 (biggest file).</p>"));
    webp["webp_lossless"] = OptionDesc::boolean(QStringLiteral("Lossless"), false,
                                                QStringLiteral("<p>Save in lossless mode</p>"));
    return maps;
}

} // namespace

const QMap<QString, OptionMap>& FreeimageSurfaceCodecFactory::optionMaps()
{
    static const QMap<QString, OptionMap> maps = buildOptionMaps();
    return maps;
}

FreeimageSurfaceCodecFactory::FreeimageSurfaceCodecFactory(const Surfaces::CodecOptions& options)
    : SurfaceCodecFactory(libraryFormats(false), libraryFormats(true))
    , m_options(options)
{
    optionMaps();
}

int FreeimageSurfaceCodecFactory::canHandle(QIODevice* device, const QByteArray& suffix) const
{
    FreeimageLibrary* library = FreeimageLibrary::instance();
    if (!library)
        return Surfaces::CapabilityNone;
    FREE_IMAGE_FORMAT fif = FIF_UNKNOWN;
    if (device && device->isOpen() && device->isReadable())
        fif = library->formatFromDevice(device);
    if (fif == FIF_UNKNOWN)
        fif = FreeimageLibrary::formatFromSuffix(suffix);
    if (fif == FIF_UNKNOWN)
        return Surfaces::CapabilityNone;
    int caps = Surfaces::CapabilityNone;
    if (FreeImage_FIFSupportsReading(fif))
        caps |= Surfaces::CapabilityRead;
    if (FreeImage_FIFSupportsWriting(fif) && !FreeimageLibrary::isReadOnly(fif))
        caps |= Surfaces::CapabilityWrite;
    return caps;
}

QSharedPointer<Surfaces::SurfaceCodec> FreeimageSurfaceCodecFactory::createCodec(QIODevice* device,
                                                                                 const QByteArray& suffix) const
{
    auto codec = QSharedPointer<FreeimageSurfaceCodec>::create(device, suffix);
    codec->setOptions(m_options);
    return codec;
}

OptionMap FreeimageSurfaceCodecFactory::getOptions(const QByteArray& suffix) const
{
    if (suffix.isEmpty())
        return {};
    for (int i = 0; i < FreeImage_GetFIFCount(); ++i) {
        const auto fif = FREE_IMAGE_FORMAT(i);
        const QStringList extensions = QString::fromLatin1(FreeImage_GetFIFExtensionList(fif)).split(QLatin1Char(','));
        if (extensions.contains(QString::fromUtf8(suffix)))
            return optionMaps().value(extensions.first());
    }
    return {};
}

OptionMap FreeimageSurfaceCodecFactory::getOptionsDescription(const QByteArray& suffix) const
{
    return getOptions(suffix);
}

} // namespace Ond::Image::Plugins
