#include "scene/load/UrlSceneHandler.h"

#include "scene/graph/MurmurHash3.h"
#include "scene/load/SceneLoaderMgr.h"

#include <QFile>
#include <QFileInfo>

namespace Ond::SceneLoad {

UrlSceneHandler::UrlSceneHandler(const QUrl& url)
    : m_url(url), m_watcher(std::make_unique<Core::FileStatusWatcher>(getLocalPath()))
{
    connect(m_watcher.get(), &Core::FileStatusWatcher::fileContentChanged, this,
            &UrlSceneHandler::onFileContentChanged,
            Qt::ConnectionType(Qt::UniqueConnection | Qt::DirectConnection));
}

UrlSceneHandler::~UrlSceneHandler() = default;

QString UrlSceneHandler::getLocalPath() const
{
    return m_url.isLocalFile() ? m_url.toLocalFile() : m_url.toString();
}

uint32_t UrlSceneHandler::getContentHash() const
{
    // A FIFO or a device would block the read or never end.
    if (!QFileInfo(getLocalPath()).isFile())
        return 0;
    QFile file(getLocalPath());
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    // Read in pieces: high-definition meshes run to gigabytes.
    constexpr qint64 pieceSize = 16 << 20;
    QByteArray piece(pieceSize, Qt::Uninitialized);
    SceneGraph::MurmurHash3x86_32 hash(0);
    qint64 total = 0;
    for (;;) {
        const qint64 got = file.read(piece.data(), pieceSize);
        if (got <= 0)
            break;
        hash.update(piece.constData(), size_t(got));
        total += got;
    }
    return total == 0 ? 0 : hash.finish();
}

std::shared_ptr<SceneGraph::Scene> UrlSceneHandler::loadScene(const SceneLoadOptions& options,
                                                              const SceneLoaderMgr* loaderMgr,
                                                              Core::ProgressInterface* progress)
{
    const QFileInfo info(getLocalPath());
    if (!loaderMgr || !info.exists())
        return nullptr;
    // Only files are read; a FIFO, socket or device could block for ever.
    // Folders go on to the importer, which names them.
    if (!info.isFile() && !info.isDir())
        return nullptr;
    return loaderMgr->load(info.absoluteFilePath(), info.suffix().toLatin1(), options, progress, this);
}

void UrlSceneHandler::onFileContentChanged()
{
    emit newVersionAvailable();
}

} // namespace Ond::SceneLoad
