#include "commands/BakeInput.h"

#include "program/LogChannel.h"

namespace ProgramCommand {

QString bakeInput(const BakerSettingsMap& settings, Ond::Baking::AbstractMapBaker& baker, const QString& bakerName,
                  const QString& inputPath, Vrn::Baking::BakingContext& context, const QStringList& highMeshes,
                  const QString& cagePath)
{
    (void)settings;
    (void)baker;
    (void)context;
    (void)highMeshes;
    (void)cagePath;
    // Scene loading and image output are not part of this build yet: say so
    // rather than pretend that a map was written.
    Ond::Core::zmfBakerChannel().error(
        QStringLiteral("Error: Baking with %1 isn't available in this build, \"%2\" was not processed.")
            .arg(bakerName, inputPath));
    return QString();
}

} // namespace ProgramCommand
