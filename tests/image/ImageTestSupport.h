#pragma once
// Helpers of the image tests: deterministic pattern surfaces, comparison
// at a format's quantisation, log capture, file round trips.

#include "image/Surface.h"
#include "image/SurfaceCodecOptions.h"
#include "program/LogManager.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <mutex>

namespace ImageTest {

using Ond::Surfaces::PixelFormat;
using Ond::Surfaces::Surface;
using Ond::Surfaces::SurfaceSPtr;

// Formats the bakers write.
const std::vector<PixelFormat>& bakerFormats();

// A w×h surface whose every pixel differs, values in [0, 1]; alpha varies
// (transparent) when `transparent`, else it is 1.
SurfaceSPtr makePattern(PixelFormat format, uint32_t width, uint32_t height, bool transparent = true);

// Half the quantisation step of a component type at value v: what a
// correct store and load may change.
float tolerance(Ond::Surfaces::ComponentType type, float v);

// Largest difference over all pixels and channels (rgb only when
// !compareAlpha), after checking sizes. Returns a message on mismatch of the
// tolerance of the weaker of the two formats, empty when all is well.
QString compareSurfaces(const Surface& expected, const Surface& actual, bool compareAlpha = true,
                        float extraTolerance = 0.0f);

// Writes through the codec manager by the path's suffix; false on failure.
bool writeFile(const SurfaceSPtr& surface, const QString& path,
               const Ond::Surfaces::CodecOptions& options = {});
SurfaceSPtr readFile(const QString& path);

// Collects log lines while alive.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    QStringList lines() const;

private:
    struct Delegate;
    std::shared_ptr<Delegate> m_delegate;
};

} // namespace ImageTest
