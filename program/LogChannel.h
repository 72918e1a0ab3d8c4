#pragma once
// A named log channel. The three channels of the program are process-wide
// objects reached through the accessors below.

#include <QString>

namespace Ond::Core {

class LogChannel
{
public:
    explicit LogChannel(const QString& name = QString());

    const QString& name() const { return m_name; }
    void setName(const QString& name) { m_name = name; }

    void log(int level, const QString& message) const;
    void info(const QString& message) const;
    void warning(const QString& message) const;
    void error(const QString& message) const;

private:
    QString m_name;
};

// "ZMFBaker": the commands.
LogChannel& zmfBakerChannel();
// "CLIParser": the option parser.
LogChannel& cliParserChannel();
// "Bakers": the baker framework; named by the main function at start-up.
LogChannel& bakersChannel();

} // namespace Ond::Core
