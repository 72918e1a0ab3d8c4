#include "FuzzSupport.h"

#include <QDir>
#include <QFile>
#include <QtGlobal>

#include <unistd.h>

namespace Fuzz {

namespace {

void dropMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

} // namespace

bool init()
{
    qInstallMessageHandler(dropMessage);
    return true;
}

QString writeScratchFile(const uint8_t* data, size_t size, const char* suffix)
{
    const QString folder = QDir(QStringLiteral("/dev/shm")).exists() ? QStringLiteral("/dev/shm") : QDir::tempPath();
    const QString path = QStringLiteral("%1/zmf-fuzz-%2.%3").arg(folder).arg(qint64(::getpid())).arg(QLatin1String(suffix));
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(reinterpret_cast<const char*>(data), qint64(size));
    return path;
}

} // namespace Fuzz
