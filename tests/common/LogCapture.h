#pragma once
// Collects what is logged while it lives. lines() gives "[level][channel]text"
// with the level as a number; entries() the same as records. Thread-safe,
// since bakers log from worker threads.

#include "program/LogManager.h"

#include <QStringList>

#include <memory>
#include <mutex>
#include <ostream>
#include <vector>

// Readable QString values in test failures.
inline void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}

namespace ZmfTest {

class LogCapture
{
public:
    struct Entry
    {
        int level;
        QString channel;
        QString message;
    };

    LogCapture() : m_delegate(std::make_shared<Delegate>()) { Ond::Core::LogManager::instance().addDelegate(m_delegate); }
    ~LogCapture() { Ond::Core::LogManager::instance().removeDelegate(m_delegate); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<Entry> entries() const
    {
        std::lock_guard lock(m_delegate->mutex);
        return m_delegate->entries;
    }

    QStringList lines() const
    {
        QStringList out;
        for (const Entry& e : entries())
            out << QStringLiteral("[%1][%2]%3").arg(e.level).arg(e.channel, e.message);
        return out;
    }

    QStringList messages() const
    {
        QStringList out;
        for (const Entry& e : entries())
            out << e.message;
        return out;
    }

    QString text() const { return lines().join(QLatin1Char('\n')); }

private:
    struct Delegate : Ond::Core::ILogDelegate
    {
        void log(int level, const QString& channel, const QString& message) override
        {
            std::lock_guard lock(mutex);
            entries.push_back({level, channel, message});
        }
        std::mutex mutex;
        std::vector<Entry> entries;
    };
    std::shared_ptr<Delegate> m_delegate;
};

} // namespace ZmfTest
