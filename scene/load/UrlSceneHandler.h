#pragma once
// A scene read from a local file. Its content hash, not its time stamp,
// tells whether the file changed.

#include "scene/load/FileStatusWatcher.h"
#include "scene/load/SceneHandler.h"

#include <QUrl>

#include <memory>

namespace Ond::SceneLoad {

class UrlSceneHandler : public SceneHandler
{
    Q_OBJECT

public:
    explicit UrlSceneHandler(const QUrl& url);
    ~UrlSceneHandler() override;

    const QUrl& getUrl() const { return m_url; }
    QString getLocalPath() const;

    // MurmurHash3 (x86, 32 bits, seed 0) of the whole file; 0 for a missing
    // or empty file.
    uint32_t getContentHash() const override;
    bool isValid() const override { return true; }
    // Empty without a manager or without the file.
    std::shared_ptr<SceneGraph::Scene> loadScene(const SceneLoadOptions& options,
                                                 const SceneLoaderMgr* loaderMgr,
                                                 Core::ProgressInterface* progress) override;

public slots:
    void onFileContentChanged();

private:
    QUrl m_url;
    std::unique_ptr<Core::FileStatusWatcher> m_watcher;
};

} // namespace Ond::SceneLoad
