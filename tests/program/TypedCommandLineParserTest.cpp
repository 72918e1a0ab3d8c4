#include "program/TypedCommandLineParser.h"

#include <QSize>

#include <gtest/gtest.h>

using Ond::Program::TypedCommandLineOption;
using Ond::Program::TypedCommandLineParser;

namespace {

// Options shaped like a baker command's.
void addBakerLikeOptions(TypedCommandLineParser& parser)
{
    parser.addOption(TypedCommandLineOption("inputs", QMetaType::QStringList, "Mesh files.", "path"));
    parser.addOption(TypedCommandLineOption("output-size", QMetaType::QSize, "Size.", "w>,<h"));
    parser.addOption(TypedCommandLineOption("use-cage", QMetaType::Bool, "Cage."));
    parser.addOption(TypedCommandLineOption(QStringList{"quiet", "q"}, "Quiet."));
    parser.addOption(TypedCommandLineOption("max-rear", QMetaType::Double, "Rear."));
}

} // namespace

TEST(TypedCommandLineParser, BadValuesAreReportedWithTheTypeName)
{
    struct Case
    {
        QStringList args;
        QString error;
    };
    const QList<Case> cases = {
        {{"p", "--output-size", "10"},
         "Option output-size expected a value of type QSize, but received non-convertible \"10\"."},
        {{"p", "--output-size=10,11,12"},
         "Option output-size expected a value of type QSize, but received non-convertible \"10,11,12\"."},
        {{"p", "--use-cage", "maybe"},
         "Option use-cage expected a value of type bool, but received non-convertible \"maybe\"."},
        {{"p", "--use-cage", "YES"},
         "Option use-cage expected a value of type bool, but received non-convertible \"YES\"."},
        {{"p", "--max-rear", "0,5"},
         "Option max-rear expected a value of type double, but received non-convertible \"0,5\"."},
    };
    for (const Case& c : cases) {
        TypedCommandLineParser parser;
        addBakerLikeOptions(parser);
        EXPECT_FALSE(parser.parse(c.args)) << c.args.join(' ').toStdString();
        EXPECT_EQ(parser.errorText(), c.error);
    }
}

TEST(TypedCommandLineParser, QtReportsUnknownOptionsAndMissingValues)
{
    TypedCommandLineParser parser;
    addBakerLikeOptions(parser);
    EXPECT_FALSE(parser.parse({"p", "--nope"}));
    EXPECT_EQ(parser.errorText(), "Unknown option 'nope'.");

    TypedCommandLineParser missing;
    addBakerLikeOptions(missing);
    EXPECT_FALSE(missing.parse({"p", "--output-size"}));
    EXPECT_EQ(missing.errorText(), "Missing value after '--output-size'.");
}

TEST(TypedCommandLineParser, ValuesMayStandAnywhereUntilDoubleDash)
{
    TypedCommandLineParser parser;
    addBakerLikeOptions(parser);
    ASSERT_TRUE(parser.parse({"p", "cmd", "a.fbx", "b.fbx", "--output-size", "11,11", "-q", "--", "--use-cage"}))
        << parser.errorText().toStdString();
    const auto values = parser.values();
    EXPECT_EQ(values.positionalArguments, (QStringList{"cmd", "a.fbx", "b.fbx", "--use-cage"}));
    EXPECT_EQ(values.value("output-size").toSize(), QSize(11, 11));
    EXPECT_EQ(values.value("quiet"), QVariant(true));
    EXPECT_FALSE(values.contains("use-cage"));
    EXPECT_FALSE(values.contains("q")) << "values are stored under the first name";
}

TEST(TypedCommandLineParser, ValueSetHoldsGivenValuesThenDefaults)
{
    TypedCommandLineParser parser;
    TypedCommandLineOption single("single-list", QMetaType::QStringList);
    single.setDefaultValue("only");
    TypedCommandLineOption twin("twin-list", QMetaType::QStringList);
    twin.setDefaultValues({"a", "b"});
    TypedCommandLineOption sized("size", QMetaType::QSize);
    sized.setDefaultValue("5,5");
    TypedCommandLineOption badDefault("bad", QMetaType::Int);
    badDefault.setDefaultValue("x");
    parser.addOptions({single, twin, sized, badDefault, TypedCommandLineOption("flag"),
                       TypedCommandLineOption("inputs", QMetaType::QStringList)});
    ASSERT_TRUE(parser.parse({"p", "--inputs", "1", "--inputs=2"}));
    const auto values = parser.values();

    EXPECT_EQ(values.value("inputs").toStringList(), (QStringList{"1", "2"}));
    EXPECT_FALSE(values.contains("single-list")) << "a list with one default starts out absent";
    EXPECT_EQ(values.value("twin-list").toStringList(), (QStringList{"a", "b"}));
    EXPECT_EQ(values.value("size").toSize(), QSize(5, 5));
    EXPECT_FALSE(values.contains("bad"));
    EXPECT_EQ(values.value("flag"), QVariant(false));
    EXPECT_TRUE(values.positionalArguments.isEmpty());
}

TEST(TypedCommandLineParser, ADuplicateNameIsNotAddedTwice)
{
    TypedCommandLineParser parser;
    parser.addOption(TypedCommandLineOption("x", QMetaType::Int));
    parser.addOption(TypedCommandLineOption("x", QMetaType::QString));
    ASSERT_EQ(parser.options().size(), 1);
    EXPECT_EQ(parser.options().first().type(), QMetaType::Int);
    EXPECT_FALSE(parser.value("unknown").isValid());
}
