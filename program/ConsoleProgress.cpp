#include "program/ConsoleProgress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>

namespace Ond::Core {

namespace {

// Redraws are cheap but a terminal is slow: ten a second at most.
constexpr auto RedrawInterval = std::chrono::milliseconds(100);

const QByteArray ClearSequence("\r\x1b[K");

QString duration(double seconds)
{
    const long total = long(std::ceil(seconds));
    if (total >= 3600)
        return QStringLiteral("%1:%2:%3")
            .arg(total / 3600)
            .arg((total / 60) % 60, 2, 10, QLatin1Char('0'))
            .arg(total % 60, 2, 10, QLatin1Char('0'));
    return QStringLiteral("%1:%2").arg(total / 60).arg(total % 60, 2, 10, QLatin1Char('0'));
}

} // namespace

ConsoleProgress& ConsoleProgress::instance()
{
    static ConsoleProgress progress;
    return progress;
}

ConsoleProgress::ConsoleProgress(FILE* out)
    : m_out(out)
{
    m_terminal.store(out && ::isatty(::fileno(out)) == 1);
}

QString ConsoleProgress::lineText(const QString& stage, const QString& text, double fraction, double elapsedSeconds,
                                  int width)
{
    fraction = std::clamp(fraction, 0.0, 1.0);
    QString line = stage;
    if (!text.isEmpty())
        line += QStringLiteral(": ") + text;
    line += QStringLiteral("  %1%").arg(int(fraction * 100.0));
    if (fraction >= 0.01 && fraction < 1.0 && elapsedSeconds >= 1.0)
        line += QStringLiteral("  %1 left").arg(duration(elapsedSeconds * (1.0 - fraction) / fraction));
    if (width > 1 && line.size() > width - 1)
        line.truncate(width - 1);
    return line;
}

void ConsoleProgress::begin(const QString& stage)
{
    if (!isEnabled())
        return;
    std::lock_guard<std::mutex> lock(m_mutex);
    m_stages.push_back({stage, QString(), 0.0, Clock::now()});
    draw(true);
}

void ConsoleProgress::setText(const QString& text)
{
    if (!isEnabled())
        return;
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_stages.empty() || text == m_stages.back().text)
        return;
    m_stages.back().text = text;
    draw(true);
}

void ConsoleProgress::setValue(double fraction)
{
    if (!isEnabled())
        return;
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_stages.empty())
        return;
    Stage& current = m_stages.back();
    if (fraction < current.fraction)
        current.start = Clock::now();
    current.fraction = fraction;
    draw(false);
}

void ConsoleProgress::end()
{
    if (!isEnabled())
        return;
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_stages.empty())
        m_stages.pop_back();
    if (!m_stages.empty()) {
        draw(true);
    } else if (m_shown) {
        write(ClearSequence);
        m_shown = false;
    }
}

void ConsoleProgress::clearLine()
{
    if (!isEnabled())
        return;
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_shown)
        write(ClearSequence);
    m_shown = false;
}

void ConsoleProgress::draw(bool force)
{
    const Clock::time_point now = Clock::now();
    if (!force && m_shown && now - m_lastDraw < RedrawInterval)
        return;
    m_lastDraw = now;
    const Stage& current = m_stages.back();
    const double elapsed = std::chrono::duration<double>(now - current.start).count();
    const QString line = lineText(current.name, current.text, current.fraction, elapsed, terminalWidth());
    write("\r" + line.toUtf8() + "\x1b[K");
    m_shown = true;
}

void ConsoleProgress::write(const QByteArray& bytes)
{
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), m_out);
    std::fflush(m_out);
}

int ConsoleProgress::terminalWidth() const
{
    winsize size{};
    if (::ioctl(::fileno(m_out), TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    return 80;
}

} // namespace Ond::Core
