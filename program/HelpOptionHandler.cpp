#include "program/HelpOptionHandler.h"

#include "program/LogChannel.h"

#include <QStringList>

#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace Ond::Program {

HelpOptionHandler::HelpOptionHandler(const QString& programName, const OptionGroupConstSPtr& globalOptions)
    : m_programName(programName)
    , m_globalOptions(globalOptions)
{
    int width = 0;
    if (consoleWidth(STDOUT_FILENO, width) && width > m_indentation)
        m_textWidth = width;
}

bool HelpOptionHandler::consoleWidth(int fd, int& width)
{
    winsize size{};
    if (::ioctl(fd, TIOCGWINSZ, &size) != 0)
        return false;
    width = size.ws_col;
    return true;
}

QList<TypedCommandLineOption> HelpOptionHandler::options() const
{
    return {TypedCommandLineOption(
        QStringList{QStringLiteral("help"), QStringLiteral("h"), QStringLiteral("?")},
        QStringLiteral("Display help about given subcommand.\nIf no subcommand is provided, this help about "
                       "global options is printed."))};
}

void HelpOptionHandler::handle(const QString& commandName, const QString&, const QVariant& value, bool& handled)
{
    if (!value.toBool())
        return;
    const QByteArray bytes = helpText(commandName).toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
    handled = true;
}

QString HelpOptionHandler::wrap(const QString& text, int indentation, int width)
{
    const QString pad(qMax(0, indentation), QLatin1Char(' '));
    QStringList lines = text.split(QLatin1Char('\n'));
    // A closing line break ends the last line; it does not open an empty one.
    if (lines.size() > 1 && lines.last().isEmpty())
        lines.removeLast();

    QString out;
    for (const QString& line : lines) {
        const QStringList words = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        if (words.isEmpty()) {
            out += QLatin1Char('\n');
            continue;
        }
        QString current = pad + words.first();
        for (qsizetype i = 1; i < words.size(); ++i) {
            const QString& word = words.at(i);
            if (current.size() + 1 + word.size() < width) {
                current += QLatin1Char(' ') + word;
            } else {
                out += current + QLatin1Char('\n');
                current = pad + word;
            }
        }
        out += current + QLatin1Char('\n');
    }
    return out;
}

QString HelpOptionHandler::optionNamesText(const TypedCommandLineOption& option)
{
    QStringList names;
    for (const QString& name : option.names())
        names << TypedCommandLineOption::dashedName(name);
    QString text = names.join(QStringLiteral(", "));
    if (!option.isFlag())
        text += QStringLiteral(" <%1>").arg(option.valueName());
    return text;
}

QString HelpOptionHandler::optionDescriptionText(const TypedCommandLineOption& option)
{
    QString text = option.description();
    const QStringList defaults = option.defaultTexts();
    if (!defaults.isEmpty()) {
        if (!text.isEmpty() && !text.back().isSpace())
            text += QLatin1Char(' ');
        text += QStringLiteral("[default: \"") + defaults.join(QStringLiteral("\", \"")) + QStringLiteral("\"]");
    }
    return text;
}

QString HelpOptionHandler::usageText(const QString& commandName) const
{
    const int half = m_indentation / 2;
    QString out = QStringLiteral("Usage:\n");
    const QString global = m_programName + QStringLiteral(" [<global_option>...]");
    const QString tail = QStringLiteral(" [<option>...] <inputs>...\n");
    if (commandName.isEmpty()) {
        out += wrap(global + QStringLiteral(" <command>") + tail, half, m_textWidth);
        out += wrap(global + QLatin1Char('\n'), half, m_textWidth);
    } else {
        out += wrap(global + QLatin1Char(' ') + commandName + tail, half, m_textWidth);
    }
    return out;
}

QString HelpOptionHandler::groupText(const OptionGroup& group) const
{
    QString entries;
    for (const TypedCommandLineOption& option : group.options()) {
        if (option.isHidden())
            continue;
        entries += wrap(optionNamesText(option), 0, m_textWidth);
        const QString description = optionDescriptionText(option);
        if (!description.isEmpty())
            entries += wrap(description, m_indentation, m_textWidth);
    }
    if (entries.isEmpty())
        return QString();
    return QStringLiteral("\n") + wrap(group.name() + QLatin1Char(':'), 0, m_textWidth) + entries;
}

QString HelpOptionHandler::helpText(const QString& commandName) const
{
    QString out;
    if (commandName.isEmpty()) {
        out += usageText(QString());
        out += QStringLiteral("\nAvailable commands are:\n");
        for (const ProgramCommandSPtr& command : commands()) {
            out += wrap(command->name(), m_indentation / 2, m_textWidth);
            if (!command->description().isEmpty())
                out += wrap(command->description(), m_indentation, m_textWidth);
        }
    } else {
        const ProgramCommandSPtr command = this->command(commandName);
        if (!command) {
            Core::cliParserChannel().error(QStringLiteral("Unknown command \"%1\".").arg(commandName));
            return QString();
        }
        out += usageText(commandName);
        if (!command->description().isEmpty()) {
            out += QStringLiteral("\nDescription:\n");
            out += wrap(command->description(), m_indentation, m_textWidth);
        }
        for (const OptionGroup& group : command->optionGroups())
            out += groupText(group);
    }
    if (m_globalOptions)
        out += groupText(*m_globalOptions);
    return out;
}

} // namespace Ond::Program
