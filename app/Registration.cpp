#include "app/Registration.h"

#include "baking/GLMapBakerManager.h"
#include "baking/lowpoly/ColorMapBaker.h"
#include "commands/BakerCommand.h"
#include "commands/BatchCommand.h"
#include "commands/InfoCommand.h"
#include "image/DefaultCodecs.h"
#include "program/ClassicProgramOptions.h"

#include <memory>

namespace Zmf {

void registerCodecs()
{
    Ond::Surfaces::registerDefaultCodecs();
}

void registerCommands(Ond::Program::ClassicProgramOptions& options)
{
    auto& manager = Ond::Baking::GLMapBakerManager::instance();
    manager.registerFactory(QByteArrayLiteral("GLMapBakerManager.ColorMap"),
                            std::make_shared<Ond::Baking::ColorMapBakerFactory>());
    for (const QByteArray& key : manager.keys())
        options.addCommand(std::make_shared<ProgramCommand::BakerCommand>(key));
    options.addCommand(std::make_shared<ProgramCommand::BatchCommand>());
    options.addCommand(std::make_shared<ProgramCommand::InfoCommand>());
}

} // namespace Zmf
