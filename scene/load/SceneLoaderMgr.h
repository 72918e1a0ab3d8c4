#pragma once
// Picks the importer for a file by its suffix: loaders are asked in
// registration order and the first that can load the suffix wins.

#include "program/ProgressInterface.h"
#include "scene/graph/Scene.h"
#include "scene/load/SceneFormat.h"
#include "scene/load/SceneLoadOptions.h"

#include <QByteArray>
#include <QObject>
#include <QSharedPointer>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace Ond::SceneLoad {

class SceneHandler;
class SceneLoader;

class SceneLoaderMgr : public QObject
{
    Q_OBJECT

public:
    // Takes ownership of the loaders; their order is the search order.
    explicit SceneLoaderMgr(std::vector<SceneLoader*>&& loaders);
    ~SceneLoaderMgr() override;

    const SceneFormatList& getSupportedFormats() const { return m_formats; }
    const std::vector<SceneLoader*>& getLoaders() const { return m_loaders; }

    // The first loader that takes the suffix, or null.
    SceneLoader* findLoader(const QByteArray& suffix, const SceneLoadOptions& options) const;

    // An empty pointer when no loader takes the suffix (the file is then not
    // opened) or when the importer fails.
    std::shared_ptr<SceneGraph::Scene> load(const QString& filePath, const QByteArray& suffix,
                                            const SceneLoadOptions& options,
                                            Core::ProgressInterface* progress,
                                            SceneHandler* handler = nullptr) const;

private:
    std::vector<SceneLoader*> m_loaders;
    SceneFormatList m_formats;
};

using SceneLoaderMgrSPtr = QSharedPointer<SceneLoaderMgr>;

// Loader kinds of the program, in registration order. Each importer's
// folder registers its loader here once (see registerSceneLoader).
using SceneLoaderCreator = std::function<SceneLoader*()>;

// Adds a loader kind after those registered before. Registering the same
// key twice replaces the creator in place and keeps its position.
void registerSceneLoader(const QString& key, SceneLoaderCreator creator);

// A manager with one loader of each registered kind.
SceneLoaderMgrSPtr createSceneLoaderMgr();

} // namespace Ond::SceneLoad
