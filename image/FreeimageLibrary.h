#pragma once
// The FreeImage library's process-wide state: initialised once, with the one
// message handler, and the I/O callbacks that let it read and write a
// QIODevice through a handle.

#include <FreeImage.h>

#include <QIODevice>
#include <QString>

namespace Ond::Image::Plugins {

class FreeimageLibrary
{
public:
    // Null if the library could not be set up.
    static FreeimageLibrary* instance();

    // Callbacks over a QIODevice* passed as the fi_handle.
    FreeImageIO* io() { return &m_io; }
    static fi_handle handle(QIODevice* device) { return static_cast<fi_handle>(device); }

    // "file." + suffix to a library type; FIF_UNKNOWN if none.
    static FREE_IMAGE_FORMAT formatFromSuffix(const QByteArray& suffix);
    // Identifies the type from the device's content, keeping its position.
    FREE_IMAGE_FORMAT formatFromDevice(QIODevice* device);
    // Types this system never writes though the library could.
    static bool isReadOnly(FREE_IMAGE_FORMAT fif);
    // The first extension of the type's list: "jpg" for JPEG.
    static QString firstExtension(FREE_IMAGE_FORMAT fif);

private:
    FreeimageLibrary();

    FreeImageIO m_io;
};

} // namespace Ond::Image::Plugins
