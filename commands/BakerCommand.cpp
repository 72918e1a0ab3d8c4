#include "commands/BakerCommand.h"

#include "commands/BakeInput.h"
#include "commands/BakerCommandOptions.h"
#include "commands/BakerSettingsTransfer.h"
#include "commands/ConsoleStages.h"
#include "commands/OptionMapSettingMap.h"
#include "commands/PathNormalization.h"
#include "commands/UvTileList.h"

#include "baking/AbstractMapBaker.h"
#include "baking/BakerCatalogue.h"
#include "baking/BakingContext.h"
#include "baking/GLMapBakerManager.h"
#include "program/LogChannel.h"
#include "scene/load/SceneMgr.h"

namespace ProgramCommand {

using Ond::Core::zmfBakerChannel;

BakerCommand::BakerCommand(const QByteArray& bakerKey)
    : Ond::Program::ProgramCommand(QString(), QString())
{
    m_baker = Ond::Baking::GLMapBakerManager::instance().create(bakerKey, imageFileFilter());
    const QString name = QString::fromStdString(Ond::Baking::subcommandName(m_baker->identifier()));
    setName(name);
    setDescription(m_baker->description());
    const Ond::Program::OptionGroup common = inputOutputOptionGroup();
    const Ond::Program::OptionGroup own = bakerOptionGroup(*m_baker, name);
    addOptionGroup(common);
    addOptionGroup(own);
}

BakerCommand::~BakerCommand() = default;

QString BakerCommand::implicitOptionName() const
{
    return QStringLiteral("inputs");
}

void applyGpuOptions(Vrn::Baking::BakingContext& context, const BakerSettingsMap& settings)
{
    const bool disableGpu = settings.getBool(QStringLiteral("disable-gpu"), false);
    const bool forceOptix = settings.getBool(QStringLiteral("force-optix"), false);
    const bool forceDxr = settings.getBool(QStringLiteral("force-dxr"), false);
    context.setGpuAllowed(!disableGpu);
    context.setForceOptix(forceOptix);
    context.setForceDxr(forceDxr);
    // The older switches count only when none of the current ones is on,
    // and either of them turns all GPU tracing off.
    if (!disableGpu && !forceOptix && !forceDxr)
        context.setGpuAllowed(!(settings.getBool(QStringLiteral("nodxr"), false)
                                || settings.getBool(QStringLiteral("nooptix"), false)));
}

int BakerCommand::process(const Ond::Program::ParsedValues& values)
{
    const OptionMapSettingMap settings(values.options);
    if (!transferSettings(*m_baker, settings))
        return 1;

    const QStringList inputs = settings.getStringList(QStringLiteral("inputs"), QStringList());
    if (inputs.isEmpty()) {
        zmfBakerChannel().error(QStringLiteral("Error: No input(s) specified."));
        return 1;
    }

    Vrn::Baking::BakingContext context(std::make_shared<Ond::SceneLoad::SceneMgr>(
        Ond::SceneLoad::createSceneLoaderMgr(), Ond::SceneLoad::createSceneExporterMgr()));
    applyGpuOptions(context, settings);
    // Only on a terminal: otherwise the commands install no handler at all.
    if (auto handler = consoleTaskHandler())
        context.setTaskHandler(0, handler);

    const bool everyCoveredTile = !settings.has(QStringLiteral("uv-tile"))
                                  && UvTileList::isAuto(settings.getString(QStringLiteral("udim"), QString()));
    for (const QString& input : inputs) {
        const QStringList highMeshes =
            normalizePaths(settings.getStringList(QStringLiteral("highdef-mesh"), QStringList()));
        const QString cage = normalizePath(settings.getString(QStringLiteral("cage-mesh"), QString()));
        const QStringList written =
            everyCoveredTile ? bakeCoveredTiles(settings, *m_baker, name(), input, context, highMeshes, cage)
                             : QStringList{bakeInput(settings, *m_baker, name(), input, context, highMeshes, cage)};
        for (const QString& path : written)
            zmfBakerChannel().info(QStringLiteral("Writing file '%1'...").arg(path));
    }
    // Failed inputs were told in the log; the status says the command line made sense.
    return 0;
}

} // namespace ProgramCommand
