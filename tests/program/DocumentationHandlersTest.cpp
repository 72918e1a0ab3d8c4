#include "FakeCommand.h"

#include "program/ClassicProgramOptions.h"
#include "program/HTMLDocOptionHandler.h"
#include "program/JSonOptDescrOptionHandler.h"

#include <QJsonArray>
#include <QJsonObject>

#include <gtest/gtest.h>

using namespace Ond::Program;
using ZmfTest::FakeCommand;
using ZmfTest::LogRecorder;

namespace {

struct DocTree
{
    DocTree()
        : options("zmfbaker", 14, 0, 1, 8268, "636da6f4")
    {
        auto bake = std::make_shared<FakeCommand>("bake", "Bakes a/b & \"c\".", "inputs");
        OptionGroup io("Input and output options", "Where things come from.");
        io.addOption(TypedCommandLineOption("inputs", QMetaType::QStringList, "Mesh files.", "path"));
        TypedCommandLineOption format("output-format", QMetaType::QString, "Format.", "format");
        format.setDefaultValue("png");
        io.addOption(format);
        TypedCommandLineOption list("highdef-mesh", QMetaType::QStringList, "High.", "path");
        list.setDefaultValue("h.obj");
        io.addOption(list);
        bake->addOptionGroup(io);
        OptionGroup specific("bake options");
        TypedCommandLineOption size(QStringList{"output-size", "s"}, QMetaType::QSize, "", "w>,<h");
        size.setDefaultValues({"10,10", "11,11"});
        specific.addOption(size);
        bake->addOptionGroup(specific);
        options.addCommand(bake);
        options.addCommand(std::make_shared<FakeCommand>("info", ""));
        json = dynamic_cast<JSonOptDescrOptionHandler*>(options.handler("opt-descr").get());
        html = dynamic_cast<HTMLDocOptionHandler*>(options.handler("doc-html").get());
    }

    ClassicProgramOptions options;
    JSonOptDescrOptionHandler* json = nullptr;
    HTMLDocOptionHandler* html = nullptr;
};

} // namespace

TEST(JSonOptDescrOptionHandler, TypeNames)
{
    using J = JSonOptDescrOptionHandler;
    EXPECT_EQ(J::typeName(QMetaType::Bool), "bool");
    EXPECT_EQ(J::typeName(QMetaType::Int), "integer");
    EXPECT_EQ(J::typeName(QMetaType::LongLong), "integer");
    EXPECT_EQ(J::typeName(QMetaType::UInt), "non-negative integer");
    EXPECT_EQ(J::typeName(QMetaType::ULongLong), "non-negative integer");
    EXPECT_EQ(J::typeName(QMetaType::Double), "real");
    EXPECT_EQ(J::typeName(QMetaType::Char), "character");
    EXPECT_EQ(J::typeName(QMetaType::QString), "string");
    EXPECT_EQ(J::typeName(QMetaType::QStringList), "string list");
    EXPECT_EQ(J::typeName(QMetaType::QByteArray), "bytes");
    EXPECT_EQ(J::typeName(QMetaType::QSize), "integer,integer");
    EXPECT_EQ(J::typeName(QMetaType::QPoint), "integer,integer");
    EXPECT_EQ(J::typeName(QMetaType::QSizeF), "real,real");
    EXPECT_EQ(J::typeName(QMetaType::QPointF), "real,real");
    EXPECT_EQ(J::typeName(0), "invalid");
    EXPECT_EQ(J::typeName(0x10000), "user");
    EXPECT_EQ(J::typeName(TypedCommandLineOption::FlagType), "unknown");
}

TEST(JSonOptDescrOptionHandler, CommandObjectShape)
{
    DocTree tree;
    const QJsonObject bake = tree.json->description("bake").object();
    EXPECT_EQ(bake.value("name").toString(), "bake");
    EXPECT_EQ(bake.value("description").toString(), "Bakes a/b & \"c\".");

    const QJsonArray options = bake.value("options").toArray();
    ASSERT_EQ(options.size(), 4);
    const QJsonObject inputs = options[0].toObject();
    EXPECT_EQ(inputs.value("name").toString(), "inputs");
    EXPECT_EQ(inputs.value("type").toString(), "string list");
    EXPECT_EQ(inputs.value("category").toString(), "Input and output options");
    EXPECT_FALSE(inputs.contains("default"));
    EXPECT_FALSE(inputs.contains("alternate names"));
    EXPECT_EQ(options[1].toObject().value("default"), QJsonValue("png"));
    EXPECT_EQ(options[2].toObject().value("default").toArray(), QJsonArray{"h.obj"}) << "a list type gives an array";
    const QJsonObject size = options[3].toObject();
    EXPECT_EQ(size.value("alternate names").toArray(), QJsonArray{"s"});
    EXPECT_EQ(size.value("default").toArray(), (QJsonArray{"10,10", "11,11"}));
    EXPECT_EQ(size.value("type").toString(), "integer,integer");
    EXPECT_FALSE(size.contains("description"));
    EXPECT_EQ(size.value("category").toString(), "bake options");

    const QJsonArray categories = bake.value("categories").toArray();
    ASSERT_EQ(categories.size(), 2);
    const QJsonObject first = categories[0].toObject();
    EXPECT_EQ(first.value("name").toString(), "Input and output options");
    EXPECT_EQ(first.value("description").toString(), "Where things come from.");
    EXPECT_EQ(first.value("options").toArray().size(), 3);
    EXPECT_FALSE(first.value("options").toArray()[0].toObject().contains("category"));

    EXPECT_FALSE(tree.json->description("info").object().contains("description"));
}

