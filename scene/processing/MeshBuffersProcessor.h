#pragma once
// Builders of new vertex buffers from a source Mesh::Data, which they only
// read. Materials and render flags of the SubMeshes are kept, UV sets keep
// their channel ids, the bounding box is left to be recomputed.

#include "scene/graph/Mesh.h"

#include <memory>

namespace Ond::SceneGraph::MeshProcessing {

struct MeshBuffersProcessor
{
    explicit MeshBuffersProcessor(std::shared_ptr<const Mesh::Data> source) : source(std::move(source)) {}
    virtual ~MeshBuffersProcessor() = default;

    // The new Data; the source itself when there is nothing to do.
    virtual std::shared_ptr<Mesh::Data> process() const = 0;

protected:
    // New Data from buffers parallel to the source's, with its UV channels.
    std::shared_ptr<Mesh::Data> makeData(Vec3BufferUPtr positions, Vec3BufferUPtr normals,
                                         Vec3BufferUPtr tangents, Vec3BufferUPtr binormals,
                                         Vec4BufferUPtr colors, std::vector<Vec2BufferUPtr> uvSets,
                                         std::vector<SubMesh> subMeshes) const;

    std::shared_ptr<const Mesh::Data> source;
};

// Every index becomes a vertex of its own, in index order over all
// SubMeshes, so that per-corner values can't overwrite one another. The
// vertex count is the sum of all index counts.
struct MeshDeindexer : MeshBuffersProcessor
{
    using MeshBuffersProcessor::MeshBuffersProcessor;
    std::shared_ptr<Mesh::Data> process() const override;
};

// Merges vertices whose values are bit for bit the same in every buffer,
// in order of first occurrence, and renumbers the indices.
struct MeshReindexer : MeshBuffersProcessor
{
    using MeshBuffersProcessor::MeshBuffersProcessor;
    std::shared_ptr<Mesh::Data> process() const override;
};

} // namespace Ond::SceneGraph::MeshProcessing
