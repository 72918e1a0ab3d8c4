#include "program/TypedCommandLineOption.h"

#include <cmath>

#include <QLocale>
#include <QMetaType>
#include <QPoint>
#include <QPointF>
#include <QSize>
#include <QSizeF>
#include <QUrl>


namespace Ond::Program {

namespace {

// Two numbers separated by a comma, empty parts kept so that "1," fails.
template <typename T, typename Parse>
bool parsePair(const QString& text, T& first, T& second, Parse parse)
{
    const QStringList parts = text.split(QLatin1Char(','), Qt::KeepEmptyParts);
    if (parts.size() != 2)
        return false;
    bool ok1 = false;
    bool ok2 = false;
    first = parse(parts.at(0), &ok1);
    second = parse(parts.at(1), &ok2);
    return ok1 && ok2;
}

int parseInt(const QString& s, bool* ok) { return s.toInt(ok, 10); }

// "nan" and "inf" read as numbers, but no option means them: they would only
// travel on into sizes, loops and rays.
double parseReal(const QString& s, bool* ok)
{
    const double value = s.toDouble(ok);
    if (*ok && !std::isfinite(value))
        *ok = false;
    return value;
}

QString shortest(double value) { return QString::number(value, 'g', QLocale::FloatingPointShortest); }

} // namespace

TypedCommandLineOption::TypedCommandLineOption(const QString& name)
    : m_option(name)
{
    init(FlagType, QString());
}

TypedCommandLineOption::TypedCommandLineOption(const QStringList& names)
    : m_option(names)
{
    init(FlagType, QString());
}

TypedCommandLineOption::TypedCommandLineOption(const QString& name, const QString& description)
    : m_option(name, description)
{
    init(FlagType, QString());
}

TypedCommandLineOption::TypedCommandLineOption(const QStringList& names, const QString& description)
    : m_option(names, description)
{
    init(FlagType, QString());
}

TypedCommandLineOption::TypedCommandLineOption(const QString& name, int type)
    : m_option(name)
{
    init(type, QString());
}

TypedCommandLineOption::TypedCommandLineOption(const QStringList& names, int type)
    : m_option(names)
{
    init(type, QString());
}

TypedCommandLineOption::TypedCommandLineOption(const QString& name, int type, const QString& description,
                                               const QString& valueName)
    : m_option(name, description)
{
    init(type, valueName);
}

TypedCommandLineOption::TypedCommandLineOption(const QStringList& names, int type,
                                               const QString& description, const QString& valueName)
    : m_option(names, description)
{
    init(type, valueName);
}

TypedCommandLineOption::~TypedCommandLineOption() = default;

void TypedCommandLineOption::init(int type, const QString& valueName)
{
    m_type = type;
    setValueName(valueName);
}

QString TypedCommandLineOption::key() const
{
    const QStringList all = m_option.names();
    return all.isEmpty() ? QString() : all.first();
}

QString TypedCommandLineOption::typeName() const { return typeName(m_type); }

QString TypedCommandLineOption::typeName(int type)
{
    if (type == FlagType)
        return QStringLiteral("Boolean flag");
    const QMetaType metaType(type);
    return metaType.isValid() ? QString::fromLatin1(metaType.name()) : QString();
}

void TypedCommandLineOption::setDescription(const QString& description)
{
    m_option.setDescription(description);
}

QString TypedCommandLineOption::valueName() const
{
    if (!m_explicitValueName.isEmpty())
        return m_explicitValueName;
    if (isFlag())
        return QString();
    if (m_type == QMetaType::QString || m_type == QMetaType::QStringList)
        return QStringLiteral("string");
    return typeName(m_type).toLower().replace(QLatin1Char(' '), QLatin1Char('_'));
}

void TypedCommandLineOption::setValueName(const QString& valueName)
{
    m_explicitValueName = valueName;
    // QCommandLineParser takes an option without value name for a switch, so
    // a typed option always carries one there, and a flag never does.
    if (isFlag()) {
        m_option.setValueName(QString());
    } else {
        const QString name = this->valueName();
        m_option.setValueName(name.isEmpty() ? QStringLiteral("value") : name);
    }
}

bool TypedCommandLineOption::isHidden() const
{
    return m_option.flags().testFlag(QCommandLineOption::HiddenFromHelp);
}

void TypedCommandLineOption::setHidden(bool hidden)
{
    QCommandLineOption::Flags flags = m_option.flags();
    flags.setFlag(QCommandLineOption::HiddenFromHelp, hidden);
    m_option.setFlags(flags);
}

void TypedCommandLineOption::setDefaultValue(const QString& text)
{
    m_option.setDefaultValue(text);
    rebuildDefaults();
}

void TypedCommandLineOption::setDefaultValues(const QStringList& texts)
{
    m_option.setDefaultValues(texts);
    rebuildDefaults();
}

void TypedCommandLineOption::setDefaultVariant(const QVariant& value)
{
    if (value.metaType().id() == QMetaType::QStringList)
        setDefaultValues(value.toStringList());
    else
        setDefaultValue(toText(value));
}

void TypedCommandLineOption::rebuildDefaults()
{
    m_defaultValues.clear();
    if (isFlag())
        return;
    for (const QString& text : m_option.defaultValues()) {
        bool ok = false;
        const QVariant value = convert(text, &ok);
        if (ok)
            m_defaultValues.append(value);
    }
}

QVariant TypedCommandLineOption::convert(const QString& text, bool* ok) const
{
    return convert(m_type, text, ok);
}

bool TypedCommandLineOption::isConvertible(int type)
{
    switch (type) {
    case FlagType:
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::QString:
    case QMetaType::QStringList:
    case QMetaType::QByteArray:
    case QMetaType::QUrl:
    case QMetaType::QSize:
    case QMetaType::QSizeF:
    case QMetaType::QPoint:
    case QMetaType::QPointF:
    case QMetaType::Char:
        return true;
    default:
        return false;
    }
}

QVariant TypedCommandLineOption::convert(int type, const QString& text, bool* ok)
{
    bool good = false;
    QVariant result;
    switch (type) {
    case FlagType:
        // Whether it is set is the parser's business; a text means "set".
        result = true;
        good = true;
        break;
    case QMetaType::Bool:
        if (text == QLatin1String("true") || text == QLatin1String("on") || text == QLatin1String("yes")
            || text == QLatin1String("1")) {
            result = true;
            good = true;
        } else if (text == QLatin1String("false") || text == QLatin1String("off")
                   || text == QLatin1String("no") || text == QLatin1String("0")) {
            result = false;
            good = true;
        }
        break;
    case QMetaType::Int:
        result = text.toInt(&good, 10);
        break;
    case QMetaType::UInt:
        result = text.toUInt(&good, 10);
        break;
    case QMetaType::LongLong:
        result = text.toLongLong(&good, 10);
        break;
    case QMetaType::ULongLong:
        result = text.toULongLong(&good, 10);
        break;
    case QMetaType::Double:
        result = parseReal(text, &good);
        break;
    case QMetaType::QString:
        result = text;
        good = true;
        break;
    case QMetaType::QStringList:
        result = QStringList{text};
        good = true;
        break;
    case QMetaType::QByteArray:
        result = text.toUtf8();
        good = true;
        break;
    case QMetaType::QUrl: {
        const QUrl url(text, QUrl::TolerantMode);
        good = url.isValid();
        result = url;
        break;
    }
    case QMetaType::QSize:
    case QMetaType::QPoint: {
        int a = 0;
        int b = 0;
        good = parsePair(text, a, b, parseInt);
        result = type == QMetaType::QSize ? QVariant(QSize(a, b)) : QVariant(QPoint(a, b));
        break;
    }
    case QMetaType::QSizeF:
    case QMetaType::QPointF: {
        double a = 0.0;
        double b = 0.0;
        good = parsePair(text, a, b, parseReal);
        result = type == QMetaType::QSizeF ? QVariant(QSizeF(a, b)) : QVariant(QPointF(a, b));
        break;
    }
    case QMetaType::Char:
        good = text.size() == 1;
        result = QVariant::fromValue<char>(text.isEmpty() ? '?' : text.at(0).toLatin1());
        break;
    default:
        break;
    }
    if (!good)
        result = QVariant();
    if (ok)
        *ok = good;
    return result;
}

QString TypedCommandLineOption::toText(const QVariant& value)
{
    if (!value.isValid())
        return QStringLiteral("(N/A)");
    const int type = value.metaType().id();
    switch (type) {
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::Short:
    case QMetaType::LongLong:
        return QString::number(value.toLongLong());
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::UShort:
    case QMetaType::ULongLong:
        return QString::number(value.toULongLong());
    case QMetaType::Double:
    case QMetaType::Float:
        return QString::number(value.toDouble(), 'g', 6);
    case QMetaType::QString:
        return value.toString();
    case QMetaType::QStringList:
        return value.toStringList().join(QLatin1Char(' '));
    case QMetaType::QByteArray:
        return QString::fromUtf8(value.toByteArray());
    case QMetaType::Char:
        return QString(QLatin1Char(value.value<char>()));
    case QMetaType::QSize: {
        const QSize s = value.toSize();
        return QStringLiteral("%1,%2").arg(s.width()).arg(s.height());
    }
    case QMetaType::QPoint: {
        const QPoint p = value.toPoint();
        return QStringLiteral("%1,%2").arg(p.x()).arg(p.y());
    }
    case QMetaType::QSizeF: {
        const QSizeF s = value.toSizeF();
        return QStringLiteral("%1,%2").arg(shortest(s.width()), shortest(s.height()));
    }
    case QMetaType::QPointF: {
        const QPointF p = value.toPointF();
        return QStringLiteral("%1,%2").arg(shortest(p.x()), shortest(p.y()));
    }
    case QMetaType::QUrl:
        return value.toUrl().toString();
    default:
        break;
    }
    if (type >= QMetaType::User)
        return QStringLiteral("(User type)");
    return QStringLiteral("(Advanced type)");
}

QString TypedCommandLineOption::dashedName(const QString& name)
{
    return (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name;
}

} // namespace Ond::Program
