#include "FakeCommand.h"

#include "program/ClassicProgramOptions.h"
#include "program/ThreadLimit.h"

#include <QThreadPool>

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

using namespace Ond::Program;
using ZmfTest::FakeCommand;
using ZmfTest::LogRecorder;

namespace {

unsigned cores() { return std::max(1u, std::thread::hardware_concurrency()); }

// Leaves the process as it found it: no variable, no limit.
struct ThreadLimitTest : ::testing::Test
{
    void SetUp() override { qunsetenv(Ond::Core::ThreadLimitVariable); }
    void TearDown() override
    {
        qunsetenv(Ond::Core::ThreadLimitVariable);
        Ond::Core::setThreadLimit(0);
    }
};

int run(ClassicProgramOptions& options, const QStringList& args)
{
    return options.process(QStringList{"zmfbaker"} + args);
}

} // namespace

TEST_F(ThreadLimitTest, CountsAreDecimalWithoutSign)
{
    unsigned limit = 99;
    EXPECT_TRUE(Ond::Core::parseThreadLimit("4", limit));
    EXPECT_EQ(limit, 4u);
    EXPECT_TRUE(Ond::Core::parseThreadLimit(" 12\n", limit));
    EXPECT_EQ(limit, 12u);
    EXPECT_TRUE(Ond::Core::parseThreadLimit("0", limit));
    EXPECT_EQ(limit, 0u);
    limit = 7;
    for (const char* bad : {"", "-1", "+2", "abc", "4x", "0x10", "1.5"}) {
        EXPECT_FALSE(Ond::Core::parseThreadLimit(bad, limit)) << bad;
        EXPECT_EQ(limit, 7u) << bad;
    }
}

TEST_F(ThreadLimitTest, OptionCapsTheGlobalPoolAndZeroMeansAllCores)
{
    ClassicProgramOptions options("zmfbaker", 14, 0, 1, 8268, "636da6f4");
    auto bake = std::make_shared<FakeCommand>("bake", "Bakes.");
    options.addCommand(bake);
    options.addCommand(std::make_shared<FakeCommand>("other", "Other."));

    EXPECT_EQ(Ond::Core::threadCount(), cores());
    EXPECT_EQ(run(options, {"--threads", "3", "bake"}), 0);
    EXPECT_EQ(bake->calls, 1);
    EXPECT_EQ(Ond::Core::threadLimit(), 3u);
    EXPECT_EQ(Ond::Core::threadCount(), 3u);
    EXPECT_EQ(QThreadPool::globalInstance()->maxThreadCount(), 3);

    // After the command name, like any global option.
    EXPECT_EQ(run(options, {"bake", "--threads", "1"}), 0);
    EXPECT_EQ(QThreadPool::globalInstance()->maxThreadCount(), 1);

    EXPECT_EQ(run(options, {"bake", "--threads", "0"}), 0);
    EXPECT_EQ(Ond::Core::threadLimit(), 0u);
    EXPECT_EQ(Ond::Core::threadCount(), cores());
    EXPECT_EQ(QThreadPool::globalInstance()->maxThreadCount(), int(cores()));
}

TEST_F(ThreadLimitTest, BadCountsAreRejectedByTheParser)
{
    ClassicProgramOptions options("zmfbaker", 14, 0, 1, 8268, "636da6f4");
    auto bake = std::make_shared<FakeCommand>("bake", "Bakes.");
    options.addCommand(bake);
    options.addCommand(std::make_shared<FakeCommand>("other", "Other."));
    for (const char* bad : {"-2", "many", "2.5"}) {
        LogRecorder log;
        EXPECT_EQ(run(options, {"bake", "--threads", bad}), 1) << bad;
        ASSERT_EQ(log.delegate->lines.size(), 1u) << bad;
        EXPECT_EQ(log.delegate->lines[0].channel, "CLIParser");
        EXPECT_EQ(log.delegate->lines[0].message,
                  QStringLiteral("Option threads expected a value of type uint, but received non-convertible \"%1\".")
                      .arg(bad));
    }
    EXPECT_EQ(bake->calls, 0);
    EXPECT_EQ(Ond::Core::threadLimit(), 0u);
}

TEST_F(ThreadLimitTest, VariableGivesTheCountAndTheOptionWins)
{
    qputenv(Ond::Core::ThreadLimitVariable, "2");
    ClassicProgramOptions options("zmfbaker", 14, 0, 1, 8268, "636da6f4");
    auto bake = std::make_shared<FakeCommand>("bake", "Bakes.");
    options.addCommand(bake);
    options.addCommand(std::make_shared<FakeCommand>("other", "Other."));
    EXPECT_EQ(Ond::Core::threadCount(), 2u);
    EXPECT_EQ(QThreadPool::globalInstance()->maxThreadCount(), 2);
    EXPECT_EQ(run(options, {"bake", "--threads", "5"}), 0);
    EXPECT_EQ(Ond::Core::threadCount(), 5u);
}

TEST_F(ThreadLimitTest, UnreadableVariableIsToldAndIgnored)
{
    qputenv(Ond::Core::ThreadLimitVariable, "lots");
    LogRecorder log;
    ClassicProgramOptions options("zmfbaker", 14, 0, 1, 8268, "636da6f4");
    EXPECT_EQ(Ond::Core::threadLimit(), 0u);
    ASSERT_EQ(log.delegate->lines.size(), 1u);
    EXPECT_EQ(log.delegate->lines[0].level, Ond::Core::LogWarning);
    EXPECT_EQ(log.delegate->lines[0].message,
              "Environment variable OND_THREADS expected a value of type uint, but received non-convertible "
              "\"lots\"; all cores are used.");
}
