#pragma once
// Collects what is logged while it lives, as "[level][channel]text" lines
// with the level as a number.

#include "program/LogManager.h"

#include <QStringList>

#include <memory>
#include <ostream>

// Readable QString values in test failures.
inline void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}

namespace ZmfTest {

class LogCapture
{
public:
    LogCapture() : m_delegate(std::make_shared<Delegate>()) { Ond::Core::LogManager::instance().addDelegate(m_delegate); }
    ~LogCapture() { Ond::Core::LogManager::instance().removeDelegate(m_delegate); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    const QStringList& lines() const { return m_delegate->lines; }
    QString text() const { return m_delegate->lines.join(QLatin1Char('\n')); }

private:
    struct Delegate : Ond::Core::ILogDelegate
    {
        void log(int level, const QString& channel, const QString& message) override
        {
            lines.append(QStringLiteral("[%1][%2]%3").arg(level).arg(channel, message));
        }
        QStringList lines;
    };
    std::shared_ptr<Delegate> m_delegate;
};

} // namespace ZmfTest
