#pragma once
// What a command line parsed into: converted option values by option key, and
// the positional arguments.

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace Ond::Program {

struct ParsedValues
{
    QHash<QString, QVariant> options;
    QStringList positionalArguments;

    bool contains(const QString& key) const { return options.contains(key); }
    QVariant value(const QString& key) const { return options.value(key); }
};

} // namespace Ond::Program
