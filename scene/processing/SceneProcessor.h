#pragma once
// Post-processing of the meshes of loaded scenes, owned by a scene handler.
// Results are cached by the revision of the source Data, so that a mesh
// seen again unchanged takes the stored result instead of a new run.

#include "program/ProgressInterface.h"
#include "scene/graph/Scene.h"
#include "scene/load/SceneLoadOptions.h"
#include "scene/processing/SPtrCacheT.h"

#include <cstdint>
#include <memory>
#include <mutex>

namespace Ond::SceneGraph::MeshProcessing {

using ComputedMeshCache = SPtrCacheT<uint64_t, Mesh>;

class SceneProcessor
{
public:
    SceneProcessor() = default;

    // Runs the steps the options ask for on every mesh of the scene, meshes
    // in parallel, and replaces each mesh's Data by atomic store. A null
    // scene or options that ask for nothing leave everything as it is.
    void processScene(const std::shared_ptr<Scene>& scene, const SceneLoad::SceneLoadOptions& options,
                      Core::ProgressInterface* progress, bool deindexBeforeTangents, bool reindexAfterTangents);

    // Number of cached results; for diagnostics.
    size_t cachedMeshCount() const;
    void clearCache();

private:
    mutable std::mutex mutex;
    ComputedMeshCache computedMeshCache;
};

} // namespace Ond::SceneGraph::MeshProcessing
