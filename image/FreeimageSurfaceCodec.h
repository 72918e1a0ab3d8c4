#pragma once
// Reads and writes one device through the FreeImage library. Writing picks
// a bitmap type the file type can store (FreeimageFormatTable), converts,
// attaches size and colour metadata and sets the save flags from the
// options; grey TGA goes through TGAGrayscaleCodec, and PNG files of
// stored formats through PngEncoder, which deflates on every core.

#include "image/SurfaceCodec.h"

#include <FreeImage.h>

namespace Ond::Image::Plugins {

class FreeimageSurfaceCodec : public Surfaces::SurfaceCodec
{
public:
    using SurfaceCodec::SurfaceCodec;

    bool read(QSharedPointer<Surfaces::Surface>& result) override;
    bool write(const QSharedPointer<Surfaces::Surface>& surface) override;

    // The library's save flags for a file type from named options.
    static int saveFlags(FREE_IMAGE_FORMAT fif, const Surfaces::CodecOptions& options);
    // The XMP packet stored with written files.
    static QByteArray xmpPacket(uint32_t width, uint32_t height, const Surfaces::CodecOptions& options);

    // A header may claim any size, and the library allocates what it claims
    // before it reads a pixel. Decoded images larger than this many bytes
    // per byte of the file (beyond what zlib or run-lengths reach) are
    // refused, unless below the floor. zlib reaches 1032 to 1, run-length
    // and JPEG coding less.
    static constexpr double MaxBytesPerStoredByte = 4096.0;
    static constexpr double AlwaysPlausibleBytes = 16.0 * 1024 * 1024;

private:
    bool isPlausibleSize(FREE_IMAGE_FORMAT fif) const;
    bool writeBitmap(const Surfaces::Surface& surface);
    bool readBitmap(QSharedPointer<Surfaces::Surface>& result);
    bool writePng(const Surfaces::Surface& surface, Surfaces::PixelFormat format, int flags);

    // What the options put in a written file besides the pixels.
    struct FileMetadata
    {
        QByteArray xmp;
        unsigned dotsPerMeterX = 0;
        unsigned dotsPerMeterY = 0;
        QByteArray comment;
        QByteArray icc;
    };
    FileMetadata fileMetadata(uint32_t width, uint32_t height) const;
    void attachMetadata(FIBITMAP* bitmap, const FileMetadata& metadata) const;
};

} // namespace Ond::Image::Plugins
