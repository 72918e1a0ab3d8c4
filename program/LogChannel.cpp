#include "program/LogChannel.h"

#include "program/LogManager.h"

namespace Ond::Core {

LogChannel::LogChannel(const QString& name)
    : m_name(name)
{
}

void LogChannel::log(int level, const QString& message) const
{
    LogManager::instance().log(level, m_name, message);
}

void LogChannel::info(const QString& message) const { log(LogInfo, message); }
void LogChannel::warning(const QString& message) const { log(LogWarning, message); }
void LogChannel::error(const QString& message) const { log(LogError, message); }

LogChannel& zmfBakerChannel()
{
    static LogChannel channel(QStringLiteral("ZMFBaker"));
    return channel;
}

LogChannel& cliParserChannel()
{
    static LogChannel channel(QStringLiteral("CLIParser"));
    return channel;
}

LogChannel& bakersChannel()
{
    static LogChannel channel;
    return channel;
}

} // namespace Ond::Core
