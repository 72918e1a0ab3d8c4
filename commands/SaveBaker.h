#pragma once
// Runs the baker on loaded scenes and writes its result under the name the
// output options make.

#include "commands/BakerSettingsMap.h"

#include "image/Surface.h"
#include "scene/graph/Scene.h"

#include <QString>

namespace Ond::Baking {
class AbstractMapBaker;
}
namespace Vrn::Baking {
class BakingContext;
}

namespace ProgramCommand {

// Path of the written file, or empty (with the reason in the log). `high`
// is used by detail bakers only; `cagePath` when the baker uses a cage.
QString saveBaker(const BakerSettingsMap& settings, Ond::Baking::AbstractMapBaker& baker, const QString& bakerName,
                  const QString& inputPath, Vrn::Baking::BakingContext& context,
                  const Ond::SceneGraph::SceneSPtr& low, const Ond::SceneGraph::SceneSPtr& high,
                  const QString& cagePath);

// Writes through the codec of the file's suffix, with the given compression
// and the fastest PNG compression. False if the file can't be opened, no
// codec writes the suffix, or the codec fails; nothing is left behind then,
// and a file already under that name is kept until the new one is complete.
bool writeSurface(const QString& filePath, const Ond::Surfaces::SurfaceSPtr& surface, const QString& compression);

// True if a codec writes `format` (case ignored).
bool isKnownOutputFormat(const QString& format);

} // namespace ProgramCommand
