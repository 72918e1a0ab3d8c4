#pragma once
// Collects the log lines written while it lives.

#include "program/LogManager.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <mutex>

namespace ZmfTest {

class LogCapture
{
public:
    struct Line
    {
        int level;
        QString channel;
        QString message;
    };

    LogCapture() : delegate(std::make_shared<Delegate>()) { Ond::Core::LogManager::instance().addDelegate(delegate); }
    ~LogCapture() { Ond::Core::LogManager::instance().removeDelegate(delegate); }

    std::vector<Line> lines() const
    {
        std::lock_guard<std::mutex> lock(delegate->mutex);
        return delegate->lines;
    }
    QStringList messages() const
    {
        QStringList out;
        for (const Line& l : lines())
            out << l.message;
        return out;
    }

private:
    struct Delegate : Ond::Core::ILogDelegate
    {
        void log(int level, const QString& channel, const QString& message) override
        {
            std::lock_guard<std::mutex> lock(mutex);
            lines.push_back({level, channel, message});
        }
        std::mutex mutex;
        std::vector<Line> lines;
    };
    std::shared_ptr<Delegate> delegate;
};

} // namespace ZmfTest
