#pragma once
// The user's choice of mesh parts ("input-selection"): "<node>" or
// "<node>@<material>", where the node is a mesh part or a transform group
// and the material an index or a name. Selected parts carry render flag
// bit 31; errors go to the "ZMFBaker" channel and the next token is tried.

#include "scene/graph/Mesh.h"
#include "scene/graph/Scene.h"

#include <QStringList>
#include <QVariant>

#include <vector>

namespace ProgramCommand {

class SceneSelection
{
public:
    // An empty list selects every part; otherwise only what the tokens name.
    static void apply(Ond::SceneGraph::Scene& scene, const QStringList& selection);

    // Indices of the SubMeshes with the material `key` (an int: the material
    // index; a string: the material name). When `node` is given, a miss or
    // a key of another type is reported with it.
    static std::vector<size_t> findMaterial(const Ond::SceneGraph::Mesh::Data& data, const QVariant& key,
                                            const QString* node);
    static QString materialNotFoundText(const QVariant& key, const QString& node);
};

} // namespace ProgramCommand
