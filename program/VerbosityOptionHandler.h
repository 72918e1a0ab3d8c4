#pragma once
// --quiet and --verbose: chooses which console delegate the log manager has.
// The default one is installed on construction and removed on destruction.

#include "program/LogManager.h"
#include "program/OptionHandler.h"

namespace Ond::Program {

class VerbosityOptionHandler : public OptionHandler
{
public:
    VerbosityOptionHandler();
    ~VerbosityOptionHandler() override;

    // Never ends the run.
    void handle(const QString& commandName, const QString& key, const QVariant& value, bool& handled) override;
    QList<TypedCommandLineOption> options() const override;

    bool verboseSeen() const { return m_verbose; }
    bool quietSeen() const { return m_quiet; }
    const Core::LogDelegateSPtr& delegate() const { return m_delegate; }

    // Verbose shows information, quiet hides warnings; errors always show.
    static Core::LogDelegateSPtr makeDelegate(bool verbose, bool quiet);

private:
    bool m_verbose = false;
    bool m_quiet = false;
    Core::LogDelegateSPtr m_delegate;
};

} // namespace Ond::Program
