#pragma once
// Runs the real zmfbaker binary and captures what a script would see.

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace ZmfTest {

struct ProcessResult
{
    int exitCode = -2;   // as the shell sees it: 255 for the -1 status
    bool crashed = false;
    QString out;
    QString err;
};

// Runs `program args` in `workDir` (the build dir if empty) with `env`
// (the current environment if empty). Fails the test on a 120 s time-out.
ProcessResult runProgram(const QString& program, const QStringList& args,
                         const QString& workDir = QString(),
                         const QProcessEnvironment& env = QProcessEnvironment());

// runProgram on the zmfbaker binary under test.
ProcessResult runZmfbaker(const QStringList& args, const QString& workDir = QString(),
                          const QProcessEnvironment& env = QProcessEnvironment());

} // namespace ZmfTest
