// The progress line as a user at a terminal sees it, through a
// pseudo-terminal: stages drawn in place, and a log that reads, once the
// line is taken out, exactly as it does in a pipe.

#include "common/ProcessRunner.h"
#include "common/TestPaths.h"

#include <QDir>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <vector>

namespace {

struct TerminalRun
{
    int exitCode = -1;
    QByteArray output; // standard output and error together, as the terminal got them
};

// Runs the binary with both outputs on a 120-column pseudo-terminal that
// passes bytes through untouched.
TerminalRun runOnTerminal(const QStringList& args)
{
    TerminalRun run;
    const QByteArray program = ZmfTest::binaryPath().toLocal8Bit();
    std::vector<QByteArray> storage{program};
    for (const QString& arg : args)
        storage.push_back(arg.toLocal8Bit());
    std::vector<char*> argv;
    for (QByteArray& bytes : storage)
        argv.push_back(bytes.data());
    argv.push_back(nullptr);

    termios raw{};
    cfmakeraw(&raw);
    winsize size{};
    size.ws_col = 120;
    size.ws_row = 40;
    int master = -1;
    const pid_t pid = forkpty(&master, nullptr, &raw, &size);
    if (pid < 0) {
        ADD_FAILURE() << "forkpty failed";
        return run;
    }
    if (pid == 0) {
        if (::chdir(ZmfTest::buildDir().toLocal8Bit().constData()) != 0)
            _exit(126);
        ::execv(argv[0], argv.data());
        _exit(127);
    }

    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(120);
    for (;;) {
        pollfd fd{master, POLLIN, 0};
        if (std::chrono::steady_clock::now() > deadline) {
            ::kill(pid, SIGKILL);
            ADD_FAILURE() << "time-out";
            break;
        }
        if (::poll(&fd, 1, 500) <= 0)
            continue;
        char buffer[4096];
        const ssize_t got = ::read(master, buffer, sizeof buffer);
        if (got > 0) {
            run.output.append(buffer, got);
            continue;
        }
        if (got < 0 && errno == EINTR)
            continue;
        break; // EIO once the last holder of the terminal is gone
    }
    ::close(master);
    int status = 0;
    ::waitpid(pid, &status, 0);
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

// What is left once every drawn or cleared line is taken out.
QString withoutProgress(const QByteArray& bytes)
{
    QString text = QString::fromUtf8(bytes);
    text.remove(QRegularExpression(QStringLiteral("\r[^\r\n]*\x1b\\[K")));
    return text;
}

// Timings differ from run to run.
QString withoutDigits(QString text) { return text.replace(QRegularExpression("[0-9]+"), "#"); }

QStringList bakeArgs(const QString& out)
{
    const QString data = ZmfTest::testDataDir();
    return {"-v", "normal-from-mesh", data + "/box_low.obj", "--highdef-mesh", data + "/box_high.obj",
            "--output-size", "9,9", "--output-path", out};
}

} // namespace

TEST(ProgressDisplay, StagesShowOnATerminalAndTheLogReadsAsInAPipe)
{
    const QString out = ZmfTest::makeTempDir();
    const TerminalRun terminal = runOnTerminal(bakeArgs(out));
    EXPECT_EQ(terminal.exitCode, 0) << terminal.output.toStdString();
    const QString text = QString::fromUtf8(terminal.output);
    for (const char* stage : {"\rLoading box_low.obj", "\rLoading box_high.obj", "\rBuilding ray tracing scene  ",
                              "\rNormal from mesh  0%\x1b[K", "\rPost-processing  0%\x1b[K"})
        EXPECT_TRUE(text.contains(QLatin1String(stage))) << stage << "\n" << text.toStdString();
    EXPECT_TRUE(text.contains(QRegularExpression("\rNormal from mesh  [0-9]+%"))) << text.toStdString();
    EXPECT_TRUE(text.endsWith("\r\x1b[K") || text.endsWith("\n")) << "the line is cleared at the end";

    const ZmfTest::ProcessResult pipe = ZmfTest::runZmfbaker(bakeArgs(out));
    EXPECT_EQ(pipe.exitCode, 0);
    EXPECT_FALSE(pipe.err.contains('\r') || pipe.err.contains('\x1b')) << "nothing of it in a pipe";
    EXPECT_TRUE(pipe.err.contains("[INFO][ZMFBaker]Writing file")) << pipe.err.toStdString();

    const QString log = withoutProgress(terminal.output);
    EXPECT_FALSE(log.contains('\r') || log.contains('\x1b')) << log.toStdString();
    EXPECT_EQ(withoutDigits(log).toStdString(), withoutDigits(pipe.out + pipe.err).toStdString());
    EXPECT_EQ(QDir(out).entryList(QDir::Files).size(), 1);
}

TEST(ProgressDisplay, QuietShowsNoLine)
{
    QStringList args = bakeArgs(ZmfTest::makeTempDir());
    args.replace(0, "-q");
    const TerminalRun terminal = runOnTerminal(args);
    EXPECT_EQ(terminal.exitCode, 0);
    EXPECT_EQ(terminal.output.toStdString(), "");
}
