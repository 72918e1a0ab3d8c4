#pragma once
// Paths given by the user become URLs: each string that is not already a
// "pkg://" or "file:///" URL becomes the file: URL of its absolute path.
// Empty strings stay empty.

#include <QString>
#include <QStringList>

namespace ProgramCommand {

QString normalizePath(const QString& path);
QStringList normalizePaths(const QStringList& paths);

} // namespace ProgramCommand
