#include "FakeCommand.h"

#include "program/ClassicProgramOptions.h"
#include "program/HelpOptionHandler.h"

#include <gtest/gtest.h>

#include <pty.h>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace Ond::Program;
using ZmfTest::FakeCommand;
using ZmfTest::LogRecorder;

namespace {

struct HelpTree
{
    HelpTree()
        : options("zmfbaker", 14, 0, 1, 8268, "636da6f4")
    {
        auto zeta = std::make_shared<FakeCommand>("zeta", "Last by name, first registered.", "inputs");
        OptionGroup io("Input options");
        io.addOption(TypedCommandLineOption("inputs", QMetaType::QStringList, "Mesh files to process.", "path"));
        TypedCommandLineOption size("output-size", QMetaType::QSize, "Output size.", "w>,<h");
        size.setDefaultValue("10,10");
        io.addOption(size);
        TypedCommandLineOption ratio("ratio", QMetaType::Double, "Ratio of things.\n");
        ratio.setDefaultVariant(0.5);
        io.addOption(ratio);
        zeta->addOptionGroup(io);
        options.addCommand(zeta);
        options.addCommand(std::make_shared<FakeCommand>("alpha", "First by name."));
        help = dynamic_cast<HelpOptionHandler*>(options.handler("help").get());
        help->setTextWidth(80);
    }

    ClassicProgramOptions options;
    HelpOptionHandler* help = nullptr;
};

} // namespace

TEST(HelpOptionHandler, TopLevelHelpListsCommandsByNameAndVisibleGlobalOptions)
{
    HelpTree tree;
    EXPECT_EQ(tree.help->indentation(), 12);
    EXPECT_EQ(tree.help->helpText(QString()).toStdString(),
              "Usage:\n"
              "      zmfbaker [<global_option>...] <command> [<option>...] <inputs>...\n"
              "      zmfbaker [<global_option>...]\n"
              "\n"
              "Available commands are:\n"
              "      alpha\n"
              "            First by name.\n"
              "      zeta\n"
              "            Last by name, first registered.\n"
              "\n"
              "Global options:\n"
              "--help, -h, -?\n"
              "            Display help about given subcommand.\n"
              "            If no subcommand is provided, this help about global options is\n"
              "            printed.\n"
              "--version, -V\n"
              "            Display version of the program.\n"
              "--quiet, -q\n"
              "            Disable warning messages.\n"
              "--verbose, -v\n"
              "            Enable info and debug messages.\n"
              "--threads <count>\n"
              "            Maximum number of threads used by ray tracing, mesh processing and\n"
              "            mesh reading.\n"
              "            0 uses all cores. Without this option the environment variable\n"
              "            OND_THREADS gives the count; by default all cores are used.\n");
}

TEST(HelpOptionHandler, CommandHelpShowsValueNamesAndDefaults)
{
    HelpTree tree;
    const QString text = tree.help->helpText("zeta");
    EXPECT_TRUE(text.startsWith("Usage:\n"
                                "      zmfbaker [<global_option>...] zeta [<option>...] <inputs>...\n"
                                "\n"
                                "Description:\n"
                                "            Last by name, first registered.\n"
                                "\n"
                                "Input options:\n"
                                "--inputs <path>\n"
                                "            Mesh files to process.\n"
                                "--output-size <w>,<h>\n"
                                "            Output size. [default: \"10,10\"]\n"
                                "--ratio <double>\n"
                                "            Ratio of things.\n"
                                "            [default: \"0.5\"]\n"
                                "\n"
                                "Global options:\n"))
        << text.toStdString();
    EXPECT_FALSE(text.contains("doc-html"));
    EXPECT_FALSE(text.contains("opt-descr"));
}

TEST(HelpOptionHandler, HandlerPrintsOnlyWhenSetAndUnknownCommandIsLogged)
{
    HelpTree tree;
    LogRecorder log;
    bool handled = false;
    testing::internal::CaptureStdout();
    tree.help->handle("alpha", "help", false, handled);
    EXPECT_FALSE(handled);
    tree.help->handle("alpha", "help", true, handled);
    EXPECT_TRUE(handled);
    EXPECT_TRUE(QString::fromStdString(testing::internal::GetCapturedStdout()).startsWith("Usage:\n      zmfbaker"));

    EXPECT_TRUE(tree.help->helpText("nope").isEmpty());
    EXPECT_EQ(log.delegate->messages(), QStringList{"Unknown command \"nope\"."});
}

