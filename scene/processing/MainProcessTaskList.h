#pragma once
// The post-processing steps of a freshly loaded mesh, derived from the load
// flags: normals, then the tangent group (deindex, tangents, reindex), then
// the bounding box, each only when it is asked for and missing.

#include "scene/load/SceneLoadOptions.h"
#include "scene/processing/TaskList.h"

#include <atomic>
#include <memory>

namespace Ond::SceneGraph::MeshProcessing {

class TangentSpaceGenerator;

class MainProcessTaskList : public TaskList
{
public:
    MainProcessTaskList() = default;

    // Null when the flags ask for none of normals, tangents or box (bits
    // 0x01, 0x04, 0x08, 0x40). A null generator in the options means the
    // process-wide default, looked up now.
    static std::shared_ptr<MainProcessTaskList> fromOptions(const SceneLoad::SceneLoadOptions& options,
                                                            bool deindexBeforeTangents, bool reindexAfterTangents);

    std::vector<Task> getTasks(QThreadPool* scheduler, const std::shared_ptr<Mesh::Data>& meshData) const override;

    std::shared_ptr<TangentSpaceGenerator> tangentGenerator;
    bool forceNormals = false;
    bool normalsIfMissing = false;
    bool forceTangents = false;
    bool tangentsIfMissing = false;
    bool forceBoundingBox = false;
    bool boundingBoxIfMissing = false;
    bool deindexBeforeTangents = false;
    bool reindexAfterTangents = false;

private:
    // The missing-generator warning goes out once per list.
    mutable std::atomic<bool> generatorWarningGiven{false};
};

} // namespace Ond::SceneGraph::MeshProcessing
