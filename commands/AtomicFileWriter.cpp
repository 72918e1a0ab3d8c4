#include "commands/AtomicFileWriter.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace ProgramCommand {

namespace {

const QString TemporarySuffix = QStringLiteral(".zmftmp");

QString temporaryNameFor(const QString& finalPath)
{
    const QFileInfo info(finalPath);
    const quint64 token = QRandomGenerator::global()->generate64();
    return info.dir().filePath(QStringLiteral(".%1.%2-%3%4")
                                   .arg(info.fileName())
                                   .arg(qint64(::getpid()))
                                   .arg(token, 16, 16, QLatin1Char('0'))
                                   .arg(TemporarySuffix));
}

// Data must be on disk before the name points at it, or a crash of the
// machine could still show an empty file under the final name.
bool syncToDisk(const QString& path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool synced = ::fsync(fd) == 0;
    ::close(fd);
    return synced;
}

} // namespace

AtomicFileWriter::AtomicFileWriter(const QString& finalPath)
    : m_finalPath(QFileInfo(finalPath).absoluteFilePath())
{
}

AtomicFileWriter::~AtomicFileWriter()
{
    if (!m_committed)
        discard();
}

bool AtomicFileWriter::open(QIODevice::OpenMode extraMode)
{
    discard();
    m_committed = false;
    // A name taken by another writer of the same file is simply drawn again.
    for (int attempt = 0; attempt < 8; ++attempt) {
        m_file.setFileName(temporaryNameFor(m_finalPath));
        if (m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly | extraMode))
            return true;
        if (m_file.error() != QFileDevice::OpenError || QFileInfo::exists(m_file.fileName()) == false)
            break;
    }
    m_file.setFileName(QString());
    return false;
}

bool AtomicFileWriter::commit()
{
    if (m_file.fileName().isEmpty() || m_committed)
        return false;
    if (m_file.isOpen()) {
        const bool flushed = m_file.flush();
        m_file.close();
        if (!flushed) {
            discard();
            return false;
        }
    }
    if (m_file.error() != QFileDevice::NoError) {
        discard();
        return false;
    }
    // Keep the permissions a file of that name had before.
    const QFileInfo previous(m_finalPath);
    if (previous.isFile())
        QFile::setPermissions(m_file.fileName(), previous.permissions());
    if (!syncToDisk(m_file.fileName())
        || std::rename(QFile::encodeName(m_file.fileName()).constData(), QFile::encodeName(m_finalPath).constData())
            != 0) {
        discard();
        return false;
    }
    m_committed = true;
    return true;
}

void AtomicFileWriter::discard()
{
    if (m_file.fileName().isEmpty())
        return;
    if (m_file.isOpen())
        m_file.close();
    QFile::remove(m_file.fileName());
    m_file.setFileName(QString());
}

bool writeFileAtomically(const QString& finalPath, const std::function<bool(QFile&)>& write,
                         QIODevice::OpenMode extraMode)
{
    AtomicFileWriter writer(finalPath);
    if (!writer.open(extraMode))
        return false;
    if (!write(writer.device())) {
        writer.discard();
        return false;
    }
    return writer.commit();
}

bool isAtomicTemporaryName(const QString& fileName)
{
    static const QRegularExpression pattern(QStringLiteral("^\\..+\\.[0-9]+-[0-9a-f]{16}\\.zmftmp$"));
    return pattern.match(fileName).hasMatch();
}

} // namespace ProgramCommand