TEST(HelpOptionHandler, ThroughTheCommandLine)
{
    HelpTree tree;
    testing::internal::CaptureStdout();
    EXPECT_EQ(tree.options.process({"zmfbaker", "zeta", "--help"}), 0);
    EXPECT_EQ(tree.options.process({"zmfbaker", "-h"}), 0);
    const QString out = QString::fromStdString(testing::internal::GetCapturedStdout());
    EXPECT_EQ(out.count("Usage:"), 2);
    EXPECT_TRUE(out.contains("Input options:"));
    EXPECT_TRUE(out.contains("Available commands are:"));
}

TEST(HelpOptionHandler, WrapsWordByWordAtTheWidth)
{
    const QString text = "aaaa bbbb cccc dddd eeee\nffff";
    // Lines stay shorter than the width; the word that would reach it moves on.
    EXPECT_EQ(HelpOptionHandler::wrap(text, 4, 20).toStdString(), "    aaaa bbbb cccc\n    dddd eeee\n    ffff\n");
    EXPECT_EQ(HelpOptionHandler::wrap(text, 4, 18).toStdString(), "    aaaa bbbb\n    cccc dddd\n    eeee\n    ffff\n");
    EXPECT_EQ(HelpOptionHandler::wrap("a\n\nb\n", 2, 80).toStdString(), "  a\n\n  b\n");
    EXPECT_EQ(HelpOptionHandler::wrap("tiny enormousword", 2, 8).toStdString(), "  tiny\n  enormousword\n");

    QString longText;
    for (int i = 0; i < 200; ++i)
        longText += QStringLiteral("word%1 ").arg(i);
    for (int width : {40, 80, 100}) {
        const QStringList lines = HelpOptionHandler::wrap(longText, 12, width).split('\n', Qt::SkipEmptyParts);
        ASSERT_GT(lines.size(), 2);
        for (qsizetype i = 0; i < lines.size(); ++i) {
            EXPECT_LT(lines[i].size(), width);
            EXPECT_TRUE(lines[i].startsWith(QString(12, ' ') + "word"));
            if (i + 1 < lines.size()) {
                EXPECT_GE(lines[i].size() + 1 + lines[i + 1].trimmed().size(), width) << "filled up to the width";
            }
        }
    }
}

TEST(HelpOptionHandler, HelpWrapsAtTheGivenWidth)
{
    HelpTree tree;
    tree.help->setTextWidth(40);
    const QString text = tree.help->helpText(QString());
    EXPECT_TRUE(text.contains("            Display help about given\n"
                              "            subcommand.\n"))
        << text.toStdString();
    for (const QString& line : text.split('\n'))
        EXPECT_LT(line.size(), 40);
}

TEST(HelpOptionHandler, ConsoleWidthComesFromTheTerminal)
{
    int master = -1;
    int slave = -1;
    winsize size{};
    size.ws_col = 100;
    size.ws_row = 30;
    ASSERT_EQ(openpty(&master, &slave, nullptr, nullptr, &size), 0);
    int width = 0;
    EXPECT_TRUE(HelpOptionHandler::consoleWidth(slave, width));
    EXPECT_EQ(width, 100);

    // The handler asks standard output; put the terminal there for a moment.
    const int savedOut = dup(STDOUT_FILENO);
    dup2(slave, STDOUT_FILENO);
    const HelpOptionHandler onTerminal("zmfbaker", nullptr);
    dup2(savedOut, STDOUT_FILENO);
    close(savedOut);
    EXPECT_EQ(onTerminal.textWidth(), 100);
    close(slave);
    close(master);

    char path[] = "/tmp/zmf_help_XXXXXX";
    const int file = mkstemp(path);
    ASSERT_GE(file, 0);
    EXPECT_FALSE(HelpOptionHandler::consoleWidth(file, width));
    const int savedOut2 = dup(STDOUT_FILENO);
    dup2(file, STDOUT_FILENO);
    const HelpOptionHandler onFile("zmfbaker", nullptr);
    dup2(savedOut2, STDOUT_FILENO);
    close(savedOut2);
    close(file);
    unlink(path);
    EXPECT_EQ(onFile.textWidth(), 80);
}
