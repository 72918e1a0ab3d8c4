// Outputs appear whole or not at all: a failed write keeps the earlier file,
// and a bake killed at any moment never leaves a cut file under its name.

#include "commands/AtomicFileWriter.h"

#include "common/ProcessRunner.h"
#include "common/TestPaths.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QThread>

#include <gtest/gtest.h>

#include <random>

using ProgramCommand::AtomicFileWriter;
using ProgramCommand::isAtomicTemporaryName;
using ProgramCommand::writeFileAtomically;

namespace {

void writeText(const QString& path, const QByteArray& text)
{
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(text);
}

QStringList entries(const QString& dir)
{
    return QDir(dir).entryList(QDir::Files | QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

} // namespace

TEST(AtomicFileWriter, ReplacesOnlyOnSuccessAndLeavesNoTemporaryFile)
{
    const QString dir = ZmfTest::makeTempDir();
    const QString target = dir + QStringLiteral("/map.png");
    writeText(target, "old");
    QFile::setPermissions(target, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup);

    // A writer that fails half-way: the old file stays, nothing else appears.
    EXPECT_FALSE(writeFileAtomically(target, [](QFile& f) {
        f.write("half");
        return false;
    }));
    EXPECT_EQ(ZmfTest::readFile(target), "old");
    EXPECT_EQ(entries(dir), QStringList{"map.png"});

    // A writer that closes the device itself, as the image codecs do.
    EXPECT_TRUE(writeFileAtomically(target, [](QFile& f) {
        f.write("new");
        f.close();
        return true;
    }));
    EXPECT_EQ(ZmfTest::readFile(target), "new");
    EXPECT_EQ(entries(dir), QStringList{"map.png"});
    const QFileDevice::Permissions others =
        QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ReadOther | QFileDevice::WriteOther;
    EXPECT_EQ(QFileInfo(target).permissions() & others, QFileDevice::ReadGroup);

    // Dropped without commit: as if never written.
    {
        AtomicFileWriter writer(target);
        ASSERT_TRUE(writer.open());
        EXPECT_TRUE(isAtomicTemporaryName(QFileInfo(writer.temporaryPath()).fileName()));
        EXPECT_EQ(QFileInfo(writer.temporaryPath()).dir(), QDir(dir));
        writer.device().write("lost");
    }
    EXPECT_EQ(ZmfTest::readFile(target), "new");
    EXPECT_EQ(entries(dir), QStringList{"map.png"});
}

TEST(AtomicFileWriter, TargetsThatCannotBeWritten)
{
    const QString dir = ZmfTest::makeTempDir();
    const auto writeX = [](QFile& f) { return f.write("x") == 1; };

    // A missing folder is not created.
    EXPECT_FALSE(writeFileAtomically(dir + QStringLiteral("/missing/map.png"), writeX));
    EXPECT_FALSE(QFileInfo::exists(dir + QStringLiteral("/missing")));

    // A folder under the name is left alone.
    ASSERT_TRUE(QDir(dir).mkdir(QStringLiteral("map.png")));
    EXPECT_FALSE(writeFileAtomically(dir + QStringLiteral("/map.png"), writeX));
    EXPECT_TRUE(QFileInfo(dir + QStringLiteral("/map.png")).isDir());
    EXPECT_EQ(entries(dir), QStringList{"map.png"});

    // A path through a file.
    writeText(dir + QStringLiteral("/file"), "f");
    EXPECT_FALSE(writeFileAtomically(dir + QStringLiteral("/file/map.png"), writeX));
    EXPECT_EQ(ZmfTest::readFile(dir + QStringLiteral("/file")), "f");

    EXPECT_FALSE(isAtomicTemporaryName(QStringLiteral("map.png")));
    EXPECT_FALSE(isAtomicTemporaryName(QStringLiteral(".map.png.zmftmp")));
}

// SIGKILL at random moments of real bakes, into a folder that holds either
// nothing or the good file of an earlier run: the output name only ever
// shows that good file.
TEST(AtomicOutput, KilledBakesNeverLeaveACutFile)
{
    const QString dir = ZmfTest::makeTempDir();
    const QString output = dir + QStringLiteral("/box_low_normal-world-space.tif");
    const QStringList args{QStringLiteral("normal-world-space"),
                           ZmfTest::testDataDir() + QStringLiteral("/box_low.obj"),
                           QStringLiteral("--output-size"),
                           QStringLiteral("9,9"),
                           QStringLiteral("--output-format"),
                           QStringLiteral("tif"),
                           QStringLiteral("--output-path"),
                           dir};

    QElapsedTimer clock;
    clock.start();
    const auto reference = ZmfTest::runZmfbaker(args);
    const qint64 fullRunMs = clock.elapsed();
    ASSERT_EQ(reference.exitCode, 0) << reference.err.toStdString();
    const QByteArray good = ZmfTest::readFile(output);
    ASSERT_GT(good.size(), 512 * 512 * 3);

    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(testing::Message() << "seed " << seed << ", full run " << fullRunMs << " ms");
    std::mt19937 rng(seed);
    std::uniform_int_distribution<qint64> moment(0, fullRunMs + 200);

    for (int round = 0; round < 14; ++round) {
        const bool keepEarlier = round % 2 == 0;
        // The last rounds end the bake by SIGTERM, as a farm asks a job to
        // stop: then not even a temporary file may stay.
        const bool terminate = round >= 10;
        QFile::remove(output);
        if (keepEarlier)
            writeText(output, good);
        const qint64 delay = moment(rng);
        SCOPED_TRACE(testing::Message() << "round " << round << ", kill after " << delay << " ms");

        QProcess bake;
        bake.setProgram(ZmfTest::binaryPath());
        bake.setArguments(args);
        bake.setWorkingDirectory(dir);
        bake.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        bake.start();
        ASSERT_TRUE(bake.waitForStarted());
        QThread::msleep(static_cast<unsigned long>(delay));
        if (terminate)
            bake.terminate();
        else
            bake.kill(); // SIGKILL: no handler, no clean-up
        ASSERT_TRUE(bake.waitForFinished(60000));

        if (QFileInfo::exists(output))
            EXPECT_EQ(ZmfTest::readFile(output), good) << "a partial file under the output name";
        else
            EXPECT_FALSE(keepEarlier) << "the earlier file is gone";
        for (const QString& name : entries(dir)) {
            if (name != QFileInfo(output).fileName()) {
                EXPECT_TRUE(isAtomicTemporaryName(name) && !terminate) << name.toStdString();
                QFile::remove(dir + QLatin1Char('/') + name);
            }
        }
    }
}
