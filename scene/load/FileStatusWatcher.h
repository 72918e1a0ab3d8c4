#pragma once
// Reports that the content of one file changed.

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>

namespace Ond::Core {

class FileStatusWatcher : public QObject
{
    Q_OBJECT

public:
    explicit FileStatusWatcher(const QString& path);
    ~FileStatusWatcher() override;

    const QString& getPath() const { return m_path; }

signals:
    void fileContentChanged(const QString& path);

private:
    void onFileChanged(const QString& path);

    QString m_path;
    QFileSystemWatcher m_watcher;
};

} // namespace Ond::Core
