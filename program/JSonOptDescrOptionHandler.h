#pragma once
// --opt-descr: the commands and their options as JSON on standard output,
// for tools that build user interfaces on top of the program.

#include "program/CommandOptionDependentOptionHandler.h"
#include "program/OptionGroup.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace Ond::Program {

class JSonOptDescrOptionHandler : public CommandOptionDependentOptionHandler
{
public:
    JSonOptDescrOptionHandler(const QString& programName, const OptionGroupConstSPtr& globalOptions);

    void handle(const QString& commandName, const QString& key, const QVariant& value, bool& handled) override;
    QList<TypedCommandLineOption> options() const override;

    // An array of everything for an empty name, else the command's object;
    // null with an error logged for an unknown command.
    QJsonDocument description(const QString& commandName) const;

    static QJsonObject commandObject(const ProgramCommand& command);
    static QJsonObject optionObject(const TypedCommandLineOption& option);
    static QString typeName(int type);

private:
    QString m_programName;
    OptionGroupConstSPtr m_globalOptions;
};

} // namespace Ond::Program
