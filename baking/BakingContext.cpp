#include "baking/BakingContext.h"

#include "baking/SceneConverterVisitor.h"

#include "image/SurfaceCodecManager.h"
#include "image/UDIMTiles.h"
#include "scene/load/SceneMgr.h"
#include "scene/load/UrlSceneHandler.h"
#include "scene/processing/TangentSpaceGenerator.h"

#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <algorithm>

namespace Vrn::Baking {

using Ond::SceneGraph::MeshProcessing::TangentSpaceGenerator;

BakingContext::BakingContext(std::shared_ptr<Ond::SceneLoad::SceneMgr> sceneMgr)
    : m_sceneMgr(std::move(sceneMgr)), m_sceneInfo(std::make_shared<SceneInfoCache>())
{
}

BakingContext::~BakingContext() = default;

std::string BakingContext::tangentPluginName() const
{
    const TangentSpaceGenerator::SPtr generator = TangentSpaceGenerator::getDefault();
    return generator ? generator->getPluginName().toStdString() : std::string();
}

bool BakingContext::isCancelled() const
{
    for (const auto& handler : m_handlers)
        if (handler && handler->isCancelled())
            return true;
    std::lock_guard<std::mutex> lock(m_jobsMutex);
    for (const std::weak_ptr<BakingJob>& weak : m_jobs) {
        const std::shared_ptr<BakingJob> job = weak.lock();
        if (job && job->isCancelled())
            return true;
    }
    return false;
}

bool BakingContext::perFragmentBinormal() const
{
    return TangentSpaceGenerator::isPerFragmentBinormal();
}

bool BakingContext::loadSurface(const QString& path, Ond::Surfaces::SurfaceSPtr& result)
{
    result.reset();
    // Paths from the command line arrive as file: URLs.
    const QString local = path.startsWith(QLatin1String("file:")) ? QUrl(path).toLocalFile() : path;
    QFile file(local);
    const auto codec = Ond::Surfaces::SurfaceCodecManager::instance().findCodec(
        &file, QFileInfo(local).suffix().toLatin1(), Ond::Surfaces::CapabilityRead);
    if (!codec)
        return false;
    if (!codec->read(result))
        result.reset();
    return !result.isNull();
}

void BakingContext::tileOutput(const Ond::Surfaces::SurfaceSPtr& surface, int cellX, int cellY, bool isFinal)
{
    if (m_tileOutput)
        m_tileOutput(surface, cellX, cellY, isFinal);
}

void BakingContext::setTilesProvider(std::shared_ptr<BakingUDIMTilesProvider> provider)
{
    m_tilesProvider = std::move(provider);
    if (!m_tilesProvider) {
        m_tileOutput = nullptr;
        return;
    }
    m_tileOutput = [provider = m_tilesProvider](const Ond::Surfaces::SurfaceSPtr& surface, int cellX, int cellY,
                                                bool isFinal) { provider->addRegion(surface, cellX, cellY, isFinal); };
}

void BakingContext::beginTile(int u, int v, int width, int height)
{
    if (m_tilesProvider)
        m_tilesProvider->beginTile(u, v, width, height);
}

void BakingContext::endTile()
{
    if (m_tilesProvider)
        m_tilesProvider->endTile();
}

void BakingContext::progressBegin(const QString& name)
{
    if (TaskHandler* handler = firstHandler())
        handler->begin(name);
}

void BakingContext::progressValue(double fraction)
{
    if (TaskHandler* handler = firstHandler())
        handler->setValue(fraction);
}

void BakingContext::progressEnd()
{
    if (TaskHandler* handler = firstHandler())
        handler->end();
}

void BakingContext::progressText(const QString& text)
{
    if (TaskHandler* handler = firstHandler())
        handler->setText(text);
}

Ond::SceneGraph::SceneSPtr BakingContext::loadSceneFile(const QString& pathOrUrl, uint32_t flags,
                                                       Ond::Core::ProgressInterface* progress)
{
    if (!m_sceneMgr || pathOrUrl.isEmpty())
        return nullptr;
    const QUrl url = pathOrUrl.startsWith(QLatin1String("file:"))
                         ? QUrl(pathOrUrl)
                         : QUrl::fromLocalFile(QFileInfo(pathOrUrl).absoluteFilePath());
    const Ond::SceneLoad::SceneId id = url.toString().toStdString();
    Ond::SceneGraph::SceneSPtr scene;
    {
        // The manager's scenes are read only under its lock.
        Ond::SceneLoad::SceneMgr::LockGuard guard(*m_sceneMgr);
        m_sceneMgr->setOptions(Ond::SceneLoad::SceneLoadOptions(flags));
        m_sceneMgr->registerScene(id, std::make_shared<Ond::SceneLoad::UrlSceneHandler>(url));
        scene = m_sceneMgr->getScene(id, progress);
    }
    if (scene)
        convertScene(scene);
    return scene;
}

void BakingContext::convertScene(const Ond::SceneGraph::SceneSPtr& scene)
{
    if (!scene)
        return;
    SceneConverterVisitor visitor;
    scene->accept(visitor);
    m_sceneInfo->store(scene, visitor.takeMeshes());
}

SceneInfoCache::MeshesSPtr BakingContext::convertedMeshes(const Ond::SceneGraph::SceneSPtr& scene) const
{
    return m_sceneInfo->find(scene);
}

void BakingContext::setTaskHandler(int slot, std::shared_ptr<TaskHandler> handler)
{
    if (slot == 0 || slot == 1)
        m_handlers[slot] = std::move(handler);
}

void BakingContext::addJob(const std::weak_ptr<BakingJob>& job)
{
    std::lock_guard<std::mutex> lock(m_jobsMutex);
    // Finished jobs drop out here rather than on every cancellation check.
    m_jobs.erase(std::remove_if(m_jobs.begin(), m_jobs.end(),
                                [](const std::weak_ptr<BakingJob>& j) { return j.expired(); }),
                 m_jobs.end());
    m_jobs.push_back(job);
}

} // namespace Vrn::Baking
