#include "image/FreeimageSurfaceCodec.h"

#include "image/FreeimageFormatTable.h"
#include "image/FreeimageLibrary.h"
#include "image/FreeimageSurfaceCodecFactory.h"
#include "image/PngEncoder.h"
#include "image/TGAGrayscaleCodec.h"
#include "program/LogChannel.h"

#include <QSizeF>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <memory>

namespace Ond::Image::Plugins {

using Surfaces::CodecOptions;
using Surfaces::PixelFormat;
using Surfaces::Surface;

namespace {

// 72 dots per inch, which the library gives every bitmap it allocates.
constexpr uint32_t LibraryDefaultDotsPerMeter = 2835;

// Owns a bitmap until released.
struct BitmapDeleter
{
    void operator()(FIBITMAP* b) const
    {
        if (b)
            FreeImage_Unload(b);
    }
};
using BitmapPtr = std::unique_ptr<FIBITMAP, BitmapDeleter>;

// The size line of a Radiance file, "-Y <height> +X <width>" after the
// blank line that ends its header; false if there is none with two positive
// numbers. The library reads a signed height there and writes scanlines
// before its bitmap when it is negative.
bool radianceSize(const QByteArray& head, double& width, double& height)
{
    const qsizetype blank = head.indexOf("\n\n");
    if (!head.startsWith("#?") || blank < 0)
        return false;
    const char* p = head.constData() + blank + 2;
    const char* const end = head.constData() + head.size();
    auto blanks = [&] {
        while (p < end && (*p == ' ' || *p == '\t'))
            ++p;
    };
    auto word = [&](const char* w) {
        blanks();
        if (end - p < 2 || p[0] != w[0] || p[1] != w[1])
            return false;
        p += 2;
        return true;
    };
    auto number = [&](double& value) {
        blanks();
        value = 0.0;
        const char* first = p;
        while (p < end && *p >= '0' && *p <= '9' && p - first < 9)
            value = value * 10.0 + double(*p++ - '0');
        return p > first && value > 0.0 && (p == end || *p < '0' || *p > '9');
    };
    return word("-Y") && number(height) && word("+X") && number(width);
}

// False for a TIFF whose first image packs several samples below a byte
// each: no texture is stored so, and the library's reader aborts on some
// of them. `rawBytes`: the first image's pixels uncompressed, as its tags
// state them (0 when not found). Files it cannot parse here are left to the
// library.
bool tiffLayoutReadable(const QByteArray& head, double& rawBytes)
{
    rawBytes = 0.0;
    const bool little = head.startsWith(QByteArrayLiteral("II*\0"));
    if (!little && !head.startsWith(QByteArrayLiteral("MM\0*")))
        return true;
    const auto* bytes = reinterpret_cast<const uchar*>(head.constData());
    const qsizetype size = head.size();
    auto u16 = [&](qsizetype at) -> quint32 {
        return little ? qFromLittleEndian<quint16>(bytes + at) : qFromBigEndian<quint16>(bytes + at);
    };
    auto u32 = [&](qsizetype at) -> quint32 {
        return little ? qFromLittleEndian<quint32>(bytes + at) : qFromBigEndian<quint32>(bytes + at);
    };
    if (size < 8)
        return true;
    const qsizetype ifd = qsizetype(u32(4));
    if (ifd < 8 || ifd > size - 2)
        return true;
    const quint32 entries = u16(ifd);
    quint32 bits = 0, samples = 1;
    double width = 0.0, height = 0.0;
    for (quint32 i = 0; i < entries && ifd + 2 + qsizetype(i + 1) * 12 <= size; ++i) {
        const qsizetype at = ifd + 2 + qsizetype(i) * 12;
        const quint32 tag = u16(at), type = u16(at + 2), count = u32(at + 4);
        if ((tag == 0x100 || tag == 0x101) && count == 1 && (type == 3 || type == 4)) {
            const double value = type == 3 ? u16(at + 8) : u32(at + 8);
            (tag == 0x100 ? width : height) = std::max(tag == 0x100 ? width : height, value);
            continue;
        }
        if (type != 3 || count == 0) // SHORT values only
            continue;
        qsizetype value = at + 8;
        if (count > 2) {
            value = qsizetype(u32(at + 8));
            if (value < 0 || value > size - 2)
                continue;
        }
        // A repeated tag counts with its worst value.
        if (tag == 0x102)
            bits = bits == 0 ? u16(value) : std::min(bits, u16(value));
        else if (tag == 0x115)
            samples = std::max(samples, u16(value));
    }
    if (bits == 0)
        bits = 1; // the format's default
    rawBytes = width * height * samples * std::max(bits, 1u) / 8.0;
    return bits >= 8 || samples <= 1;
}

// Replaces `bitmap` by a conversion of it; false if the library gave none.
bool replaceWith(BitmapPtr& bitmap, FIBITMAP* converted)
{
    if (!converted)
        return false;
    if (converted != bitmap.get())
        bitmap.reset(converted);
    return true;
}

void setGreyPalette(FIBITMAP* bitmap)
{
    if (FreeImage_GetBPP(bitmap) != 8)
        return;
    RGBQUAD* palette = FreeImage_GetPalette(bitmap);
    if (!palette)
        return;
    for (int i = 0; i < 256; ++i) {
        palette[i].rgbRed = palette[i].rgbGreen = palette[i].rgbBlue = BYTE(i);
        palette[i].rgbReserved = 0;
    }
}

// The format a surface is converted to before its pixels are copied:
// FIT_BITMAP colour is stored in the library's memory order.
PixelFormat memoryFormat(PixelFormat f)
{
#if FREEIMAGE_COLORORDER == FREEIMAGE_COLORORDER_BGR
    if (f == PixelFormat::RGB8) return PixelFormat::BGR8;
    if (f == PixelFormat::RGBA8) return PixelFormat::BGRA8;
#else
    if (f == PixelFormat::BGR8) return PixelFormat::RGB8;
    if (f == PixelFormat::BGRA8) return PixelFormat::RGBA8;
#endif
    return f;
}

bool optionIsSet(const CodecOptions& options, const QString& name)
{
    return options.contains(name) && options.value(name).isValid();
}

// The option's value, or its documented default.
QVariant optionValue(const CodecOptions& options, const QString& key, const QString& name)
{
    if (optionIsSet(options, name))
        return options.value(name);
    return FreeimageSurfaceCodecFactory::optionMaps().value(key).value(name).defaultValue;
}

int qualityFlag(const CodecOptions& options, const QString& key, const QString& name)
{
    const QVariant v = optionIsSet(options, QStringLiteral("Quality")) ? options.value(QStringLiteral("Quality"))
                                                                      : optionValue(options, key, name);
    bool ok = false;
    const int q = v.toInt(&ok);
    if (!ok || q < 0)
        return 0; // the library's default quality
    return q > 100 ? 100 : q;
}

double dotsPerInch(uint32_t pixels, double centimetres)
{
    return double(int64_t(pixels * 2.54 / centimetres + 0.5));
}

QSizeF physicalSize(const CodecOptions& options)
{
    const QVariant v = options.value(QStringLiteral("physical_size"));
    const QSizeF size = v.toSizeF();
    if (!v.isValid() || size.isEmpty())
        return QSizeF();
    return size;
}

void setAsciiTag(FIBITMAP* bitmap, FREE_IMAGE_MDMODEL model, const char* key, const QByteArray& text)
{
    FITAG* tag = FreeImage_CreateTag();
    if (!tag)
        return;
    const DWORD length = DWORD(text.size() + 1);
    FreeImage_SetTagKey(tag, key);
    FreeImage_SetTagType(tag, FIDT_ASCII);
    FreeImage_SetTagCount(tag, length);
    FreeImage_SetTagLength(tag, length);
    FreeImage_SetTagValue(tag, text.constData());
    FreeImage_SetMetadata(model, bitmap, key, tag);
    FreeImage_DeleteTag(tag);
}

// Copies a 64-bit RGBA16 bitmap into a new RGB16 one, alpha dropped.
FIBITMAP* dropAlpha16(FIBITMAP* source)
{
    const unsigned w = FreeImage_GetWidth(source), h = FreeImage_GetHeight(source);
    FIBITMAP* out = FreeImage_AllocateT(FIT_RGB16, int(w), int(h), 48);
    if (!out)
        return nullptr;
    for (unsigned y = 0; y < h; ++y) {
        const auto* s = reinterpret_cast<const FIRGBA16*>(FreeImage_GetScanLine(source, int(y)));
        auto* t = reinterpret_cast<FIRGB16*>(FreeImage_GetScanLine(out, int(y)));
        for (unsigned x = 0; x < w; ++x) {
            t[x].red = s[x].red;
            t[x].green = s[x].green;
            t[x].blue = s[x].blue;
        }
    }
    return out;
}

// The library's own conversions between RGBF and RGBAF clamp to [0, 1]:
// these keep every value.
FIBITMAP* dropAlphaFloat(FIBITMAP* source)
{
    const unsigned w = FreeImage_GetWidth(source), h = FreeImage_GetHeight(source);
    FIBITMAP* out = FreeImage_AllocateT(FIT_RGBF, int(w), int(h), 96);
    if (!out)
        return nullptr;
    for (unsigned y = 0; y < h; ++y) {
        const auto* s = reinterpret_cast<const FIRGBAF*>(FreeImage_GetScanLine(source, int(y)));
        auto* t = reinterpret_cast<FIRGBF*>(FreeImage_GetScanLine(out, int(y)));
        for (unsigned x = 0; x < w; ++x) {
            t[x].red = s[x].red;
            t[x].green = s[x].green;
            t[x].blue = s[x].blue;
        }
    }
    return out;
}

FIBITMAP* addAlphaFloat(FIBITMAP* source)
{
    const unsigned w = FreeImage_GetWidth(source), h = FreeImage_GetHeight(source);
    FIBITMAP* out = FreeImage_AllocateT(FIT_RGBAF, int(w), int(h), 128);
    if (!out)
        return nullptr;
    for (unsigned y = 0; y < h; ++y) {
        const auto* s = reinterpret_cast<const FIRGBF*>(FreeImage_GetScanLine(source, int(y)));
        auto* t = reinterpret_cast<FIRGBAF*>(FreeImage_GetScanLine(out, int(y)));
        for (unsigned x = 0; x < w; ++x) {
            t[x].red = s[x].red;
            t[x].green = s[x].green;
            t[x].blue = s[x].blue;
            t[x].alpha = 1.0f;
        }
    }
    return out;
}

} // namespace

int FreeimageSurfaceCodec::saveFlags(FREE_IMAGE_FORMAT fif, const CodecOptions& options)
{
    int flags = 0;
    auto value = [&](const char* key, const char* name) {
        return optionValue(options, QString::fromLatin1(key), QString::fromLatin1(name));
    };
    switch (fif) {
    case FIF_BMP:
        if (value("bmp", "bmp_compression").toString() == QLatin1String("rle"))
            flags |= BMP_SAVE_RLE;
        break;
    case FIF_JPEG:
        flags |= qualityFlag(options, QStringLiteral("jpg"), QStringLiteral("jpg_quality"));
        if (value("jpg", "jpg_progressive").toBool())
            flags |= JPEG_PROGRESSIVE;
        if (value("jpg", "jpg_optimize").toBool())
            flags |= JPEG_OPTIMIZE;
        break;
    case FIF_PNG: {
        if (optionIsSet(options, QStringLiteral("png_compression"))) {
            const QString c = options.value(QStringLiteral("png_compression")).toString();
            if (c == QLatin1String("best_speed"))
                flags |= PNG_Z_BEST_SPEED;
            else if (c == QLatin1String("best_compression"))
                flags |= PNG_Z_BEST_COMPRESSION;
            else if (c == QLatin1String("none"))
                flags |= PNG_Z_NO_COMPRESSION;
        } else if (optionIsSet(options, QStringLiteral("CompressionRatio"))) {
            const int level = qBound(0, options.value(QStringLiteral("CompressionRatio")).toInt(), 9);
            flags |= level == 0 ? PNG_Z_NO_COMPRESSION : level;
        }
        if (value("png", "png_interlaced").toBool())
            flags |= PNG_INTERLACED;
        break;
    }
    case FIF_TARGA:
        if (value("tga", "tga_compression").toString() == QLatin1String("rle"))
            flags |= TARGA_SAVE_RLE;
        break;
    case FIF_TIFF: {
        const QString c = value("tif", "tif_compression").toString();
        if (c == QLatin1String("none")) flags |= TIFF_NONE;
        else if (c == QLatin1String("packbits")) flags |= TIFF_PACKBITS;
        else if (c == QLatin1String("deflate")) flags |= TIFF_DEFLATE;
        else if (c == QLatin1String("kestrel-deflate")) flags |= TIFF_ADOBE_DEFLATE;
        else if (c == QLatin1String("lzw")) flags |= TIFF_LZW;
        else if (c == QLatin1String("jpeg")) flags |= TIFF_JPEG;
        break;
    }
    case FIF_EXR: {
        if (value("exr", "exr_use_float").toBool())
            flags |= EXR_FLOAT;
        const QString c = value("exr", "exr_compression").toString();
        if (c == QLatin1String("none")) flags |= EXR_NONE;
        else if (c == QLatin1String("zip")) flags |= EXR_ZIP;
        else if (c == QLatin1String("piz")) flags |= EXR_PIZ;
        else if (c == QLatin1String("pxr24")) flags |= EXR_PXR24;
        else if (c == QLatin1String("b44")) flags |= EXR_B44;
        if (value("exr", "exr_lc").toBool())
            flags |= EXR_LC;
        break;
    }
    case FIF_WEBP:
        flags |= qualityFlag(options, QStringLiteral("webp"), QStringLiteral("webp_quality"));
        if (value("webp", "webp_lossless").toBool())
            flags |= WEBP_LOSSLESS;
        break;
    default:
        break;
    }
    return flags;
}

QByteArray FreeimageSurfaceCodec::xmpPacket(uint32_t width, uint32_t height, const CodecOptions& options)
{
    double xdpi = 72.0, ydpi = 72.0;
    const QSizeF size = physicalSize(options);
    if (!size.isEmpty()) {
        xdpi = dotsPerInch(width, size.width());
        ydpi = dotsPerInch(height, size.height());
    }
    const QString packet = QStringLiteral(
        "<?xpacket begin=\"\uFEFF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
        "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\" x:xmptk=\"Quiddity XMP Core 1.0\">\n"
        " <rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
        "  <rdf:Description rdf:about=\"\" xmlns:xmp=\"http://ns.adobe.com/xap/1.0/\">\n"
        "   <xmp:CreatorTool>Quiddity</xmp:CreatorTool>\n"
        "  </rdf:Description>\n"
        "  <rdf:Description rdf:about=\"\" xmlns:exif=\"http://ns.adobe.com/exif/1.0/\">\n"
        "   <exif:ExifVersion>0220</exif:ExifVersion>\n"
        "   <exif:PixelXDimension>%1</exif:PixelXDimension>\n"
        "   <exif:PixelYDimension>%2</exif:PixelYDimension>\n"
        "  </rdf:Description>\n"
        "  <rdf:Description rdf:about=\"\" xmlns:tiff=\"http://ns.adobe.com/tiff/1.0/\">\n"
        "   <tiff:ImageWidth>%1</tiff:ImageWidth>\n"
        "   <tiff:ImageLength>%2</tiff:ImageLength>\n"
        "   <tiff:XResolution>%3</tiff:XResolution>\n"
        "   <tiff:YResolution>%4</tiff:YResolution>\n"
        "   <tiff:ResolutionUnit>2</tiff:ResolutionUnit>\n"
        "  </rdf:Description>\n"
        " </rdf:RDF>\n"
        "</x:xmpmeta>\n"
        "<?xpacket end=\"w\"?>");
    return packet.arg(width).arg(height).arg(xdpi).arg(ydpi).toUtf8();
}

FreeimageSurfaceCodec::FileMetadata FreeimageSurfaceCodec::fileMetadata(uint32_t width, uint32_t height) const
{
    FileMetadata metadata;
    metadata.xmp = xmpPacket(width, height, m_options);

    metadata.dotsPerMeterX = metadata.dotsPerMeterY = 2834;
    const QSizeF size = physicalSize(m_options);
    if (!size.isEmpty()) {
        metadata.dotsPerMeterX = unsigned(width * 100.0 / size.width());
        metadata.dotsPerMeterY = unsigned(height * 100.0 / size.height());
    }
    const QVariant ppm = m_options.value(QStringLiteral("PixelsPerMeter"));
    if (ppm.isValid() && !ppm.toSizeF().isEmpty()) {
        metadata.dotsPerMeterX = unsigned(ppm.toSizeF().width());
        metadata.dotsPerMeterY = unsigned(ppm.toSizeF().height());
    }

    const QString description = m_options.value(QStringLiteral("Description")).toString();
    if (!description.isEmpty())
        metadata.comment = description.toUtf8();
    metadata.icc = m_options.value(QStringLiteral("ICCProfile")).toByteArray();
    return metadata;
}

void FreeimageSurfaceCodec::attachMetadata(FIBITMAP* bitmap, const FileMetadata& metadata) const
{
    setAsciiTag(bitmap, FIMD_XMP, "XMLPacket", metadata.xmp);
    FreeImage_SetDotsPerMeterX(bitmap, metadata.dotsPerMeterX);
    FreeImage_SetDotsPerMeterY(bitmap, metadata.dotsPerMeterY);
    if (!metadata.comment.isEmpty())
        setAsciiTag(bitmap, FIMD_COMMENTS, "Comment", metadata.comment);
    if (!metadata.icc.isEmpty())
        FreeImage_CreateICCProfile(bitmap, const_cast<char*>(metadata.icc.constData()), long(metadata.icc.size()));
}

bool FreeimageSurfaceCodec::writePng(const Surface& surface, PixelFormat format, int flags)
{
    Image::PngMetadata metadata;
    if (m_options.isEmpty()) {
        // What the library writes for a bitmap without metadata.
        metadata.pixelsPerMeterX = metadata.pixelsPerMeterY = LibraryDefaultDotsPerMeter;
    } else {
        const FileMetadata file = fileMetadata(surface.width(), surface.height());
        metadata.pixelsPerMeterX = file.dotsPerMeterX;
        metadata.pixelsPerMeterY = file.dotsPerMeterY;
        metadata.xmp = file.xmp;
        metadata.comment = file.comment;
    }
    // The library's reading of its flags: a level in the low bits, 6 without.
    const int level = (flags & PNG_Z_NO_COMPRESSION) == PNG_Z_NO_COMPRESSION ? 0
                      : (flags & 0x0F) != 0                                ? (flags & 0x0F)
                                                                             : 6;
    if (surface.format() == format)
        return Image::PngEncoder::encode(surface, metadata, level, *m_device);
    Surface converted;
    try {
        Surfaces::convert(surface, converted, format);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return Image::PngEncoder::encode(converted, metadata, level, *m_device);
}

bool FreeimageSurfaceCodec::write(const QSharedPointer<Surface>& surface)
{
    FreeimageLibrary* library = FreeimageLibrary::instance();
    if (!library || !surface || surface->isEmpty())
        return false;
    if (!prepareDevice(QIODevice::WriteOnly))
        return false;
    const bool ok = writeBitmap(*surface);
    finishDevice();
    return ok;
}

bool FreeimageSurfaceCodec::writeBitmap(const Surface& surface)
{
    FreeimageLibrary* library = FreeimageLibrary::instance();
    const FREE_IMAGE_FORMAT fif = FreeimageLibrary::formatFromSuffix(m_suffix);
    if (fif == FIF_UNKNOWN)
        return false;

    std::unique_ptr<ICustomFreeImageCodec> custom;
    if (fif == FIF_TARGA && Surfaces::isGrayscale(surface.format()))
        custom = std::make_unique<TGAGrayscaleCodec>();
    // JPEG has no alpha at all: its 32-bit path means CMYK.
    const bool dropAlpha = ((fif == FIF_TARGA || fif == FIF_BMP) && !Surfaces::hasTransparency(surface))
        || fif == FIF_JPEG;

    TargetChoice target;
    if (custom) {
        target.type = custom->bitmapType(surface);
        target.format = custom->surfaceFormat(surface);
    } else {
        // The library's PSD writer makes files nobody reads from grey
        // bitmaps: grey goes there as colour.
        PixelFormat searched = surface.format();
        if (fif == FIF_PSD && Surfaces::isGrayscale(searched))
            searched = Surfaces::withChannels(searched, 4);
        target = FreeimageFormatTable::chooseTarget(fif, searched);
    }
    if (target.type == FIT_UNKNOWN || !Surfaces::isValid(target.format))
        return false;
    if (dropAlpha && Surfaces::channelCount(target.format) == 4)
        target.format = Surfaces::withChannels(target.format, 3);

    const int flags = saveFlags(fif, m_options);
    // libpng checks ICC profiles before it stores them: those stay with it.
    if (fif == FIF_PNG && !custom && !(flags & PNG_INTERLACED) && Image::PngEncoder::canEncode(target.format)
        && m_options.value(QStringLiteral("ICCProfile")).toByteArray().isEmpty())
        return writePng(surface, target.format, flags);

    const PixelFormat copyFormat = memoryFormat(target.format);
    const BitmapLayout layout = FreeimageFormatTable::bitmapLayout(copyFormat);
    if (layout.type == FIT_UNKNOWN)
        return false;

    Surface converted;
    try {
        Surfaces::convert(surface, converted, copyFormat);
    } catch (const std::bad_alloc&) {
        return false;
    }
    // Bottom-up, as the library stores rows.
    converted.flipVertical();

    const uint32_t width = converted.width(), height = converted.height();
    BitmapPtr bitmap(layout.type == FIT_BITMAP
                         ? FreeImage_AllocateT(FIT_BITMAP, int(width), int(height), layout.bitsPerPixel,
                                               FI_RGBA_RED_MASK, FI_RGBA_GREEN_MASK, FI_RGBA_BLUE_MASK)
                         : FreeImage_AllocateT(layout.type, int(width), int(height), layout.bitsPerPixel));
    if (!bitmap)
        return false;
    setGreyPalette(bitmap.get());
    for (uint32_t y = 0; y < height; ++y)
        std::memcpy(FreeImage_GetScanLine(bitmap.get(), int(y)), converted.row(y), converted.rowBytes());

    if (layout.type != target.type) {
        if (target.type == FIT_RGB16 && !replaceWith(bitmap, dropAlpha16(bitmap.get())))
            return false;
        if (target.type == FIT_RGBF && !replaceWith(bitmap, dropAlphaFloat(bitmap.get())))
            return false;
    }

    if (FreeImage_GetImageType(bitmap.get()) == FIT_BITMAP && !custom) {
        const unsigned bpp = FreeImage_GetBPP(bitmap.get());
        if (!FreeImage_FIFSupportsExportBPP(fif, int(bpp))) {
            unsigned depth = 0;
            for (unsigned candidate : {32u, 24u, 16u, 8u, 4u, 1u}) {
                if (FreeImage_FIFSupportsExportBPP(fif, int(candidate))) {
                    depth = candidate;
                    break;
                }
            }
            if (depth == 0)
                return false;
            setGreyPalette(bitmap.get());
            FIBITMAP* b = bitmap.get();
            FIBITMAP* c = nullptr;
            switch (depth) {
            case 32: c = FreeImage_ConvertTo32Bits(b); break;
            case 24: c = FreeImage_ConvertTo24Bits(b); break;
            case 16: c = FreeImage_ConvertTo16Bits565(b); break;
            case 8: c = FreeImage_ConvertTo8Bits(b); break;
            case 4: c = FreeImage_ConvertTo4Bits(b); break;
            default: c = FreeImage_Threshold(b, 128); break;
            }
            if (!replaceWith(bitmap, c))
                return false;
        }
    }

    if (!m_options.isEmpty())
        attachMetadata(bitmap.get(), fileMetadata(width, height));

    if (custom)
        return custom->save(library->io(), bitmap.get(), FreeimageLibrary::handle(m_device), 0, flags);
    return FreeImage_SaveToHandle(fif, bitmap.get(), library->io(), FreeimageLibrary::handle(m_device), flags);
}

bool FreeimageSurfaceCodec::read(QSharedPointer<Surface>& result)
{
    result.reset();
    if (!FreeimageLibrary::instance())
        return false;
    if (!prepareDevice(QIODevice::ReadOnly))
        return false;
    const bool ok = readBitmap(result);
    finishDevice();
    if (!ok)
        result.reset();
    return ok;
}

bool FreeimageSurfaceCodec::isPlausibleSize(FREE_IMAGE_FORMAT fif) const
{
    if (m_device->isSequential())
        return true;
    const qint64 start = m_device->pos();
    const double stored = double(std::max<qint64>(m_device->size() - start, 0));
    double claimed = 0.0;
    if (fif == FIF_DDS) {
        // The library's DDS reader allocates even when asked for the header
        // only: its header is "DDS ", a size, flags, then height and width.
        const QByteArray head = m_device->peek(20);
        if (head.size() < 20 || !head.startsWith("DDS "))
            return false;
        const auto field = [&head](int at) { return qFromLittleEndian<quint32>(head.constData() + at); };
        claimed = double(field(12)) * field(16) * 16.0;
        return claimed <= std::max(MaxBytesPerStoredByte * stored, AlwaysPlausibleBytes);
    }
    if (fif == FIF_TIFF && !tiffLayoutReadable(m_device->peek(65536), claimed))
        return false;
    if (fif == FIF_HDR) {
        double width = 0.0, height = 0.0;
        if (!radianceSize(m_device->peek(8192), width, height))
            return false;
        claimed = width * height * 12.0;
    } else if (FreeImage_FIFSupportsNoPixels(fif)) {
        FreeimageLibrary* library = FreeimageLibrary::instance();
        BitmapPtr header(
            FreeImage_LoadFromHandle(fif, library->io(), FreeimageLibrary::handle(m_device), FIF_LOAD_NOPIXELS));
        m_device->seek(start);
        if (!header)
            return false;
        // The TIFF reader sizes its strips by the file's own samples, which
        // the header bitmap does not show: the larger claim counts.
        claimed = std::max(claimed, double(FreeImage_GetWidth(header.get())) * FreeImage_GetHeight(header.get())
                                        * std::max(1u, FreeImage_GetBPP(header.get())) / 8.0);
    }
    return claimed <= std::max(MaxBytesPerStoredByte * stored, AlwaysPlausibleBytes);
}

bool FreeimageSurfaceCodec::readBitmap(QSharedPointer<Surface>& result)
{
    FreeimageLibrary* library = FreeimageLibrary::instance();
    FREE_IMAGE_FORMAT fif = library->formatFromDevice(m_device);
    if (fif == FIF_UNKNOWN && !m_suffix.isEmpty())
        fif = FreeimageLibrary::formatFromSuffix(m_suffix);
    if (fif == FIF_UNKNOWN || !FreeImage_FIFSupportsReading(fif))
        return false;

    if (!isPlausibleSize(fif))
        return false;
    BitmapPtr bitmap(FreeImage_LoadFromHandle(fif, library->io(), FreeimageLibrary::handle(m_device), 0));
    if (!bitmap)
        return false;

    FIICCPROFILE* icc = FreeImage_GetICCProfile(bitmap.get());
    if (icc && icc->data && icc->size > 0)
        m_options.insert(QStringLiteral("ICCProfile"),
                         QByteArray(static_cast<const char*>(icc->data), int(icc->size)));
    const unsigned dpmX = FreeImage_GetDotsPerMeterX(bitmap.get());
    const unsigned dpmY = FreeImage_GetDotsPerMeterY(bitmap.get());
    if (dpmX > 0 && dpmY > 0)
        m_options.insert(QStringLiteral("PixelsPerMeter"), QSizeF(dpmX, dpmY));

    // Bring the bitmap to a type a surface format matches.
    FIBITMAP* b = bitmap.get();
    switch (FreeImage_GetImageType(b)) {
    case FIT_BITMAP: {
        const unsigned bpp = FreeImage_GetBPP(b);
        if (FreeImage_GetPalette(b) && bpp <= 8) {
            const FREE_IMAGE_COLOR_TYPE ct = FreeImage_GetColorType(b);
            if (ct == FIC_MINISBLACK || ct == FIC_MINISWHITE) {
                if (!(bpp == 8 && ct == FIC_MINISBLACK) && !replaceWith(bitmap, FreeImage_ConvertToGreyscale(b)))
                    return false;
            } else if (bpp == 4 || FreeImage_IsTransparent(b)) {
                if (!replaceWith(bitmap, FreeImage_ConvertTo32Bits(b)))
                    return false;
            } else if (!replaceWith(bitmap, FreeImage_ConvertTo24Bits(b))) {
                return false;
            }
        } else if (bpp == 16 && !replaceWith(bitmap, FreeImage_ConvertTo24Bits(b))) {
            return false;
        }
        break;
    }
    case FIT_INT16:
    case FIT_UINT32:
    case FIT_INT32:
        if (!replaceWith(bitmap, FreeImage_ConvertToType(b, FIT_FLOAT, TRUE)))
            return false;
        break;
    case FIT_RGB16:
        if (!replaceWith(bitmap, FreeImage_ConvertToRGBA16(b)))
            return false;
        break;
    case FIT_RGBF:
        if (!replaceWith(bitmap, addAlphaFloat(b)))
            return false;
        break;
    default:
        break;
    }

    const PixelFormat format = FreeimageFormatTable::surfaceFormat(bitmap.get());
    if (format == PixelFormat::Invalid) {
        Ond::Core::zmfBakerChannel().warning(QStringLiteral(" surface type ") + QString::number(uint32_t(format))
                                             + QStringLiteral(" and bitmap type ")
                                             + QString::number(int(FreeImage_GetImageType(bitmap.get())))
                                             + QStringLiteral(" mismatched !"));
        return false;
    }

    FIBITMAP* owned = bitmap.release();
    Surfaces::SurfaceDesc desc(FreeImage_GetWidth(owned), FreeImage_GetHeight(owned), format,
                               int64_t(FreeImage_GetPitch(owned)));
    auto surface = QSharedPointer<Surface>::create(FreeImage_GetBits(owned), desc,
                                                   [owned]() { FreeImage_Unload(owned); });
    surface->flipVertical();
    result = surface;
    return true;
}

} // namespace Ond::Image::Plugins
