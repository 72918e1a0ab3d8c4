#pragma once
// Acts on some of the global options (help, version, verbosity...).

#include "program/TypedCommandLineOption.h"

#include <QList>
#include <QString>
#include <QVariant>

#include <memory>

namespace Ond::Program {

class OptionHandler
{
public:
    virtual ~OptionHandler() = default;

    // `commandName` is empty at top level. Sets `handled` when the handler
    // has dealt with the whole run, so no command is to run after it.
    virtual void handle(const QString& commandName, const QString& key, const QVariant& value,
                        bool& handled) = 0;
    // The options it serves; they join the global group when it is added.
    virtual QList<TypedCommandLineOption> options() const = 0;
};

using OptionHandlerSPtr = std::shared_ptr<OptionHandler>;

} // namespace Ond::Program
