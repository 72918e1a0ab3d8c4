#include "common/ProcessRunner.h"

#include "common/TestPaths.h"

#include <QProcess>

#include <gtest/gtest.h>

namespace ZmfTest {

ProcessResult runProgram(const QString& program, const QStringList& args, const QString& workDir,
                         const QProcessEnvironment& env)
{
    QProcess process;
    process.setProgram(program);
    process.setArguments(args);
    process.setWorkingDirectory(workDir.isEmpty() ? buildDir() : workDir);
    process.setProcessEnvironment(env.isEmpty() ? QProcessEnvironment::systemEnvironment() : env);
    process.start();
    ProcessResult result;
    if (!process.waitForStarted(10000)) {
        ADD_FAILURE() << "could not start " << program.toStdString();
        return result;
    }
    process.closeWriteChannel();
    if (!process.waitForFinished(120000)) {
        process.kill();
        process.waitForFinished();
        ADD_FAILURE() << "time-out running " << program.toStdString() << " " << args.join(' ').toStdString();
    }
    result.crashed = process.exitStatus() == QProcess::CrashExit;
    result.exitCode = process.exitCode();
    result.out = QString::fromUtf8(process.readAllStandardOutput());
    result.err = QString::fromUtf8(process.readAllStandardError());
    return result;
}

ProcessResult runZmfbaker(const QStringList& args, const QString& workDir, const QProcessEnvironment& env)
{
    return runProgram(binaryPath(), args, workDir, env);
}

} // namespace ZmfTest
