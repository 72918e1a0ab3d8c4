#include "program/ThreadLimitOptionHandler.h"

#include "program/LogChannel.h"
#include "program/ThreadLimit.h"

#include <QMetaType>

namespace Ond::Program {

ThreadLimitOptionHandler::ThreadLimitOptionHandler()
{
    if (!qEnvironmentVariableIsSet(Core::ThreadLimitVariable))
        return;
    const QByteArray text = qgetenv(Core::ThreadLimitVariable);
    unsigned limit = 0;
    if (Core::parseThreadLimit(text, limit)) {
        Core::setThreadLimit(limit);
        return;
    }
    Core::cliParserChannel().warning(
        QStringLiteral("Environment variable %1 expected a value of type uint, but received non-convertible "
                       "\"%2\"; all cores are used.")
            .arg(QString::fromLatin1(Core::ThreadLimitVariable), QString::fromLocal8Bit(text)));
}

void ThreadLimitOptionHandler::handle(const QString&, const QString&, const QVariant& value, bool&)
{
    if (value.isValid())
        Core::setThreadLimit(value.toUInt());
}

QList<TypedCommandLineOption> ThreadLimitOptionHandler::options() const
{
    return {TypedCommandLineOption(
        QStringList{QStringLiteral("threads")}, QMetaType::UInt,
        QStringLiteral("Maximum number of threads used by ray tracing, mesh processing and mesh reading.\n"
                       "0 uses all cores. Without this option the environment variable %1 gives the count; "
                       "by default all cores are used.")
            .arg(QString::fromLatin1(Core::ThreadLimitVariable)),
        QStringLiteral("count"))};
}

} // namespace Ond::Program
