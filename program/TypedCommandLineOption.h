#pragma once
// A command-line option with a value type. The parser accepts any text; this
// class turns it into a QVariant of the declared type, and back into text for
// defaults and help.

#include <QCommandLineOption>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantList>

namespace Ond::Program {

class TypedCommandLineOption
{
public:
    // Not a QMetaType: a switch that takes no value and is either present or not.
    static constexpr int FlagType = int(0xA344C9F0u);

    // Without a type the option is a flag.
    explicit TypedCommandLineOption(const QString& name);
    explicit TypedCommandLineOption(const QStringList& names);
    TypedCommandLineOption(const QString& name, const QString& description);
    TypedCommandLineOption(const QStringList& names, const QString& description);
    TypedCommandLineOption(const QString& name, int type);
    TypedCommandLineOption(const QStringList& names, int type);
    TypedCommandLineOption(const QString& name, int type, const QString& description,
                           const QString& valueName = QString());
    TypedCommandLineOption(const QStringList& names, int type, const QString& description,
                           const QString& valueName = QString());
    virtual ~TypedCommandLineOption();

    // What QCommandLineParser is given.
    const QCommandLineOption& option() const { return m_option; }

    QStringList names() const { return m_option.names(); }
    // The first name: the option's key in parsed values and handler tables.
    QString key() const;

    int type() const { return m_type; }
    bool isFlag() const { return m_type == FlagType; }
    bool isStringList() const { return m_type == QMetaType::QStringList; }
    // The QMetaType name, or "Boolean flag".
    QString typeName() const;

    QString description() const { return m_option.description(); }
    void setDescription(const QString& description);

    // As help shows it between angle brackets; empty for a flag.
    QString valueName() const;
    void setValueName(const QString& valueName);

    bool isHidden() const;
    void setHidden(bool hidden);

    // Defaults are stored as text, and converted to the option's type.
    void setDefaultValue(const QString& text);
    void setDefaultValues(const QStringList& texts);
    // Stores the value's text (see toText).
    void setDefaultVariant(const QVariant& value);
    QStringList defaultTexts() const { return m_option.defaultValues(); }
    // Empty for a flag and where a text does not convert.
    const QVariantList& defaultValues() const { return m_defaultValues; }

    // One command-line text into this option's type. Not ok gives an invalid
    // QVariant. A string list converts one text into a list of one.
    QVariant convert(const QString& text, bool* ok = nullptr) const;
    static QVariant convert(int type, const QString& text, bool* ok = nullptr);
    static bool isConvertible(int type);

    // Back to text, for defaults and help.
    static QString toText(const QVariant& value);
    // "-x" for one character, "--name" otherwise.
    static QString dashedName(const QString& name);
    // The QMetaType name of a type, or "Boolean flag".
    static QString typeName(int type);

private:
    void init(int type, const QString& valueName);
    void rebuildDefaults();

    QCommandLineOption m_option;
    int m_type = FlagType;
    QString m_explicitValueName;
    QVariantList m_defaultValues;
};

} // namespace Ond::Program
