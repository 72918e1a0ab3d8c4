#include "scene/load/SceneLoaderMgr.h"

#include "scene/load/SceneImporter.h"
#include "scene/load/SceneLoader.h"

#include <exception>
#include <mutex>
#include <utility>

#include "scene/fbx/FBXSceneLoader.h"
#include "scene/obj/OBJSceneLoader.h"

namespace Ond::SceneLoad {

SceneLoaderMgr::SceneLoaderMgr(std::vector<SceneLoader*>&& loaders) : m_loaders(std::move(loaders))
{
    for (SceneLoader* loader : m_loaders) {
        if (loader)
            m_formats += loader->getSupportedFormats();
    }
}

SceneLoaderMgr::~SceneLoaderMgr()
{
    for (SceneLoader* loader : m_loaders)
        delete loader;
}

SceneLoader* SceneLoaderMgr::findLoader(const QByteArray& suffix, const SceneLoadOptions& options) const
{
    for (SceneLoader* loader : m_loaders) {
        if (loader && loader->canLoad(suffix, options))
            return loader;
    }
    return nullptr;
}

std::shared_ptr<SceneGraph::Scene> SceneLoaderMgr::load(const QString& filePath, const QByteArray& suffix,
                                                        const SceneLoadOptions& options,
                                                        Core::ProgressInterface* progress,
                                                        SceneHandler* handler) const
{
    SceneLoader* loader = findLoader(suffix, options);
    if (!loader)
        return nullptr;
    // An importer that throws is a failed load, not a dead program.
    try {
        std::unique_ptr<SceneImporter> importer(loader->createImporter(filePath, suffix));
        if (!importer)
            return nullptr;
        importer->setHandler(handler);
        return std::shared_ptr<SceneGraph::Scene>(importer->import(options, progress));
    } catch (const std::exception&) {
        return nullptr;
    }
}

namespace {

struct LoaderRegistry
{
    std::mutex mutex;
    std::vector<std::pair<QString, SceneLoaderCreator>> creators;
    bool builtInsAdded = false;
};

LoaderRegistry& registry()
{
    static LoaderRegistry instance;
    return instance;
}

void addLocked(LoaderRegistry& reg, const QString& key, SceneLoaderCreator creator)
{
    for (auto& entry : reg.creators) {
        if (entry.first == key) {
            entry.second = std::move(creator);
            return;
        }
    }
    reg.creators.emplace_back(key, std::move(creator));
}

// The loaders built into the program come first, in this order, whether or
// not their own registration ran (a static library may drop an object file
// that nothing references). The Assimp formats come before OBJ.
void addBuiltInsLocked(LoaderRegistry& reg)
{
    if (reg.builtInsAdded)
        return;
    reg.builtInsAdded = true;
    std::vector<std::pair<QString, SceneLoaderCreator>> later = std::move(reg.creators);
    reg.creators.clear();
    addLocked(reg, QStringLiteral("fbx"), [] { return new FBXSceneLoader; });
    addLocked(reg, QStringLiteral("obj"), [] { return new OBJSceneLoader; });
    for (auto& entry : later)
        addLocked(reg, entry.first, std::move(entry.second));
}

} // namespace

void registerSceneLoader(const QString& key, SceneLoaderCreator creator)
{
    if (!creator)
        return;
    LoaderRegistry& reg = registry();
    std::lock_guard<std::mutex> lock(reg.mutex);
    addBuiltInsLocked(reg);
    addLocked(reg, key, std::move(creator));
}

SceneLoaderMgrSPtr createSceneLoaderMgr()
{
    std::vector<SceneLoader*> loaders;
    {
        LoaderRegistry& reg = registry();
        std::lock_guard<std::mutex> lock(reg.mutex);
        addBuiltInsLocked(reg);
        for (const auto& entry : reg.creators) {
            if (SceneLoader* loader = entry.second())
                loaders.push_back(loader);
        }
    }
    return SceneLoaderMgrSPtr::create(std::move(loaders));
}

} // namespace Ond::SceneLoad
