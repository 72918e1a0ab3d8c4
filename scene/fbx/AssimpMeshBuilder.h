#pragma once
// Turns the Assimp meshes that one node references into one Mesh::Data:
// one SubMesh per Assimp mesh (Assimp splits by material), corners welded
// back into shared vertices where all kept attributes are equal.

#include "scene/graph/Mesh.h"
#include "scene/load/SceneLoadOptions.h"

#include <memory>

struct aiScene;

namespace Ond::SceneLoad {

// Null when none of the meshes has a triangle. Normals the file lacks are
// computed here only with ImporterComputesNormals, the way the OBJ reader
// does it: unit face normals summed per position.
std::shared_ptr<SceneGraph::Mesh::Data> buildMeshData(const aiScene& scene, const unsigned* meshIndices,
                                                      unsigned meshCount, const SceneLoadOptions& options);

} // namespace Ond::SceneLoad