TEST(JSonOptDescrOptionHandler, TopLevelIsAnArrayWithTheGlobalOptionsFirst)
{
    DocTree tree;
    testing::internal::CaptureStdout();
    EXPECT_EQ(tree.options.process({"zmfbaker", "--opt-descr"}), 0);
    const std::string out = testing::internal::GetCapturedStdout();
    ASSERT_FALSE(out.empty());
    EXPECT_EQ(out.back(), '\n');
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(out));
    ASSERT_TRUE(document.isArray());
    const QJsonArray all = document.array();
    ASSERT_EQ(all.size(), 3);
    const QJsonObject global = all[0].toObject();
    EXPECT_EQ(global.value("name").toString(), "");
    const QJsonArray globals = global.value("options").toArray();
    ASSERT_EQ(globals.size(), 7);
    EXPECT_EQ(globals[6].toObject().value("name").toString(), "threads");
    EXPECT_EQ(globals[6].toObject().value("type").toString(), "non-negative integer");
    EXPECT_EQ(globals[0].toObject().value("name").toString(), "help");
    EXPECT_EQ(globals[0].toObject().value("alternate names").toArray(), (QJsonArray{"h", "?"}));
    EXPECT_EQ(globals[2].toObject().value("description").toString(),
              "Create json description of all available options");
    EXPECT_EQ(all[1].toObject().value("name").toString(), "bake");
    EXPECT_EQ(all[2].toObject().value("name").toString(), "info");

    testing::internal::CaptureStdout();
    EXPECT_EQ(tree.options.process({"zmfbaker", "bake", "--opt-descr"}), 0);
    EXPECT_TRUE(QJsonDocument::fromJson(QByteArray::fromStdString(testing::internal::GetCapturedStdout())).isObject());
}

TEST(HTMLDocOptionHandler, EscapesAndLinksCommands)
{
    EXPECT_EQ(HTMLDocOptionHandler::escape("a/b & \"c\""), "a&frasl;b &amp; &quot;c&quot;");

    DocTree tree;
    QString text;
    IndentingPrinter printer(&text);
    ASSERT_TRUE(tree.html->write(QString(), printer));
    EXPECT_TRUE(text.contains("<h1>zmfbaker</h1>")) << text.toStdString();
    EXPECT_TRUE(text.contains("href=\"#bake\""));
    EXPECT_TRUE(text.contains("name=\"bake\""));
    EXPECT_TRUE(text.contains("Subcommand bake"));
    EXPECT_TRUE(text.contains("zmfbaker [<options>...]"));
    EXPECT_TRUE(text.contains("zmfbaker [<global_options>...] bake [<options>...]"));
    EXPECT_TRUE(text.contains("Bakes a&frasl;b &amp; &quot;c&quot;."));
    EXPECT_TRUE(text.contains("<h3>Input and output options</h3>"));
    EXPECT_TRUE(text.contains("<strong>-s</strong> Alias to --output-size"));
    EXPECT_TRUE(text.contains("<strong>--output-format <format></strong>"));
    EXPECT_TRUE(text.contains("[default: &quot;png&quot;]"));
    EXPECT_FALSE(text.contains("--opt-descr")) << "hidden options stay out";
    EXPECT_TRUE(text.endsWith("</html>\n"));
    // Nested elements are indented by two blanks per level.
    EXPECT_TRUE(text.contains("\n  <body>\n    <h1>"));

    QString one;
    IndentingPrinter onePrinter(&one);
    ASSERT_TRUE(tree.html->write("info", onePrinter));
    EXPECT_TRUE(one.contains("name=\"info\""));
    EXPECT_FALSE(one.contains("name=\"bake\""));

    LogRecorder log;
    QString none;
    IndentingPrinter nonePrinter(&none);
    EXPECT_FALSE(tree.html->write("nope", nonePrinter));
    EXPECT_EQ(log.delegate->messages(), QStringList{"Unknown command \"nope\"."});
}

TEST(IndentingPrinter, IndentsEachLine)
{
    QString text;
    IndentingPrinter printer(&text);
    printer.print("File \"a.obj\":");
    printer.indent();
    printer.print("one\ntwo");
    printer.indent();
    printer.print("three");
    printer.unindent();
    printer.unindent();
    printer.unindent();
    printer.print("four");
    EXPECT_EQ(text.toStdString(), "File \"a.obj\":\n  one\n  two\n    three\nfour\n");
}
