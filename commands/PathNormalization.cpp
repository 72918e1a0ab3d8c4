#include "commands/PathNormalization.h"

#include <QFileInfo>
#include <QUrl>

namespace ProgramCommand {

QString normalizePath(const QString& path)
{
    if (path.isEmpty() || path.startsWith(QLatin1String("pkg://")) || path.startsWith(QLatin1String("file:///")))
        return path;
    return QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toString();
}

QStringList normalizePaths(const QStringList& paths)
{
    QStringList out;
    out.reserve(paths.size());
    for (const QString& path : paths)
        out.append(normalizePath(path));
    return out;
}

} // namespace ProgramCommand
