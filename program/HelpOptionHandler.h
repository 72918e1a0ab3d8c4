#pragma once
// --help: usage, commands and options, wrapped to the console's width.

#include "program/CommandOptionDependentOptionHandler.h"
#include "program/OptionGroup.h"

#include <QString>

namespace Ond::Program {

class HelpOptionHandler : public CommandOptionDependentOptionHandler
{
public:
    // Asks the console on standard output for its width.
    HelpOptionHandler(const QString& programName, const OptionGroupConstSPtr& globalOptions);

    void handle(const QString& commandName, const QString& key, const QVariant& value, bool& handled) override;
    QList<TypedCommandLineOption> options() const override;

    int textWidth() const { return m_textWidth; }
    void setTextWidth(int width) { m_textWidth = width; }
    int indentation() const { return m_indentation; }

    // The whole help; empty with an error logged for an unknown command.
    QString helpText(const QString& commandName) const;

    // Splits at line breaks, then fills lines word by word after
    // `indentation` blanks, keeping each line shorter than `width`. A word
    // too long for a line stands alone on it.
    static QString wrap(const QString& text, int indentation, int width);
    // The width of the terminal on `fd`; false when it is no terminal.
    static bool consoleWidth(int fd, int& width);

    // "--name, -n <value>".
    static QString optionNamesText(const TypedCommandLineOption& option);
    // The description followed by "[default: ...]" when there are defaults.
    static QString optionDescriptionText(const TypedCommandLineOption& option);

private:
    QString usageText(const QString& commandName) const;
    QString groupText(const OptionGroup& group) const;

    QString m_programName;
    OptionGroupConstSPtr m_globalOptions;
    int m_textWidth = 80;
    int m_indentation = 12;
};

} // namespace Ond::Program
