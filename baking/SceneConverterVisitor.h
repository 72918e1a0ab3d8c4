#pragma once
// Turns the mesh parts of a scene into ConvertedMesh records, in visiting
// order. Parts without positions are skipped; at most eight UV sets are
// kept per part.

#include "baking/ConvertedMesh.h"

#include "scene/graph/AbstractFilteredSceneVisitor.h"

namespace Vrn::Baking {

class SceneConverterVisitor : public Ond::SceneGraph::AbstractFilteredSceneVisitor
{
public:
    SceneConverterVisitor();

    // Every mesh part, whatever its flags or UV sets.
    void visit(const Ond::SceneGraph::MeshDisplayComponent* component) override;

    const ConvertedMeshList& meshes() const { return m_meshes; }
    ConvertedMeshList takeMeshes() { return std::move(m_meshes); }

    static uint32_t identityOf(uint64_t revision);

private:
    ConvertedMeshList m_meshes;
    int m_running = 0;
};

} // namespace Vrn::Baking
