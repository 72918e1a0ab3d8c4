#include "commands/ConsoleStages.h"

#include <QFileInfo>
#include <QUrl>

namespace ProgramCommand {

std::shared_ptr<Vrn::Baking::TaskHandler> consoleTaskHandler()
{
    if (!Ond::Core::ConsoleProgress::instance().isEnabled())
        return nullptr;
    return std::make_shared<ConsoleTaskHandler>();
}

LoadStage::LoadStage(const QString& path)
{
    Ond::Core::ConsoleProgress& console = Ond::Core::ConsoleProgress::instance();
    if (!console.isEnabled())
        return;
    const QString local = path.startsWith(QLatin1String("file:")) ? QUrl(path).toLocalFile() : path;
    console.begin(QStringLiteral("Loading %1").arg(QFileInfo(local).fileName()));
    m_progress = &console;
}

LoadStage::~LoadStage()
{
    if (m_progress)
        Ond::Core::ConsoleProgress::instance().end();
}

} // namespace ProgramCommand
