#pragma once
// QCommandLineParser plus the typed validation of TypedCommandLineOption:
// after Qt's own parse, every option given must convert to its type.

#include "program/ParsedValues.h"
#include "program/TypedCommandLineOption.h"

#include <QCommandLineParser>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace Ond::Program {

class OptionGroup;

class TypedCommandLineParser
{
public:
    TypedCommandLineParser();

    // Options that QCommandLineParser refuses (a name already taken) are left out.
    void addOption(const TypedCommandLineOption& option);
    void addOptions(const QList<TypedCommandLineOption>& options);
    void addOptions(const OptionGroup& group);
    const QList<TypedCommandLineOption>& options() const { return m_options; }
    // Null when no added option has that name.
    const TypedCommandLineOption* findOption(const QString& name) const;
    bool hasOption(const QString& name) const { return findOption(name) != nullptr; }

    // `arguments` starts with the program name.
    bool parse(const QStringList& arguments);

    // The converted value; invalid for an unknown option or a bad value.
    QVariant value(const QString& name) const;
    bool isSet(const QString& name) const { return m_parser.isSet(name); }
    QStringList positionalArguments() const { return m_parser.positionalArguments(); }
    ParsedValues values() const;

    QString errorText() const;

private:
    bool validate();

    QCommandLineParser m_parser;
    QList<TypedCommandLineOption> m_options;
    QString m_errorText;
};

} // namespace Ond::Program
