#pragma once
// A command that records what it was given, and a log delegate that records
// what was logged, for driving the parser from tests.

#include "program/LogManager.h"
#include "program/ProgramCommand.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace ZmfTest {

class FakeCommand : public Ond::Program::ProgramCommand
{
public:
    using ProgramCommand::process;

    FakeCommand(const QString& name, const QString& description, const QString& implicitName = QString())
        : ProgramCommand(name, description)
        , m_implicitName(implicitName)
    {
    }

    QString implicitOptionName() const override { return m_implicitName; }

    int process(const Ond::Program::ParsedValues& values) override
    {
        ++calls;
        received = values;
        return status;
    }

    int calls = 0;
    int status = 0;
    Ond::Program::ParsedValues received;

private:
    QString m_implicitName;
};

struct LoggedLine
{
    int level;
    QString channel;
    QString message;
};

class RecordingDelegate : public Ond::Core::ILogDelegate
{
public:
    void log(int level, const QString& channel, const QString& message) override
    {
        lines.push_back({level, channel, message});
    }
    QStringList messages() const
    {
        QStringList out;
        for (const LoggedLine& line : lines)
            out << line.message;
        return out;
    }
    std::vector<LoggedLine> lines;
};

// Installed for the lifetime of the object.
class LogRecorder
{
public:
    LogRecorder()
        : delegate(std::make_shared<RecordingDelegate>())
    {
        Ond::Core::LogManager::instance().addDelegate(delegate);
    }
    ~LogRecorder() { Ond::Core::LogManager::instance().removeDelegate(delegate); }
    std::shared_ptr<RecordingDelegate> delegate;
};

} // namespace ZmfTest
