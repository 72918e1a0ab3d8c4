#include "scene/processing/TaskList.h"

#include "scene/processing/CancelationProxy.h"

namespace Ond::SceneGraph::MeshProcessing {

std::shared_ptr<Mesh::Data> TaskList::execute(const std::shared_ptr<Mesh::Data>& meshData, QThreadPool* scheduler,
                                              const CancelationProxy* cancel) const
{
    if (!meshData)
        return meshData;
    std::shared_ptr<Mesh::Data> data = meshData;
    for (const Task& task : getTasks(scheduler, meshData)) {
        if (cancel && cancel->isCanceled())
            return nullptr;
        data = task.function(std::move(data));
    }
    return data;
}

} // namespace Ond::SceneGraph::MeshProcessing
