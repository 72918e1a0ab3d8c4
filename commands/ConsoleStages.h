#pragma once
// The commands' side of the terminal progress line: a task handler that
// shows the bake's tiles on it, and the loading stage of a mesh file.

#include "baking/TaskHandler.h"
#include "program/ConsoleProgress.h"

#include <QString>

#include <memory>

namespace ProgramCommand {

class ConsoleTaskHandler : public Vrn::Baking::TaskHandler
{
public:
    void begin(const QString& name) override { Ond::Core::ConsoleProgress::instance().begin(name); }
    void setValue(double fraction) override { Ond::Core::ConsoleProgress::instance().setValue(fraction); }
    void end() override { Ond::Core::ConsoleProgress::instance().end(); }
    void setText(const QString& text) override { Ond::Core::ConsoleProgress::instance().setText(text); }
    bool isCancelled() const override { return false; }
};

// The handler to install, or null when no progress line is shown.
std::shared_ptr<Vrn::Baking::TaskHandler> consoleTaskHandler();

// "Loading <file name>" for the length of the scope; progress() is what the
// loader is to be given: null when no line is shown, so that loading runs
// exactly as without one.
class LoadStage
{
public:
    explicit LoadStage(const QString& path);
    ~LoadStage();
    LoadStage(const LoadStage&) = delete;
    LoadStage& operator=(const LoadStage&) = delete;

    Ond::Core::ProgressInterface* progress() const { return m_progress; }

private:
    Ond::Core::ProgressInterface* m_progress = nullptr;
};

} // namespace ProgramCommand
