#pragma once
// What a load keeps from the file and what post-processing derives.

#include <cstdint>
#include <memory>

namespace Ond::SceneGraph::MeshProcessing {
class TangentSpaceGenerator;
}

namespace Ond::SceneLoad {

enum SceneLoadFlag : uint32_t {
    // Keep the file's normals; post-processing derives them if none remain.
    KeepNormals = 0x01,
    // The importer computes smooth normals when the file has none.
    ImporterComputesNormals = 0x02,
    // Keep the file's tangents and binormals; derived if absent.
    KeepTangents = 0x04,
    // Post-processing computes tangents even if the file has some.
    ComputeTangents = 0x08,
    KeepUvSets = 0x10,
    KeepColors = 0x20,
    // Compute the bounding box if it is still empty.
    ComputeBoundingBox = 0x40,
    // Reserved beside ImporterComputesNormals; post-processing ignores it.
    ReservedNormals = 0x80,
};

// The masks in use.
constexpr uint32_t AllLoadFlags = 255;      // SceneMgr until told otherwise
constexpr uint32_t BakeLoadFlags = 63;      // the bake commands
constexpr uint32_t RecomputeTangentsLoadFlags = 59; // file tangents not kept
constexpr uint32_t InfoLoadFlags = 49;      // the info command

struct SceneLoadOptions
{
    SceneLoadOptions() = default;
    explicit SceneLoadOptions(uint32_t loadFlags,
                              std::shared_ptr<SceneGraph::MeshProcessing::TangentSpaceGenerator> generator = nullptr)
        : flags(loadFlags), tangentGenerator(std::move(generator))
    {
    }

    bool has(uint32_t flag) const { return (flags & flag) != 0; }

    uint32_t flags = AllLoadFlags;
    // Null: the process-wide default generator is looked up when needed.
    std::shared_ptr<SceneGraph::MeshProcessing::TangentSpaceGenerator> tangentGenerator;
};

} // namespace Ond::SceneLoad
