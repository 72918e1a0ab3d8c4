#pragma once
// The bake of one input: load the low mesh, the high meshes and the cage,
// run the baker, write the file.

#include "commands/BakerSettingsMap.h"

#include <QString>
#include <QStringList>

namespace Ond::Baking {
class AbstractMapBaker;
}
namespace Vrn::Baking {
class BakingContext;
}

namespace ProgramCommand {

// Returns the path of the written file, or an empty string when nothing was
// written (the reason is in the log).
QString bakeInput(const BakerSettingsMap& settings, Ond::Baking::AbstractMapBaker& baker, const QString& bakerName,
                  const QString& inputPath, Vrn::Baking::BakingContext& context, const QStringList& highMeshes,
                  const QString& cagePath);

} // namespace ProgramCommand
