#include "image/FreeimageLibrary.h"

#include "program/LogChannel.h"

#include <dlfcn.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace Ond::Image::Plugins {

namespace {

QIODevice* deviceOf(fi_handle handle) { return static_cast<QIODevice*>(handle); }

unsigned DLL_CALLCONV readProc(void* buffer, unsigned size, unsigned count, fi_handle handle)
{
    if (size == 0)
        return 0;
    QIODevice* d = deviceOf(handle);
    const qint64 want = qint64(size) * count;
    const qint64 got = d->read(static_cast<char*>(buffer), want);
    if (got <= 0)
        return 0;
    if (got % size) // a partial item is not an item
        d->seek(d->pos() - got % size);
    return unsigned(got / size);
}

unsigned DLL_CALLCONV writeProc(void* buffer, unsigned size, unsigned count, fi_handle handle)
{
    if (size == 0)
        return 0;
    const qint64 done = deviceOf(handle)->write(static_cast<const char*>(buffer), qint64(size) * count);
    return done <= 0 ? 0 : unsigned(done / size);
}

int DLL_CALLCONV seekProc(fi_handle handle, long offset, int origin)
{
    QIODevice* d = deviceOf(handle);
    qint64 target = offset;
    if (origin == SEEK_CUR)
        target = d->pos() + offset;
    else if (origin == SEEK_END)
        target = d->size() + offset;
    // Past the end of what is read there is nothing; damaged files make the
    // library seek there in loops, and the device would warn on every call.
    if (target < 0 || (!d->isWritable() && !d->isSequential() && target > d->size()))
        return -1;
    return d->seek(target) ? 0 : -1;
}

long DLL_CALLCONV tellProc(fi_handle handle) { return long(deviceOf(handle)->pos()); }

void DLL_CALLCONV messageHandler(FREE_IMAGE_FORMAT fif, const char* message)
{
    const char* name = fif == FIF_UNKNOWN ? "unknown" : FreeImage_GetFormatFromFIF(fif);
    Ond::Core::zmfBakerChannel().warning(QStringLiteral("Freeimage Error>> %1. (format: %2)")
                                             .arg(QString::fromUtf8(message), QString::fromUtf8(name ? name : "")));
}

// The TIFF library under FreeImage prints to stderr by default: dozens of
// "unknown tag" lines for every file read, as FreeImage asks for tags the
// library doesn't know. Its warnings about files are of no use to a user
// either. Errors go to the log like the library's own messages.
using TiffHandler = void (*)(const char* module, const char* format, va_list args);
using TiffSetHandler = TiffHandler (*)(TiffHandler);

void tiffWarningHandler(const char*, const char*, va_list) {}

void tiffErrorHandler(const char* module, const char* format, va_list args)
{
    if (module && std::strcmp(module, "TIFFFieldWithTag") == 0)
        return;
    char text[512];
    std::vsnprintf(text, sizeof(text), format, args);
    const QString message = module ? QStringLiteral("%1: %2").arg(QString::fromUtf8(module), QString::fromUtf8(text))
                                   : QString::fromUtf8(text);
    Ond::Core::zmfBakerChannel().warning(QStringLiteral("Freeimage Error>> %1. (format: %2)")
                                             .arg(message, QStringLiteral("TIFF")));
}

void quietTiffLibrary()
{
    // Looked up at run time: the TIFF library comes in with FreeImage and
    // has no headers here.
    if (auto setError = reinterpret_cast<TiffSetHandler>(dlsym(RTLD_DEFAULT, "TIFFSetErrorHandler")))
        setError(tiffErrorHandler);
    if (auto setWarning = reinterpret_cast<TiffSetHandler>(dlsym(RTLD_DEFAULT, "TIFFSetWarningHandler")))
        setWarning(tiffWarningHandler);
}

} // namespace

FreeimageLibrary::FreeimageLibrary()
{
#ifdef FREEIMAGE_LIB
    FreeImage_Initialise(FALSE);
#endif
    FreeImage_SetOutputMessage(messageHandler);
    quietTiffLibrary();
    // Camera raw files, icons and JPEG XR are no textures, and the decoders
    // behind these plugins write past their buffers or abort on damaged
    // input (found by fuzzing the codec manager). Off, they are neither
    // probed when a file is identified nor used to read one.
    FreeImage_SetPluginEnabled(FIF_RAW, FALSE);
    FreeImage_SetPluginEnabled(FIF_ICO, FALSE);
    FreeImage_SetPluginEnabled(FIF_JXR, FALSE);
    m_io.read_proc = readProc;
    m_io.write_proc = writeProc;
    m_io.seek_proc = seekProc;
    m_io.tell_proc = tellProc;
}

FreeimageLibrary* FreeimageLibrary::instance()
{
    static FreeimageLibrary* library = FreeImage_GetFIFCount() > 0 ? new FreeimageLibrary : nullptr;
    return library;
}

FREE_IMAGE_FORMAT FreeimageLibrary::formatFromSuffix(const QByteArray& suffix)
{
    if (suffix.isEmpty())
        return FIF_UNKNOWN;
    return FreeImage_GetFIFFromFilename(QByteArray("file." + suffix).constData());
}

FREE_IMAGE_FORMAT FreeimageLibrary::formatFromDevice(QIODevice* device)
{
    if (!device || !device->isOpen() || !device->isReadable())
        return FIF_UNKNOWN;
    const qint64 pos = device->pos();
    const FREE_IMAGE_FORMAT fif = FreeImage_GetFileTypeFromHandle(&m_io, handle(device), 0);
    device->seek(pos);
    return fif;
}

bool FreeimageLibrary::isReadOnly(FREE_IMAGE_FORMAT fif)
{
    // GIF, and ICO, JNG, the PNM family, XBM, XPM, J2K, JP2, PFM and JXR:
    // readable, but not written by decision.
    constexpr uint64_t readOnlyMask = 76248308106ull;
    if (fif == FIF_GIF)
        return true;
    return fif >= 0 && fif <= 36 && ((readOnlyMask >> unsigned(fif)) & 1u);
}

QString FreeimageLibrary::firstExtension(FREE_IMAGE_FORMAT fif)
{
    const char* list = FreeImage_GetFIFExtensionList(fif);
    if (!list)
        return QString();
    return QString::fromLatin1(list).section(QLatin1Char(','), 0, 0);
}

} // namespace Ond::Image::Plugins
