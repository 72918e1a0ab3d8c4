#include "program/VerbosityOptionHandler.h"

#include "program/ConsoleProgress.h"
#include "program/FilteredLogToConsoleDelegate.h"

namespace Ond::Program {

VerbosityOptionHandler::VerbosityOptionHandler()
    : m_delegate(makeDelegate(false, false))
{
    Core::ConsoleProgress::instance().setQuiet(false);
    Core::LogManager::instance().addDelegate(m_delegate);
}

VerbosityOptionHandler::~VerbosityOptionHandler() { Core::LogManager::instance().removeDelegate(m_delegate); }

Core::LogDelegateSPtr VerbosityOptionHandler::makeDelegate(bool verbose, bool quiet)
{
    if (verbose && quiet)
        return std::make_shared<VerboseQuietConsoleDelegate>();
    if (verbose)
        return std::make_shared<VerboseConsoleDelegate>();
    if (quiet)
        return std::make_shared<QuietConsoleDelegate>();
    return std::make_shared<DefaultConsoleDelegate>();
}

void VerbosityOptionHandler::handle(const QString&, const QString& key, const QVariant& value, bool&)
{
    if (!value.toBool())
        return;
    Core::LogManager& manager = Core::LogManager::instance();
    manager.removeDelegate(m_delegate);
    if (key == QLatin1String("verbose")) {
        m_verbose = true;
    } else if (key == QLatin1String("quiet")) {
        m_quiet = true;
        // Quiet means quiet: no progress line either.
        Core::ConsoleProgress::instance().setQuiet(true);
    } else {
        manager.addDelegate(m_delegate);
        return;
    }
    m_delegate = makeDelegate(m_verbose, m_quiet);
    manager.addDelegate(m_delegate);
}

QList<TypedCommandLineOption> VerbosityOptionHandler::options() const
{
    return {TypedCommandLineOption(QStringList{QStringLiteral("quiet"), QStringLiteral("q")},
                                   QStringLiteral("Disable warning messages.")),
            TypedCommandLineOption(QStringList{QStringLiteral("verbose"), QStringLiteral("v")},
                                   QStringLiteral("Enable info and debug messages."))};
}

} // namespace Ond::Program
