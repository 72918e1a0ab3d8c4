#pragma once
// --threads <count>: caps the threads of the run. Without it the
// OND_THREADS variable is read once, at construction.

#include "program/OptionHandler.h"

namespace Ond::Program {

class ThreadLimitOptionHandler : public OptionHandler
{
public:
    ThreadLimitOptionHandler();

    void handle(const QString& commandName, const QString& key, const QVariant& value, bool& handled) override;
    QList<TypedCommandLineOption> options() const override;
};

} // namespace Ond::Program
