#pragma once
// Process-wide log: channels hand lines to the manager, which passes them to
// every installed delegate under one recursive mutex, so lines come out whole
// even when worker threads log.

#include <QString>

#include <memory>
#include <mutex>
#include <vector>

namespace Ond::Core {

enum LogLevel : int { LogInfo = 0, LogWarning = 1, LogError = 2 };

class ILogDelegate
{
public:
    virtual ~ILogDelegate() = default;
    virtual void log(int level, const QString& channel, const QString& message) = 0;
};

using LogDelegateSPtr = std::shared_ptr<ILogDelegate>;

class LogManager
{
public:
    static LogManager& instance();

    void addDelegate(const LogDelegateSPtr& delegate);
    void removeDelegate(const LogDelegateSPtr& delegate);
    bool hasDelegate(const LogDelegateSPtr& delegate) const;

    void log(int level, const QString& channel, const QString& message);

private:
    LogManager() = default;

    mutable std::recursive_mutex m_mutex;
    std::vector<LogDelegateSPtr> m_delegates;
};

} // namespace Ond::Core
