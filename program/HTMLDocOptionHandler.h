#pragma once
// --doc-html: a basic HTML page of the usage, the commands and their options.

#include "program/CommandOptionDependentOptionHandler.h"
#include "program/IndentingPrinter.h"
#include "program/OptionGroup.h"

namespace Ond::Program {

class HTMLDocOptionHandler : public CommandOptionDependentOptionHandler
{
public:
    HTMLDocOptionHandler(const QString& programName, const OptionGroupConstSPtr& globalOptions);

    void handle(const QString& commandName, const QString& key, const QVariant& value, bool& handled) override;
    QList<TypedCommandLineOption> options() const override;

    // All commands for an empty name, else that one; false with an error
    // logged for an unknown command.
    bool write(const QString& commandName, IndentingPrinter& printer) const;

    // "&", the double quote and "/" as entities.
    static QString escape(const QString& text);

private:
    void writeCommand(const ProgramCommand& command, IndentingPrinter& printer) const;
    void writeGroup(const OptionGroup& group, IndentingPrinter& printer) const;

    QString m_programName;
    OptionGroupConstSPtr m_globalOptions;
};

} // namespace Ond::Program
