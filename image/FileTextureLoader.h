#pragma once
// Loads an image file into a surface through the codec manager. Never
// throws: a failure is a null result and one warning line.

#include "image/Surface.h"
#include "image/SurfaceCodecOptions.h"

#include <QIODevice>

namespace Ond::Surfaces {

class FileTextureLoader
{
public:
    static SurfaceSPtr load(const QString& path, CodecOptions* options = nullptr);
    // The suffix picks the codec; options receive what the file carried.
    static SurfaceSPtr load(QIODevice* device, const QByteArray& suffix, CodecOptions* options = nullptr);
};

} // namespace Ond::Surfaces
