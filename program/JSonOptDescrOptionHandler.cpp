#include "program/JSonOptDescrOptionHandler.h"

#include "program/LogChannel.h"

#include <QJsonArray>
#include <QMetaType>

#include <cstdio>

namespace Ond::Program {

JSonOptDescrOptionHandler::JSonOptDescrOptionHandler(const QString& programName,
                                                     const OptionGroupConstSPtr& globalOptions)
    : m_programName(programName)
    , m_globalOptions(globalOptions)
{
}

QList<TypedCommandLineOption> JSonOptDescrOptionHandler::options() const
{
    TypedCommandLineOption option(QStringLiteral("opt-descr"),
                                  QStringLiteral("Create json description of all available options"));
    option.setHidden(true);
    return {option};
}

void JSonOptDescrOptionHandler::handle(const QString& commandName, const QString&, const QVariant& value,
                                       bool& handled)
{
    if (!value.toBool())
        return;
    const QJsonDocument document = description(commandName);
    if (!document.isNull()) {
        QByteArray bytes = document.toJson(QJsonDocument::Indented);
        if (!bytes.endsWith('\n'))
            bytes += '\n';
        std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
        std::fflush(stdout);
    }
    handled = true;
}

QString JSonOptDescrOptionHandler::typeName(int type)
{
    switch (type) {
    case QMetaType::Bool:
        return QStringLiteral("bool");
    case QMetaType::Int:
    case QMetaType::LongLong:
        return QStringLiteral("integer");
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        return QStringLiteral("non-negative integer");
    case QMetaType::Double:
        return QStringLiteral("real");
    case QMetaType::Char:
        return QStringLiteral("character");
    case QMetaType::QString:
        return QStringLiteral("string");
    case QMetaType::QStringList:
        return QStringLiteral("string list");
    case QMetaType::QByteArray:
        return QStringLiteral("bytes");
    case QMetaType::QSize:
    case QMetaType::QPoint:
        return QStringLiteral("integer,integer");
    case QMetaType::QSizeF:
    case QMetaType::QPointF:
        return QStringLiteral("real,real");
    case QMetaType::UnknownType:
        return QStringLiteral("invalid");
    case QMetaType::User:
        return QStringLiteral("user");
    default:
        return QStringLiteral("unknown");
    }
}

QJsonObject JSonOptDescrOptionHandler::optionObject(const TypedCommandLineOption& option)
{
    QJsonObject object;
    const QStringList names = option.names();
    object.insert(QStringLiteral("name"), names.value(0));
    if (names.size() > 1)
        object.insert(QStringLiteral("alternate names"), QJsonArray::fromStringList(names.mid(1)));
    if (!option.description().isEmpty())
        object.insert(QStringLiteral("description"), option.description());
    object.insert(QStringLiteral("type"), typeName(option.type()));
    const QStringList defaults = option.defaultTexts();
    if (!defaults.isEmpty()) {
        if (defaults.size() == 1 && !option.isStringList())
            object.insert(QStringLiteral("default"), defaults.first());
        else
            object.insert(QStringLiteral("default"), QJsonArray::fromStringList(defaults));
    }
    return object;
}

QJsonObject JSonOptDescrOptionHandler::commandObject(const ProgramCommand& command)
{
    QJsonObject object;
    object.insert(QStringLiteral("name"), command.name());
    if (!command.description().isEmpty())
        object.insert(QStringLiteral("description"), command.description());
    QJsonArray options;
    QJsonArray categories;
    for (const OptionGroup& group : command.optionGroups()) {
        QJsonArray groupOptions;
        for (const TypedCommandLineOption& option : group.options()) {
            QJsonObject entry = optionObject(option);
            groupOptions.append(entry);
            entry.insert(QStringLiteral("category"), group.name());
            options.append(entry);
        }
        QJsonObject category;
        category.insert(QStringLiteral("name"), group.name());
        category.insert(QStringLiteral("description"), group.description());
        category.insert(QStringLiteral("options"), groupOptions);
        categories.append(category);
    }
    object.insert(QStringLiteral("options"), options);
    object.insert(QStringLiteral("categories"), categories);
    return object;
}

QJsonDocument JSonOptDescrOptionHandler::description(const QString& commandName) const
{
    if (!commandName.isEmpty()) {
        const ProgramCommandSPtr command = this->command(commandName);
        if (!command) {
            Core::cliParserChannel().error(QStringLiteral("Unknown command \"%1\".").arg(commandName));
            return QJsonDocument();
        }
        return QJsonDocument(commandObject(*command));
    }

    QJsonArray globalOptions;
    if (m_globalOptions) {
        for (const TypedCommandLineOption& option : m_globalOptions->options())
            globalOptions.append(optionObject(option));
    }
    QJsonObject global;
    global.insert(QStringLiteral("name"), QString());
    global.insert(QStringLiteral("options"), globalOptions);

    QJsonArray all;
    all.append(global);
    // Sorted by name, as help lists them.
    for (const ProgramCommandSPtr& command : commands())
        all.append(commandObject(*command));
    return QJsonDocument(all);
}

} // namespace Ond::Program
