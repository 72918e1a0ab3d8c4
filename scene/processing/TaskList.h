#pragma once
// A list of steps that post-processing applies to one mesh. A step takes the
// mesh's Data and returns the Data that replaces it; it may edit its
// argument in place only when that is not the Data the mesh publishes.

#include "scene/graph/Mesh.h"

#include <QThreadPool>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace Ond::SceneGraph::MeshProcessing {

class CancelationProxy;

struct Task
{
    using Function = std::function<std::shared_ptr<Mesh::Data>(std::shared_ptr<Mesh::Data>)>;

    int32_t kind = 1;
    Function function;
};

class TaskList
{
public:
    virtual ~TaskList() = default;

    // The steps for this mesh, in order; empty when it needs none.
    virtual std::vector<Task> getTasks(QThreadPool* scheduler, const std::shared_ptr<Mesh::Data>& meshData) const = 0;

    // Runs the steps on the mesh's Data and returns the result: the Data
    // itself when there was nothing to do, null when cancelled (the mesh
    // then stays as it was).
    std::shared_ptr<Mesh::Data> execute(const std::shared_ptr<Mesh::Data>& meshData, QThreadPool* scheduler = nullptr,
                                        const CancelationProxy* cancel = nullptr) const;
};

} // namespace Ond::SceneGraph::MeshProcessing
