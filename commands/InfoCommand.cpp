#include "commands/InfoCommand.h"

#include "commands/SceneInfoPrinter.h"
#include "program/IndentingPrinter.h"
#include "program/LogChannel.h"
#include "scene/load/SceneExporterMgr.h"
#include "scene/load/SceneLoaderMgr.h"
#include "scene/load/SceneMgr.h"

#include <QFileInfo>
#include <QStringList>
#include <QUrl>

namespace ProgramCommand {

using Ond::Program::OptionGroup;
using Ond::Program::TypedCommandLineOption;

namespace {

const QString InputsOption = QStringLiteral("inputs");

// The post-processing of `info`: keep normals, UV sets and colours.
constexpr uint32_t InfoSceneFlags = 49;

// One line per suffix, in the order the loaders are asked; a suffix that an
// earlier loader takes is never reached by a later one, so it is left out.
void printFormats(Ond::Program::IndentingPrinter& printer, const Ond::SceneLoad::SceneFormatList& formats)
{
    QStringList listed;
    for (const Ond::SceneLoad::SceneFormat& format : formats) {
        for (const QString& suffix : format.extensions) {
            if (listed.contains(suffix, Qt::CaseInsensitive))
                continue;
            listed << suffix;
            printer.print(suffix.leftJustified(6) + QLatin1Char(' ') + format.label);
        }
    }
}

} // namespace

InfoCommand::InfoCommand()
    : Ond::Program::ProgramCommand(QStringLiteral("info"), QStringLiteral("Print information about mesh files."))
{
    OptionGroup inputs(QStringLiteral("Input options"));
    inputs.addOption(TypedCommandLineOption(
        InputsOption, QMetaType::QStringList,
        QStringLiteral("Mesh files to process.\nThis option is implicit, so you can just provide a list of "
                       "files at the end of your arguments, they will be interpreted as inputs."),
        QStringLiteral("path")));
    addOptionGroup(inputs);

    OptionGroup specific(QStringLiteral("Specific options"));
    const std::pair<const char*, const char*> flags[] = {
        {"print-camera", "Print information about camera entities."},
        {"print-lighting", "Print information about lighting entities."},
        {"hide-mesh", "Do not print information about mesh entities."},
        {"hide-location", "Do not print the location of entities."},
        {"hide-bounding-box", "Do not print the bounding boxes of entities."},
        {"list-uv-tiles", "List uv tiles occupied in entities."},
        {"list-all", "Print basic information about all entities."},
        {"list-formats", "List the mesh file suffixes that can be read, with their formats; needs no input."},
    };
    for (const auto& flag : flags)
        specific.addOption(TypedCommandLineOption(QString::fromLatin1(flag.first), QString::fromLatin1(flag.second)));
    addOptionGroup(specific);
}

QString InfoCommand::implicitOptionName() const
{
    return InputsOption;
}

int InfoCommand::process(const Ond::Program::ParsedValues& values)
{
    auto& log = Ond::Core::zmfBakerChannel();
    const QStringList inputs = values.value(InputsOption).toStringList();
    if (values.value(QStringLiteral("list-formats")).toBool()) {
        Ond::Program::IndentingPrinter printer;
        printFormats(printer, Ond::SceneLoad::createSceneLoaderMgr()->getSupportedFormats());
        if (inputs.isEmpty())
            return 0;
    }
    if (inputs.isEmpty()) {
        log.error(QStringLiteral("Error: No input(s) specified."));
        return 1;
    }
    const QStringList selection = values.value(QStringLiteral("input-selection")).toStringList();

    auto flag = [&](const char* name) { return values.value(QString::fromLatin1(name)).toBool(); };
    SceneInfoPrinter::Options options;
    options.printCamera = flag("print-camera");
    options.printLighting = flag("print-lighting");
    options.hideMesh = flag("hide-mesh");
    options.hideLocation = flag("hide-location");
    options.hideBoundingBox = flag("hide-bounding-box");
    options.listUvTiles = flag("list-uv-tiles");
    options.listAll = flag("list-all");

    Ond::SceneLoad::SceneMgr sceneMgr(Ond::SceneLoad::createSceneLoaderMgr(),
                                      Ond::SceneLoad::createSceneExporterMgr());
    sceneMgr.setOptions(Ond::SceneLoad::SceneLoadOptions(InfoSceneFlags));

    Ond::Program::IndentingPrinter printer;
    for (const QString& input : inputs) {
        const QString path = QFileInfo(input).absoluteFilePath();
        const Ond::SceneLoad::SceneId id = QUrl::fromLocalFile(path).toString().toStdString();
        std::shared_ptr<Ond::SceneGraph::Scene> scene;
        {
            Ond::SceneLoad::SceneMgr::LockGuard guard(sceneMgr);
            scene = sceneMgr.getScene(id);
        }
        if (!scene) {
            log.error(QStringLiteral("File \"%1\" cannot be loaded .").arg(input));
            continue;
        }

        printer.print(QStringLiteral("File \"%1\":").arg(input));
        printer.indent();
        if (!selection.isEmpty())
            log.error(QStringLiteral("Selection of submeshes not supported yet!"));
        SceneInfoPrinter info(printer, options);
        info.printEntities(*scene);
        printer.unindent();
        if (options.listUvTiles)
            info.printUvSets(*scene);
        sceneMgr.unloadScene(id);
    }
    return 0;
}

} // namespace ProgramCommand
