#include "scene/processing/Request.h"

#include <QtConcurrent/QtConcurrentRun>

namespace Ond::SceneGraph::MeshProcessing {

Request::Request(Mesh::SPtr mesh, std::shared_ptr<const TaskList> taskList)
    : mesh(std::move(mesh)), taskList(std::move(taskList))
{
    source = this->mesh ? this->mesh->getData() : nullptr;
}

void Request::addChildRequest(std::shared_ptr<Request> child)
{
    if (child)
        children.push_back(std::move(child));
}

std::shared_ptr<Mesh::Data> Request::runHere(QThreadPool* pool, const CancelationProxy* cancel)
{
    result = taskList ? taskList->execute(source, pool, cancel) : source;
    for (const auto& child : children)
        child->runHere(pool, cancel);
    return result;
}

QFuture<std::shared_ptr<Mesh::Data>> Request::run(QThreadPool* pool, const CancelationProxy* cancel)
{
    QThreadPool* target = pool ? pool : QThreadPool::globalInstance();
    return QtConcurrent::run(target, [this, pool, cancel] { return runHere(pool, cancel); });
}

} // namespace Ond::SceneGraph::MeshProcessing
