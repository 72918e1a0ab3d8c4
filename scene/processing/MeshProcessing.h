#pragma once
// What post-processing derives for a mesh that the file left without it.
// Each function edits the Mesh::Data it is given; callers hand in a Data
// that no other thread reads yet.

#include "scene/graph/Mesh.h"

namespace Ond::SceneGraph::MeshProcessing {

class TangentSpaceGenerator;

// A SubMesh of triangle lists exists.
bool hasTriangles(const Mesh::Data& data);

// Positions, at least one UV set and a triangle SubMesh.
bool canComputeTangentSpace(const Mesh::Data& data);

// Area-weighted smooth vertex normals from the triangle lists. Does nothing
// without a triangle SubMesh.
void computeVertexNormalBuffer(Mesh::Data& data);

// Tangents and binormals from the generator over the first UV set. The
// binormal of a vertex is sign * (normal x tangent). Does nothing without a
// valid generator or when canComputeTangentSpace fails. A vertex shared by
// corners of different frames keeps the last one written: deindex first.
bool computeTangentSpace(Mesh::Data& data, const TangentSpaceGenerator* generator);

// Stores the box of the positions; force recomputes a box already stored.
void computeBoundingBox(Mesh::Data& data, bool force);

} // namespace Ond::SceneGraph::MeshProcessing
