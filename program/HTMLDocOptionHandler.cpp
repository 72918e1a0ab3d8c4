#include "program/HTMLDocOptionHandler.h"

#include "program/HelpOptionHandler.h"
#include "program/LogChannel.h"

namespace Ond::Program {

namespace {

QString openTag(const QString& tag) { return QStringLiteral("<%1>").arg(tag); }
QString closeTag(const QString& tag) { return QStringLiteral("</%1>").arg(tag); }
QString openTag(const QString& tag, const QString& attributes)
{
    return QStringLiteral("<%1 %2>").arg(tag, attributes);
}
QString element(const QString& tag, const QString& content, const QString& attributes)
{
    return QStringLiteral("<%1 %3>%2</%1>").arg(tag, content, attributes);
}
QString element(const QString& tag, const QString& content)
{
    return openTag(tag) + content + closeTag(tag);
}
QString heading(int level) { return QStringLiteral("h%1").arg(level); }

} // namespace

HTMLDocOptionHandler::HTMLDocOptionHandler(const QString& programName, const OptionGroupConstSPtr& globalOptions)
    : m_programName(programName)
    , m_globalOptions(globalOptions)
{
}

QList<TypedCommandLineOption> HTMLDocOptionHandler::options() const
{
    TypedCommandLineOption option(QStringList{QStringLiteral("doc-html"), QStringLiteral("doc")},
                                  QStringLiteral("Generate basic documentation html from the option's help."));
    option.setHidden(true);
    return {option};
}

void HTMLDocOptionHandler::handle(const QString& commandName, const QString&, const QVariant& value,
                                  bool& handled)
{
    if (!value.toBool())
        return;
    IndentingPrinter printer(stdout);
    write(commandName, printer);
    handled = true;
}

QString HTMLDocOptionHandler::escape(const QString& text)
{
    QString out = text;
    out.replace(QLatin1Char('&'), QStringLiteral("&amp;"));
    out.replace(QLatin1Char('"'), QStringLiteral("&quot;"));
    out.replace(QLatin1Char('/'), QStringLiteral("&frasl;"));
    return out;
}

bool HTMLDocOptionHandler::write(const QString& commandName, IndentingPrinter& printer) const
{
    QList<ProgramCommandSPtr> selected;
    if (commandName.isEmpty()) {
        selected = commands().values();
    } else {
        const ProgramCommandSPtr command = this->command(commandName);
        if (!command) {
            Core::cliParserChannel().error(QStringLiteral("Unknown command \"%1\".").arg(commandName));
            return false;
        }
        selected = {command};
    }

    printer.print(openTag(QStringLiteral("html"), QStringLiteral("lang=\"en\"")));
    printer.indent();
    printer.print(openTag(QStringLiteral("body")));
    printer.indent();

    printer.print(element(heading(1), escape(m_programName)));
    printer.print(element(heading(2), QStringLiteral("Usage")));
    printer.print(element(QStringLiteral("p"), escape(QStringLiteral("%1 [<options>...]").arg(m_programName))));

    printer.print(openTag(QStringLiteral("ul")));
    printer.indent();
    for (const ProgramCommandSPtr& command : selected) {
        const QString name = escape(command->name());
        printer.print(element(QStringLiteral("li"),
                              element(QStringLiteral("a"), QStringLiteral("Subcommand ") + name,
                                      QStringLiteral("href=\"#%1\"").arg(name))));
    }
    printer.unindent();
    printer.print(closeTag(QStringLiteral("ul")));

    if (m_globalOptions)
        writeGroup(*m_globalOptions, printer);

    for (const ProgramCommandSPtr& command : selected)
        writeCommand(*command, printer);

    printer.unindent();
    printer.print(closeTag(QStringLiteral("body")));
    printer.unindent();
    printer.print(closeTag(QStringLiteral("html")));
    return true;
}

void HTMLDocOptionHandler::writeCommand(const ProgramCommand& command, IndentingPrinter& printer) const
{
    const QString name = escape(command.name());
    printer.print(element(heading(2),
                          element(QStringLiteral("a"), QStringLiteral("Subcommand ") + name,
                                  QStringLiteral("name=\"%1\"").arg(name))));
    if (!command.description().isEmpty()) {
        printer.print(element(heading(3), QStringLiteral("Description")));
        printer.print(openTag(QStringLiteral("p")));
        printer.indent();
        printer.print(escape(command.description()));
        printer.unindent();
        printer.print(closeTag(QStringLiteral("p")));
    }
    printer.print(element(heading(3), QStringLiteral("Usage")));
    printer.print(element(QStringLiteral("p"),
                          escape(QStringLiteral("%1 [<global_options>...] %2 [<options>...]")
                                     .arg(m_programName, command.name()))));
    for (const OptionGroup& group : command.optionGroups())
        writeGroup(group, printer);
}

void HTMLDocOptionHandler::writeGroup(const OptionGroup& group, IndentingPrinter& printer) const
{
    printer.print(element(heading(3), escape(group.name())));
    if (!group.description().isEmpty())
        printer.print(element(QStringLiteral("p"), escape(group.description())));
    printer.print(openTag(QStringLiteral("ul")));
    printer.indent();
    for (const TypedCommandLineOption& option : group.options()) {
        if (option.isHidden())
            continue;
        const QStringList names = option.names();
        const QString mainName = TypedCommandLineOption::dashedName(names.value(0));
        QString head = mainName;
        if (!option.isFlag())
            head += QStringLiteral(" <%1>").arg(option.valueName());

        printer.print(openTag(QStringLiteral("li")));
        printer.indent();
        printer.print(element(QStringLiteral("strong"), escape(head)));
        const QString description = HelpOptionHandler::optionDescriptionText(option);
        if (!description.isEmpty())
            printer.print(element(QStringLiteral("p"), escape(description)));
        printer.unindent();
        printer.print(closeTag(QStringLiteral("li")));

        for (qsizetype i = 1; i < names.size(); ++i) {
            printer.print(element(QStringLiteral("li"),
                                  element(QStringLiteral("strong"),
                                          escape(TypedCommandLineOption::dashedName(names.at(i))))
                                      + QStringLiteral(" Alias to ") + escape(mainName)));
        }
    }
    printer.unindent();
    printer.print(closeTag(QStringLiteral("ul")));
}

} // namespace Ond::Program
