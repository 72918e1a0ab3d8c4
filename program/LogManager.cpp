#include "program/LogManager.h"

#include <algorithm>

namespace Ond::Core {

LogManager& LogManager::instance()
{
    static LogManager manager;
    return manager;
}

void LogManager::addDelegate(const LogDelegateSPtr& delegate)
{
    std::lock_guard lock(m_mutex);
    if (delegate && !hasDelegate(delegate))
        m_delegates.push_back(delegate);
}

void LogManager::removeDelegate(const LogDelegateSPtr& delegate)
{
    std::lock_guard lock(m_mutex);
    m_delegates.erase(std::remove(m_delegates.begin(), m_delegates.end(), delegate), m_delegates.end());
}

bool LogManager::hasDelegate(const LogDelegateSPtr& delegate) const
{
    std::lock_guard lock(m_mutex);
    return std::find(m_delegates.begin(), m_delegates.end(), delegate) != m_delegates.end();
}

void LogManager::log(int level, const QString& channel, const QString& message)
{
    std::lock_guard lock(m_mutex);
    for (const auto& delegate : m_delegates)
        delegate->log(level, channel, message);
}

} // namespace Ond::Core
