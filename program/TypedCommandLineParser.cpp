#include "program/TypedCommandLineParser.h"

#include "program/OptionGroup.h"

namespace Ond::Program {

TypedCommandLineParser::TypedCommandLineParser() = default;

void TypedCommandLineParser::addOption(const TypedCommandLineOption& option)
{
    if (m_parser.addOption(option.option()))
        m_options.append(option);
}

void TypedCommandLineParser::addOptions(const QList<TypedCommandLineOption>& options)
{
    for (const TypedCommandLineOption& option : options)
        addOption(option);
}

void TypedCommandLineParser::addOptions(const OptionGroup& group) { addOptions(group.options()); }

const TypedCommandLineOption* TypedCommandLineParser::findOption(const QString& name) const
{
    for (const TypedCommandLineOption& option : m_options) {
        if (option.names().contains(name))
            return &option;
    }
    return nullptr;
}

bool TypedCommandLineParser::parse(const QStringList& arguments)
{
    m_errorText.clear();
    if (!m_parser.parse(arguments))
        return false;
    return validate();
}

QVariant TypedCommandLineParser::value(const QString& name) const
{
    const TypedCommandLineOption* option = findOption(name);
    if (!option)
        return QVariant();
    if (option->isFlag())
        return m_parser.isSet(name);
    if (option->isStringList())
        return m_parser.values(name);
    return option->convert(m_parser.value(name));
}

bool TypedCommandLineParser::validate()
{
    for (const QString& name : m_parser.optionNames()) {
        const TypedCommandLineOption* option = findOption(name);
        if (!option)
            continue;
        if (value(name).isValid())
            continue;
        if (!option->isFlag()) {
            m_errorText = QStringLiteral("Option %1 expected a value of type %2, but received non-convertible \"%3\".")
                              .arg(name, option->typeName(), m_parser.value(name));
        } else {
            m_errorText = QStringLiteral("Could not determine if flag %1 is set or not.").arg(name);
            const QString given = m_parser.value(name);
            if (!given.isEmpty())
                m_errorText += QStringLiteral(" It is wrongly associated with a value, \"%2\".").arg(given);
        }
        return false;
    }
    return true;
}

ParsedValues TypedCommandLineParser::values() const
{
    ParsedValues result;
    for (const QString& name : m_parser.optionNames()) {
        const TypedCommandLineOption* option = findOption(name);
        if (!option)
            continue;
        const QVariant converted = value(name);
        if (converted.isValid())
            result.options.insert(option->key(), converted);
    }
    for (const TypedCommandLineOption& option : m_options) {
        const QString key = option.key();
        if (result.options.contains(key))
            continue;
        if (option.isFlag()) {
            result.options.insert(key, false);
        } else if (option.isStringList()) {
            // A list with a single default starts out absent.
            if (option.defaultTexts().size() > 1)
                result.options.insert(key, option.defaultTexts());
        } else if (option.defaultValues().size() == 1 && option.defaultValues().first().isValid()) {
            result.options.insert(key, option.defaultValues().first());
        }
    }
    result.positionalArguments = m_parser.positionalArguments();
    return result;
}

QString TypedCommandLineParser::errorText() const
{
    const QString qtError = m_parser.errorText();
    return qtError.isEmpty() ? m_errorText : qtError;
}

} // namespace Ond::Program
