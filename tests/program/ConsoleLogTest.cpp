#include "FakeCommand.h"

#include "program/ClassicProgramOptions.h"
#include "program/FilteredLogToConsoleDelegate.h"
#include "program/LogChannel.h"
#include "program/VerbosityOptionHandler.h"

#include <QtGlobal>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

using namespace Ond::Program;

namespace {

// A delegate's output, read back from a temporary file.
template <typename Delegate>
class Captured
{
public:
    Captured()
        : m_file(std::tmpfile())
        , m_delegate(new Delegate(m_file))
    {
    }
    ~Captured() { std::fclose(m_file); }

    Delegate& delegate() { return *m_delegate; }
    // Destroys the delegate first, so that what it holds back comes out.
    std::string finish()
    {
        m_delegate.reset();
        return read();
    }
    std::string read()
    {
        std::fflush(m_file);
        std::rewind(m_file);
        std::string out;
        char buffer[256];
        size_t n = 0;
        while ((n = std::fread(buffer, 1, sizeof buffer, m_file)) > 0)
            out.append(buffer, n);
        std::fseek(m_file, 0, SEEK_END);
        return out;
    }

private:
    FILE* m_file;
    std::unique_ptr<Delegate> m_delegate;
};

void logAllLevels(Ond::Core::ILogDelegate& delegate)
{
    delegate.log(0, "ZMFBaker", "info");
    delegate.log(1, "ZMFBaker", "warning");
    delegate.log(2, "ZMFBaker", "error");
}

} // namespace

TEST(FilteredLogToConsoleDelegate, FoldsRepeatedLines)
{
    Captured<DefaultConsoleDelegate> console;
    for (int i = 0; i < 5; ++i)
        console.delegate().log(2, "ZMFBaker", "Error: No input(s) specified.");
    console.delegate().log(1, "CLIParser", QString::fromUtf8("Ünïcode"));
    EXPECT_EQ(console.read(),
              "[ERROR][ZMFBaker]Error: No input(s) specified.\n"
              "   ... (repeated 4 more times)\n"
              "[WARNING][CLIParser]\xc3\x9cn\xc3\xaf" "code\n");

    // A hidden level does not break a run of repeats.
    console.delegate().log(1, "CLIParser", QString::fromUtf8("Ünïcode"));
    console.delegate().log(0, "ZMFBaker", "hidden");
    console.delegate().log(1, "CLIParser", QString::fromUtf8("Ünïcode"));
    // The same text on another channel is another line.
    console.delegate().log(1, "ZMFBaker", QString::fromUtf8("Ünïcode"));
    console.delegate().log(1, "ZMFBaker", QString::fromUtf8("Ünïcode"));
    EXPECT_EQ(console.finish(),
              "[ERROR][ZMFBaker]Error: No input(s) specified.\n"
              "   ... (repeated 4 more times)\n"
              "[WARNING][CLIParser]\xc3\x9cn\xc3\xaf" "code\n"
              "   ... (repeated 2 more times)\n"
              "[WARNING][ZMFBaker]\xc3\x9cn\xc3\xaf" "code\n"
              "   ... (repeated 1 more times)\n");
}

TEST(FilteredLogToConsoleDelegate, LevelFilters)
{
    Captured<DefaultConsoleDelegate> normal;
    Captured<VerboseConsoleDelegate> verbose;
    Captured<QuietConsoleDelegate> quiet;
    Captured<VerboseQuietConsoleDelegate> both;
    logAllLevels(normal.delegate());
    logAllLevels(verbose.delegate());
    logAllLevels(quiet.delegate());
    logAllLevels(both.delegate());
    EXPECT_EQ(normal.read(), "[WARNING][ZMFBaker]warning\n[ERROR][ZMFBaker]error\n");
    EXPECT_EQ(verbose.read(), "[INFO][ZMFBaker]info\n[WARNING][ZMFBaker]warning\n[ERROR][ZMFBaker]error\n");
    EXPECT_EQ(quiet.read(), "[ERROR][ZMFBaker]error\n");
    EXPECT_EQ(both.read(), "[INFO][ZMFBaker]info\n[ERROR][ZMFBaker]error\n");
}

TEST(VerbosityOptionHandler, PicksTheDelegateForEachCombination)
{
    struct Case
    {
        QStringList args;
        bool verbose;
        bool quiet;
    };
    const QList<Case> cases = {
        {{"zmfbaker", "x"}, false, false},
        {{"zmfbaker", "-v", "x"}, true, false},
        {{"zmfbaker", "x", "--quiet"}, false, true},
        {{"zmfbaker", "-q", "x", "--verbose"}, true, true},
    };
    for (const Case& c : cases) {
        ClassicProgramOptions options("zmfbaker", 14, 0, 1, 8268, "636da6f4");
        options.addCommand(std::make_shared<ZmfTest::FakeCommand>("x", ""));
        options.addCommand(std::make_shared<ZmfTest::FakeCommand>("y", ""));
        EXPECT_EQ(options.process(c.args), 0);
        auto* handler = dynamic_cast<VerbosityOptionHandler*>(options.handler("verbose").get());
        ASSERT_NE(handler, nullptr);
        EXPECT_EQ(handler->verboseSeen(), c.verbose);
        EXPECT_EQ(handler->quietSeen(), c.quiet);
        Ond::Core::ILogDelegate* delegate = handler->delegate().get();
        const bool rightKind = (!c.verbose && !c.quiet) ? dynamic_cast<DefaultConsoleDelegate*>(delegate) != nullptr
                               : (c.verbose && !c.quiet) ? dynamic_cast<VerboseConsoleDelegate*>(delegate) != nullptr
                               : (!c.verbose && c.quiet) ? dynamic_cast<QuietConsoleDelegate*>(delegate) != nullptr
                                                         : dynamic_cast<VerboseQuietConsoleDelegate*>(delegate) != nullptr;
        EXPECT_TRUE(rightKind) << c.args.join(' ').toStdString();
        EXPECT_TRUE(Ond::Core::LogManager::instance().hasDelegate(handler->delegate()));

        // Exactly one console delegate is installed; it goes with the options.
        const Ond::Core::LogDelegateSPtr installed = handler->delegate();
        bool handled = false;
        handler->handle("x", "verbose", false, handled);
        EXPECT_EQ(handler->delegate(), installed) << "a false value changes nothing";
        EXPECT_FALSE(handled);
    }
}

TEST(VerbosityOptionHandler, DelegateLeavesWithTheOptions)
{
    Ond::Core::LogDelegateSPtr delegate;
    {
        ClassicProgramOptions options("zmfbaker", 14, 0, 1, 8268, "636da6f4");
        delegate = dynamic_cast<VerbosityOptionHandler*>(options.handler("quiet").get())->delegate();
        EXPECT_TRUE(Ond::Core::LogManager::instance().hasDelegate(delegate));
    }
    EXPECT_FALSE(Ond::Core::LogManager::instance().hasDelegate(delegate));
}

TEST(ClassicProgramOptions, RoutesQtMessagesToTheLog)
{
    ClassicProgramOptions options("zmfbaker", 14, 0, 1, 8268, "636da6f4");
    ZmfTest::LogRecorder log;
    qWarning("a Qt warning");
    qCritical("a Qt error");
    ASSERT_EQ(log.delegate->lines.size(), 2u);
    EXPECT_EQ(log.delegate->lines[0].level, 1);
    EXPECT_EQ(log.delegate->lines[0].message, "a Qt warning");
    EXPECT_EQ(log.delegate->lines[0].channel, "Qt");
    EXPECT_EQ(log.delegate->lines[1].level, 2);
}
