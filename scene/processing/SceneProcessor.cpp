#include "scene/processing/SceneProcessor.h"

#include "scene/processing/CancelationProxy.h"
#include "scene/processing/MainProcessTaskList.h"
#include "scene/processing/Request.h"

#include <QFuture>

#include <set>
#include <vector>

namespace Ond::SceneGraph::MeshProcessing {

void SceneProcessor::processScene(const std::shared_ptr<Scene>& scene, const SceneLoad::SceneLoadOptions& options,
                                  Core::ProgressInterface* progress, bool deindexBeforeTangents,
                                  bool reindexAfterTangents)
{
    if (!scene)
        return;
    std::lock_guard<std::mutex> lock(mutex);
    std::shared_ptr<const TaskList> taskList =
        MainProcessTaskList::fromOptions(options, deindexBeforeTangents, reindexAfterTangents);
    if (!taskList)
        return;

    // Meshes with a cached result take it; the others get a request.
    std::vector<std::shared_ptr<Request>> requests;
    std::set<const Mesh*> seen;
    scene->forAllMeshes([&](const Mesh::SPtr& mesh) {
        if (!mesh || !seen.insert(mesh.get()).second)
            return true;
        const std::shared_ptr<Mesh::Data> data = mesh->getData();
        if (!data)
            return true;
        if (const Mesh::SPtr cached = computedMeshCache.find(data->getRevision())) {
            if (const auto cachedData = cached->getData(); cachedData && cachedData != data)
                mesh->setData(cachedData);
            return true;
        }
        requests.push_back(std::make_shared<Request>(mesh, taskList));
        return true;
    });
    if (requests.empty())
        return;

    SceneCancelationProxy cancel(progress);
    std::vector<QFuture<std::shared_ptr<Mesh::Data>>> futures;
    futures.reserve(requests.size());
    for (const auto& request : requests)
        futures.push_back(request->run(nullptr, &cancel));
    for (auto& future : futures)
        future.waitForFinished();

    for (const auto& request : requests) {
        const std::shared_ptr<Mesh::Data>& result = request->getResult();
        if (!result)
            continue; // cancelled: the mesh stays as it was
        auto computed = std::make_shared<Mesh>(result, request->getMesh()->getName());
        computedMeshCache.insert(request->getSource()->getRevision(), computed);
        // The result is final as it stands: seeing it again is a hit too.
        computedMeshCache.insert(result->getRevision(), computed);
        if (result != request->getSource())
            request->getMesh()->setData(result);
    }
}

size_t SceneProcessor::cachedMeshCount() const
{
    std::lock_guard<std::mutex> lock(mutex);
    return computedMeshCache.size();
}

void SceneProcessor::clearCache()
{
    std::lock_guard<std::mutex> lock(mutex);
    computedMeshCache.clear();
}

} // namespace Ond::SceneGraph::MeshProcessing
