#include "commands/AtomicFileWriter.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <array>
#include <atomic>
#include <csignal>
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

// Temporary files being written, so that a job ended by SIGTERM, SIGINT or
// SIGHUP leaves none behind (SIGKILL can't be caught; its leftovers are only
// hidden). The handler may run at any moment: it reads the slots, unlinks and
// re-raises, nothing else.
constexpr size_t Slots = 16;
std::array<std::atomic<const char*>, Slots> pendingPaths{};

void removePendingAndDie(int signal)
{
    for (auto& slot : pendingPaths)
        if (const char* path = slot.load())
            ::unlink(path);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void installCleanupHandlers()
{
    static const bool installed = [] {
        for (int signal : {SIGTERM, SIGINT, SIGHUP}) {
            struct sigaction current {};
            // A handler someone else installed stays.
            if (::sigaction(signal, nullptr, &current) == 0 && current.sa_handler == SIG_DFL)
                std::signal(signal, removePendingAndDie);
        }
        return true;
    }();
    (void)installed;
}

void registerPending(const char* path)
{
    for (auto& slot : pendingPaths) {
        const char* empty = nullptr;
        if (slot.compare_exchange_strong(empty, path))
            return;
    }
}

void unregisterPending(const char* path)
{
    for (auto& slot : pendingPaths) {
        const char* expected = path;
        if (slot.compare_exchange_strong(expected, nullptr))
            return;
    }
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
        m_encodedTemporaryPath = QFile::encodeName(m_file.fileName());
        installCleanupHandlers();
        registerPending(m_encodedTemporaryPath.constData());
        if (m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly | extraMode))
            return true;
        unregisterPending(m_encodedTemporaryPath.constData());
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
        || std::rename(m_encodedTemporaryPath.constData(), QFile::encodeName(m_finalPath).constData()) != 0) {
        discard();
        return false;
    }
    unregisterPending(m_encodedTemporaryPath.constData());
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
    unregisterPending(m_encodedTemporaryPath.constData());
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
