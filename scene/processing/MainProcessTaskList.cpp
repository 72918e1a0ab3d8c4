#include "scene/processing/MainProcessTaskList.h"

#include "program/LogChannel.h"
#include "scene/processing/MeshBuffersProcessor.h"
#include "scene/processing/MeshProcessing.h"
#include "scene/processing/TangentSpaceGenerator.h"

namespace Ond::SceneGraph::MeshProcessing {

using SceneLoad::SceneLoadFlag;

std::shared_ptr<MainProcessTaskList> MainProcessTaskList::fromOptions(const SceneLoad::SceneLoadOptions& options,
                                                                      bool deindexBeforeTangents,
                                                                      bool reindexAfterTangents)
{
    const uint32_t flags = options.flags
                           & ~uint32_t(SceneLoadFlag::ImporterComputesNormals | SceneLoadFlag::ReservedNormals);
    const uint32_t wanted = SceneLoadFlag::KeepNormals | SceneLoadFlag::KeepTangents | SceneLoadFlag::ComputeTangents
                            | SceneLoadFlag::ComputeBoundingBox;
    if ((flags & wanted) == 0)
        return nullptr;

    auto list = std::make_shared<MainProcessTaskList>();
    list->tangentGenerator = options.tangentGenerator ? options.tangentGenerator : TangentSpaceGenerator::getDefault();
    list->normalsIfMissing = flags & SceneLoadFlag::KeepNormals;
    list->forceTangents = flags & SceneLoadFlag::ComputeTangents;
    list->tangentsIfMissing = flags & (SceneLoadFlag::KeepTangents | SceneLoadFlag::ComputeTangents);
    list->boundingBoxIfMissing = flags & SceneLoadFlag::ComputeBoundingBox;
    list->deindexBeforeTangents = deindexBeforeTangents;
    list->reindexAfterTangents = reindexAfterTangents;
    return list;
}

std::vector<Task> MainProcessTaskList::getTasks(QThreadPool*, const std::shared_ptr<Mesh::Data>& meshData) const
{
    std::vector<Task> tasks;
    if (!meshData)
        return tasks;
    const Mesh::Data& data = *meshData;

    // Steps that edit in place first take a private copy of the published
    // Data; steps that rebuild the buffers already give a new one.
    const std::shared_ptr<Mesh::Data> published = meshData;
    auto owned = [published](std::shared_ptr<Mesh::Data> d) { return d == published ? d->clone() : d; };

    if (forceNormals || (normalsIfMissing && !data.getNormals())) {
        if (hasTriangles(data)) {
            tasks.push_back({1, [owned](std::shared_ptr<Mesh::Data> d) {
                                 d = owned(std::move(d));
                                 computeVertexNormalBuffer(*d);
                                 return d;
                             }});
        }
    }

    const bool wantTangents = forceTangents
                              || (tangentsIfMissing && !(data.getTangents() && !data.getBinormals()));
    if (wantTangents && canComputeTangentSpace(data)) {
        if (!tangentGenerator) {
            if (!generatorWarningGiven.exchange(true))
                Core::zmfBakerChannel().warning(QStringLiteral("Not tangent space generator found."));
        } else {
            if (deindexBeforeTangents)
                tasks.push_back({1, [](std::shared_ptr<Mesh::Data> d) { return MeshDeindexer(d).process(); }});
            auto generator = tangentGenerator;
            tasks.push_back({1, [owned, generator](std::shared_ptr<Mesh::Data> d) {
                                 d = owned(std::move(d));
                                 computeTangentSpace(*d, generator.get());
                                 return d;
                             }});
            if (reindexAfterTangents)
                tasks.push_back({1, [](std::shared_ptr<Mesh::Data> d) { return MeshReindexer(d).process(); }});
        }
    }

    if (forceBoundingBox) {
        tasks.push_back({1, [owned](std::shared_ptr<Mesh::Data> d) {
                             d = owned(std::move(d));
                             computeBoundingBox(*d, true);
                             return d;
                         }});
    } else if (boundingBoxIfMissing) {
        // A missing box is a cache the Data fills on any read: no private
        // copy of a huge mesh for it.
        tasks.push_back({1, [](std::shared_ptr<Mesh::Data> d) {
                             computeBoundingBox(*d, false);
                             return d;
                         }});
    }
    return tasks;
}

} // namespace Ond::SceneGraph::MeshProcessing
