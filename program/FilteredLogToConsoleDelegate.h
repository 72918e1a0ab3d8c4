#pragma once
// Console log: one line per message on standard error, as
// "[ERROR][Channel]text". A run of equal lines prints once, and the count of
// the others is told before the next different line.

#include "program/ConsoleProgress.h"
#include "program/LogManager.h"

#include <QByteArray>
#include <QString>

#include <cstdio>

namespace Ond::Program {

template <bool ShowInfo, bool ShowWarnings, bool ShowErrors>
class FilteredLogToConsoleDelegate : public Core::ILogDelegate
{
public:
    explicit FilteredLogToConsoleDelegate(FILE* out = stderr)
        : m_out(out)
    {
    }

    ~FilteredLogToConsoleDelegate() override
    {
        // A run of repeats at the very end would otherwise go untold.
        if (m_pendingRepeat)
            write(repeatNote());
    }

    void log(int level, const QString& channel, const QString& message) override
    {
        QString tag;
        switch (level) {
        case Core::LogInfo:
            if (!ShowInfo)
                return;
            tag = QStringLiteral("[INFO]");
            break;
        case Core::LogWarning:
            if (!ShowWarnings)
                return;
            tag = QStringLiteral("[WARNING]");
            break;
        default:
            if (!ShowErrors)
                return;
            tag = QStringLiteral("[ERROR]");
            break;
        }

        const QString line = tag + QStringLiteral("[%1]%2\n").arg(channel, message);
        if (line == m_lastLine) {
            ++m_repeatCount;
            m_pendingRepeat = true;
            return;
        }
        QString out;
        if (m_repeatCount > 0)
            out = repeatNote();
        out += line;
        m_lastLine = line;
        m_repeatCount = 0;
        m_pendingRepeat = false;
        write(out);
    }

private:
    QString repeatNote() const { return QStringLiteral("   ... (repeated %1 more times)\n").arg(m_repeatCount); }

    void write(const QString& text)
    {
        // A progress line on the same terminal goes first, so the log reads as without it.
        if (m_out == stderr)
            Core::ConsoleProgress::instance().clearLine();
        const QByteArray bytes = text.toUtf8();
        std::fwrite(bytes.constData(), 1, size_t(bytes.size()), m_out);
        std::fflush(m_out);
    }

    FILE* m_out;
    QString m_lastLine;
    int m_repeatCount = 0;
    bool m_pendingRepeat = false;
};

using DefaultConsoleDelegate = FilteredLogToConsoleDelegate<false, true, true>;
using VerboseConsoleDelegate = FilteredLogToConsoleDelegate<true, true, true>;
using QuietConsoleDelegate = FilteredLogToConsoleDelegate<false, false, true>;
using VerboseQuietConsoleDelegate = FilteredLogToConsoleDelegate<true, false, true>;

} // namespace Ond::Program
