#include "FakeCommand.h"

#include "program/ClassicProgramOptions.h"
#include "program/FilteredLogToConsoleDelegate.h"
#include "program/LogChannel.h"
#include "program/VerbosityOptionHandler.h"

#include <QSize>

#include <gtest/gtest.h>

using namespace Ond::Program;
using ZmfTest::FakeCommand;
using ZmfTest::LogRecorder;

namespace {

// Two commands: "bake" with an implicit list option, like a baker, and
// "plain" without one.
struct FakeTree
{
    FakeTree()
        : options("zmfbaker", 14, 0, 1, 8268, "636da6f4")
    {
        bake = std::make_shared<FakeCommand>("bake", "Bakes things.", "inputs");
        OptionGroup io("Input and output options");
        io.addOption(TypedCommandLineOption("inputs", QMetaType::QStringList, "Mesh files.", "path"));
        TypedCommandLineOption size("output-size", QMetaType::QSize, "Size.", "w>,<h");
        size.setDefaultValue("10,10");
        io.addOption(size);
        io.addOption(TypedCommandLineOption("use-cage", QMetaType::Bool, "Cage."));
        bake->addOptionGroup(io);

        plain = std::make_shared<FakeCommand>("plain", "Does plain things.");
        OptionGroup specific("Specific options");
        specific.addOption(TypedCommandLineOption("print-camera", "Camera."));
        plain->addOptionGroup(specific);

        options.addCommand(bake);
        options.addCommand(plain);
    }

    int run(const QStringList& args) { return options.process(QStringList{"zmfbaker"} + args); }

    ClassicProgramOptions options;
    std::shared_ptr<FakeCommand> bake;
    std::shared_ptr<FakeCommand> plain;
};

class ProgramOptionsTest : public ::testing::Test, public FakeTree
{
protected:
    LogRecorder log;
};

} // namespace

TEST_F(ProgramOptionsTest, PositionalArgumentsBecomeTheImplicitOptionAndLaterOptionsStillCount)
{
    EXPECT_EQ(run({"bake", "a.fbx", "b.fbx", "--output-size", "11,11"}), 0);
    ASSERT_EQ(bake->calls, 1);
    EXPECT_EQ(bake->received.value("inputs").toStringList(), (QStringList{"a.fbx", "b.fbx"}));
    EXPECT_EQ(bake->received.value("output-size").toSize(), QSize(11, 11));
    EXPECT_EQ(bake->received.positionalArguments, (QStringList{"a.fbx", "b.fbx"}));
    EXPECT_EQ(plain->calls, 0);
}

TEST_F(ProgramOptionsTest, ExplicitInputsComeFirst)
{
    EXPECT_EQ(run({"bake", "c.obj", "--inputs", "a.fbx", "--", "-d.obj"}), 0);
    EXPECT_EQ(bake->received.value("inputs").toStringList(), (QStringList{"a.fbx", "c.obj", "-d.obj"}));
    EXPECT_EQ(bake->received.value("output-size").toSize(), QSize(10, 10));
}

TEST_F(ProgramOptionsTest, CommandWithoutImplicitOptionKeepsPositionals)
{
    plain->status = 1;
    EXPECT_EQ(run({"plain", "x", "--print-camera"}), 1);
    EXPECT_EQ(plain->received.positionalArguments, QStringList{"x"});
    EXPECT_EQ(plain->received.value("print-camera"), QVariant(true));
    EXPECT_FALSE(plain->received.contains("inputs"));
}

TEST_F(ProgramOptionsTest, BadValueFailsBeforeTheCommandRuns)
{
    EXPECT_EQ(run({"bake", "a.fbx", "--use-cage", "YES"}), 1);
    EXPECT_EQ(bake->calls, 0);
    EXPECT_EQ(log.delegate->messages(),
              QStringList{"Option use-cage expected a value of type bool, but received non-convertible \"YES\"."});
    EXPECT_EQ(log.delegate->lines.front().channel, "CLIParser");
    EXPECT_EQ(log.delegate->lines.front().level, 2);
}

TEST_F(ProgramOptionsTest, NoSubcommandAndUnknownSubcommand)
{
    EXPECT_EQ(run({}), 1);
    EXPECT_EQ(run({"frobnicate", "x"}), 1);
    EXPECT_EQ(log.delegate->messages(),
              (QStringList{"A subcommand must be provided.  Run 'zmfbaker --help' to see available subcommands.",
                           "Unknown subcommand 'frobnicate'.  Run 'zmfbaker --help' to see available subcommands."}));
    EXPECT_EQ(bake->calls + plain->calls, 0);
}

TEST_F(ProgramOptionsTest, UnknownSubcommandLineReportsTheUnknownOptionNotItsType)
{
    EXPECT_EQ(run({"frobnicate", "--use-cage", "YES"}), 1);
    ASSERT_EQ(log.delegate->lines.size(), 2u);
    EXPECT_EQ(log.delegate->lines[0].message, "Unknown option 'use-cage'.");
    EXPECT_EQ(log.delegate->lines[0].level, 2);
    EXPECT_EQ(log.delegate->lines[1].message, "frobnicate YES");
    EXPECT_EQ(log.delegate->lines[1].level, 0);
}

TEST_F(ProgramOptionsTest, GlobalHandlerEndsTheRunBeforeTheCommand)
{
    testing::internal::CaptureStdout();
    EXPECT_EQ(run({"bake", "a.fbx", "--version"}), 0);
    EXPECT_EQ(run({"-V"}), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "version 14.0.1 (build 8268 commit 0x636da6f4)\nversion 14.0.1 (build 8268 commit 0x636da6f4)\n");
    EXPECT_EQ(bake->calls, 0);
}

TEST_F(ProgramOptionsTest, QuietBeforeOrAfterTheSubcommand)
{
    for (const QStringList& args : {QStringList{"-q", "plain"}, QStringList{"plain", "--quiet"}}) {
        FakeTree fresh;
        EXPECT_EQ(fresh.run(args), 0);
        EXPECT_EQ(fresh.plain->calls, 1);
        const auto* handler = dynamic_cast<VerbosityOptionHandler*>(fresh.options.handler("quiet").get());
        ASSERT_NE(handler, nullptr);
        EXPECT_TRUE(handler->quietSeen());
        EXPECT_FALSE(handler->verboseSeen());
        EXPECT_NE(dynamic_cast<QuietConsoleDelegate*>(handler->delegate().get()), nullptr);
        EXPECT_TRUE(Ond::Core::LogManager::instance().hasDelegate(handler->delegate()));
    }
}

TEST_F(ProgramOptionsTest, GlobalOptionsAreSharedAndOrdered)
{
    QStringList keys;
    for (const TypedCommandLineOption& option : options.globalOptions()->options())
        keys << option.key();
    EXPECT_EQ(keys, (QStringList{"help", "doc-html", "opt-descr", "version", "quiet", "verbose", "threads"}));
    EXPECT_EQ(options.globalOptions()->name(), "Global options");
    EXPECT_EQ(bake->globalOptions(), options.globalOptions());
}

TEST(ProgramOptions, ASingleCommandNeedsNoName)
{
    LogRecorder log;
    ProgramOptions options("tool");
    auto only = std::make_shared<FakeCommand>("only", "", "inputs");
    options.addCommand(only);
    EXPECT_EQ(options.process({"tool", "a", "b"}), 0);
    EXPECT_EQ(only->received.value("inputs").toStringList(), (QStringList{"a", "b"}));
}
