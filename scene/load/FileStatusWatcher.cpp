#include "scene/load/FileStatusWatcher.h"

#include <QFileInfo>

namespace Ond::Core {

FileStatusWatcher::FileStatusWatcher(const QString& path) : m_path(path)
{
    if (QFileInfo::exists(path))
        m_watcher.addPath(path);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &FileStatusWatcher::onFileChanged,
            Qt::DirectConnection);
}

FileStatusWatcher::~FileStatusWatcher() = default;

void FileStatusWatcher::onFileChanged(const QString& path)
{
    // Editors replace files by renaming; the watch is lost then and renewed.
    if (!m_watcher.files().contains(path) && QFileInfo::exists(path))
        m_watcher.addPath(path);
    emit fileContentChanged(path);
}

} // namespace Ond::Core
