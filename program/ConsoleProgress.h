#pragma once
// One line on a terminal that follows the long stages of a run: the stage,
// a percentage and the time left, redrawn in place. It shows only when
// standard error is a terminal and warnings are not silenced, and the
// console log clears it before each line, so the log reads as without it.

#include "program/ProgressInterface.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <mutex>
#include <vector>

namespace Ond::Core {

class ConsoleProgress : public ProgressInterface
{
public:
    static ConsoleProgress& instance();

    explicit ConsoleProgress(FILE* out = stderr);

    bool isEnabled() const { return m_terminal.load() && !m_quiet.load(); }
    void setQuiet(bool quiet) { m_quiet.store(quiet); }
    // Whether the output is a terminal; found out at construction.
    void setTerminal(bool terminal) { m_terminal.store(terminal); }

    // Starts a stage and draws it at once. A stage begun inside another
    // shows until its end, then the outer one shows again.
    void begin(const QString& stage);
    // A sub-step of the stage, shown after its name.
    void setText(const QString& text) override;
    // 0 to 1. A value below the last one starts the estimate afresh: the
    // stage went on to another pass.
    void setValue(double fraction) override;
    // Ends the current stage: the outer one, if any, is drawn again,
    // otherwise the line is cleared.
    void end();
    // Wipes the line off the terminal, the stage staying current; it is
    // drawn again at its next value.
    void clearLine();

    // "Stage: text  42%  1:05 left", cut to width - 1 characters. The time
    // left shows once the stage is past 1% and has run a second.
    static QString lineText(const QString& stage, const QString& text, double fraction, double elapsedSeconds,
                            int width);

private:
    using Clock = std::chrono::steady_clock;

    void draw(bool force);
    void write(const QByteArray& bytes);
    int terminalWidth() const;

    FILE* m_out;
    std::atomic<bool> m_terminal{false};
    std::atomic<bool> m_quiet{false};
    struct Stage
    {
        QString name;
        QString text;
        double fraction = 0.0;
        Clock::time_point start;
    };

    std::mutex m_mutex;
    std::vector<Stage> m_stages; // the current one last
    bool m_shown = false;
    Clock::time_point m_lastDraw;
};

// A stage for the length of a scope.
class ConsoleProgressScope
{
public:
    explicit ConsoleProgressScope(const QString& stage) { ConsoleProgress::instance().begin(stage); }
    ~ConsoleProgressScope() { ConsoleProgress::instance().end(); }
    ConsoleProgressScope(const ConsoleProgressScope&) = delete;
    ConsoleProgressScope& operator=(const ConsoleProgressScope&) = delete;
    void setValue(double fraction) { ConsoleProgress::instance().setValue(fraction); }
    void setText(const QString& text) { ConsoleProgress::instance().setText(text); }
};

} // namespace Ond::Core
