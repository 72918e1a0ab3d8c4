#include "program/TypedCommandLineOption.h"

#include <QPoint>
#include <QRect>
#include <QPointF>
#include <QSize>
#include <QSizeF>
#include <QUrl>

#include <gtest/gtest.h>

using Ond::Program::TypedCommandLineOption;

namespace {

QVariant convert(int type, const QString& text, bool expectOk = true)
{
    bool ok = !expectOk;
    const QVariant value = TypedCommandLineOption::convert(type, text, &ok);
    EXPECT_EQ(ok, expectOk) << "type " << type << " text " << text.toStdString();
    EXPECT_EQ(value.isValid(), expectOk);
    return value;
}

} // namespace

TEST(TypedCommandLineOption, BoolAcceptsOnlyItsTwoCaseSensitiveLists)
{
    for (const char* text : {"true", "on", "yes", "1"})
        EXPECT_TRUE(convert(QMetaType::Bool, QString::fromLatin1(text)).toBool());
    for (const char* text : {"false", "off", "no", "0"}) {
        const QVariant value = convert(QMetaType::Bool, QString::fromLatin1(text));
        EXPECT_EQ(value.metaType().id(), QMetaType::Bool);
        EXPECT_FALSE(value.toBool());
    }
    for (const char* text : {"maybe", "YES", "True", "", "2"})
        convert(QMetaType::Bool, QString::fromLatin1(text), false);
}

TEST(TypedCommandLineOption, IntegersParseInBaseTenAndMustFit)
{
    EXPECT_EQ(convert(QMetaType::Int, "-42").toInt(), -42);
    convert(QMetaType::Int, "2147483648", false);
    convert(QMetaType::Int, "0x10", false);
    convert(QMetaType::Int, "1.5", false);
    convert(QMetaType::UInt, "-1", false);
    EXPECT_EQ(convert(QMetaType::UInt, "4294967295").toUInt(), 4294967295u);
    EXPECT_EQ(convert(QMetaType::LongLong, "-9000000000").toLongLong(), -9000000000LL);
    EXPECT_EQ(convert(QMetaType::ULongLong, "18446744073709551615").toULongLong(), 18446744073709551615ULL);
    convert(QMetaType::ULongLong, "18446744073709551616", false);
}

TEST(TypedCommandLineOption, RealsUseAPointWhateverTheLocale)
{
    EXPECT_DOUBLE_EQ(convert(QMetaType::Double, "0.5").toDouble(), 0.5);
    EXPECT_DOUBLE_EQ(convert(QMetaType::Double, "-1e3").toDouble(), -1000.0);
    convert(QMetaType::Double, "0,5", false);
    convert(QMetaType::Double, "abc", false);
    // Read as numbers by the library, but no option means them.
    for (const char* text : {"nan", "NaN", "-nan", "inf", "-inf", "infinity", "1e999"})
        convert(QMetaType::Double, text, false);
    convert(QMetaType::QSizeF, "nan,1", false);
    convert(QMetaType::QPointF, "1,inf", false);
}

TEST(TypedCommandLineOption, PairsNeedExactlyTwoParts)
{
    EXPECT_EQ(convert(QMetaType::QSize, "10,11").toSize(), QSize(10, 11));
    EXPECT_EQ(convert(QMetaType::QPoint, "-1,2").toPoint(), QPoint(-1, 2));
    convert(QMetaType::QSize, "10", false);
    convert(QMetaType::QSize, "10,11,12", false);
    convert(QMetaType::QSize, "10,", false);
    convert(QMetaType::QPoint, "1.5,2", false);
    EXPECT_EQ(convert(QMetaType::QSizeF, "0.5,2").toSizeF(), QSizeF(0.5, 2));
    EXPECT_EQ(convert(QMetaType::QPointF, "1,-2.25").toPointF(), QPointF(1, -2.25));
    convert(QMetaType::QPointF, "1", false);
}

