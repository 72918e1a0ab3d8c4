#pragma once
// The processing of one mesh: its task chain, run on the thread pool, and
// requests that depend on it, started once it has finished.

#include "scene/graph/Mesh.h"
#include "scene/processing/TaskList.h"

#include <QFuture>

#include <memory>
#include <vector>

namespace Ond::SceneGraph::MeshProcessing {

class CancelationProxy;

class Request
{
public:
    Request(Mesh::SPtr mesh, std::shared_ptr<const TaskList> taskList);

    const Mesh::SPtr& getMesh() const { return mesh; }
    void addChildRequest(std::shared_ptr<Request> child);

    // Starts the chain on the pool (the global one when null). The future
    // gives the new Data: the source itself when there was nothing to do,
    // null when cancelled. Children run after it, on the same thread.
    QFuture<std::shared_ptr<Mesh::Data>> run(QThreadPool* pool, const CancelationProxy* cancel);

    // The same on the calling thread.
    std::shared_ptr<Mesh::Data> runHere(QThreadPool* pool, const CancelationProxy* cancel);

    // The Data the chain started from and what it produced.
    const std::shared_ptr<Mesh::Data>& getSource() const { return source; }
    const std::shared_ptr<Mesh::Data>& getResult() const { return result; }

private:
    Mesh::SPtr mesh;
    std::shared_ptr<const TaskList> taskList;
    std::vector<std::shared_ptr<Request>> children;
    std::shared_ptr<Mesh::Data> source;
    std::shared_ptr<Mesh::Data> result;
};

} // namespace Ond::SceneGraph::MeshProcessing
