#pragma once
// What a baker sees of its surroundings: image loading, tile output,
// progress, cancellation, the GPU switches and the tangent plugin. Bakers
// reach nothing of the commands except through this interface.

#include "image/Surface.h"

#include <QString>

#include <string>

namespace Ond::Baking {

class AbstractBakingContext
{
public:
    virtual ~AbstractBakingContext() = default;

    virtual std::string tangentPluginName() const = 0;
    // May be called from worker threads.
    virtual bool isCancelled() const = 0;
    virtual bool perFragmentBinormal() const = 0;
    // Reads an image file; false when it could not be read.
    virtual bool loadSurface(const QString& path, Surfaces::SurfaceSPtr& result) = 0;
    // Hands a finished region of the map to the UV tile output, if any.
    virtual void tileOutput(const Surfaces::SurfaceSPtr& surface, int cellX, int cellY, bool isFinal) = 0;
    virtual void progressBegin(const QString& name) = 0;
    virtual void progressValue(double fraction) = 0;
    virtual void progressEnd() = 0;
    virtual void progressText(const QString& text = QString()) = 0;
    virtual bool gpuAllowed() const = 0;
    virtual bool forceDxr() const = 0;
    virtual bool forceOptix() const = 0;
};

} // namespace Ond::Baking