TEST(TypedCommandLineOption, TextLikeTypes)
{
    EXPECT_EQ(convert(QMetaType::QString, "a b").toString(), "a b");
    EXPECT_EQ(convert(QMetaType::QStringList, "x").toStringList(), QStringList{"x"});
    EXPECT_EQ(convert(QMetaType::QByteArray, QString::fromUtf8("é")).toByteArray(), QByteArray("\xc3\xa9"));
    EXPECT_EQ(convert(QMetaType::QUrl, "file:///tmp/a.obj").toUrl(), QUrl("file:///tmp/a.obj"));
    convert(QMetaType::QUrl, "", false);
    EXPECT_EQ(convert(QMetaType::Char, "x").value<char>(), 'x');
    convert(QMetaType::Char, "xy", false);
    convert(QMetaType::Char, "", false);
    // A type without conversion never converts.
    convert(QMetaType::QRect, "1,2,3,4", false);
    EXPECT_FALSE(TypedCommandLineOption::isConvertible(QMetaType::QRect));
}

TEST(TypedCommandLineOption, ValuesBackToText)
{
    using T = TypedCommandLineOption;
    EXPECT_EQ(T::toText(true), "yes");
    EXPECT_EQ(T::toText(false), "no");
    EXPECT_EQ(T::toText(-7), "-7");
    EXPECT_EQ(T::toText(7u), "7");
    EXPECT_EQ(T::toText(1.0 / 3.0), "0.333333");
    EXPECT_EQ(T::toText(1234567.0), "1.23457e+06");
    EXPECT_EQ(T::toText(QStringList{"a", "b"}), "a b");
    EXPECT_EQ(T::toText(QSize(10, 11)), "10,11");
    EXPECT_EQ(T::toText(QPoint(-1, 2)), "-1,2");
    EXPECT_EQ(T::toText(QSizeF(0.1, 2)), "0.1,2");
    EXPECT_EQ(T::toText(QPointF(0.125, -3)), "0.125,-3");
    EXPECT_EQ(T::toText(QUrl("file:///a")), "file:///a");
    EXPECT_EQ(T::toText(QVariant()), "(N/A)");
    EXPECT_EQ(T::toText(QVariant(QRect(1, 2, 3, 4))), "(Advanced type)");
}

TEST(TypedCommandLineOption, ValueNames)
{
    EXPECT_EQ(TypedCommandLineOption("flag").valueName(), "");
    EXPECT_EQ(TypedCommandLineOption("s", QMetaType::QString).valueName(), "string");
    EXPECT_EQ(TypedCommandLineOption("l", QMetaType::QStringList).valueName(), "string");
    EXPECT_EQ(TypedCommandLineOption("i", QMetaType::Int).valueName(), "int");
    EXPECT_EQ(TypedCommandLineOption("size", QMetaType::QSize).valueName(), "qsize");
    EXPECT_EQ(TypedCommandLineOption("b", QMetaType::Bool).valueName(), "bool");
    EXPECT_EQ(TypedCommandLineOption("o", QMetaType::QSize, "d", "w>,<h").valueName(), "w>,<h");
    // A bool option takes a value, a flag does not.
    EXPECT_FALSE(TypedCommandLineOption("b", QMetaType::Bool).option().valueName().isEmpty());
    EXPECT_TRUE(TypedCommandLineOption("f", "a flag").option().valueName().isEmpty());
    EXPECT_EQ(TypedCommandLineOption("f").typeName(), "Boolean flag");
    EXPECT_EQ(TypedCommandLineOption("f").type(), int(0xA344C9F0u));
}

TEST(TypedCommandLineOption, DefaultsAreTextConvertedToTheType)
{
    TypedCommandLineOption size("size", QMetaType::QSize);
    size.setDefaultValue("5,6");
    EXPECT_EQ(size.defaultTexts(), QStringList{"5,6"});
    ASSERT_EQ(size.defaultValues().size(), 1);
    EXPECT_EQ(size.defaultValues().first().toSize(), QSize(5, 6));

    TypedCommandLineOption flag(QStringList{"flag", "f"});
    flag.setDefaultValue("true");
    EXPECT_TRUE(flag.defaultValues().isEmpty());
    EXPECT_EQ(flag.key(), "flag");

    TypedCommandLineOption real("real", QMetaType::Double);
    real.setDefaultVariant(0.5);
    EXPECT_EQ(real.defaultTexts(), QStringList{"0.5"});
    EXPECT_DOUBLE_EQ(real.defaultValues().first().toDouble(), 0.5);

    TypedCommandLineOption boolean("b", QMetaType::Bool);
    boolean.setDefaultVariant(false);
    EXPECT_EQ(boolean.defaultTexts(), QStringList{"no"});
    EXPECT_FALSE(boolean.defaultValues().first().toBool());
}
