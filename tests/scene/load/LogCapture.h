#pragma once
// Collects log lines for the duration of a test.

#include "program/LogManager.h"

#include <QString>
#include <QStringList>

#include <memory>

namespace SceneTest {

class LogCapture
{
public:
    struct Delegate : Ond::Core::ILogDelegate
    {
        QStringList lines;
        void log(int level, const QString& channel, const QString& message) override
        {
            lines << QString("%1|%2|%3").arg(level).arg(channel, message);
        }
    };

    LogCapture() : m_delegate(std::make_shared<Delegate>())
    {
        Ond::Core::LogManager::instance().addDelegate(m_delegate);
    }
    ~LogCapture() { Ond::Core::LogManager::instance().removeDelegate(m_delegate); }

    const QStringList& lines() const { return m_delegate->lines; }

private:
    std::shared_ptr<Delegate> m_delegate;
};

} // namespace SceneTest
