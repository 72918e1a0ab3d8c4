#pragma once
// One mesh part as the bakers consume it: its vertex attributes under fixed
// numbers, its world transform, colour, selection bits and identity.

#include "scene/graph/Mesh.h"

#include <QString>

#include <Eigen/Core>

#include <cstdint>
#include <vector>

namespace Vrn::Baking {

// Attribute numbers of a converted mesh.
enum MeshAttribute : int {
    PositionAttribute = 1,
    NormalAttribute = 2,
    TangentAttribute = 3,
    BinormalAttribute = 4,
    ColorAttribute = 5,
    // UV sets take the numbers from here up to LastUvSetAttribute.
    FirstUvSetAttribute = 6,
    LastUvSetAttribute = 13,
};

struct ConvertedAttribute
{
    int semantic = 0;
    int components = 0;
    // Points into the mesh data the record keeps alive.
    const float* values = nullptr;
    size_t count = 0;
};

struct ConvertedMesh
{
    // Keeps the buffers behind `attributes` alive.
    Ond::SceneGraph::Mesh::DataSPtr data;
    std::vector<ConvertedAttribute> attributes;
    Eigen::Matrix4f transform = Eigen::Matrix4f::Identity();
    Eigen::Vector4f color = Eigen::Vector4f::Ones();
    // 1: the part belongs to the scene (render flag bit 30); 2: it is
    // selected (bit 31).
    uint32_t selectionBits = 0;
    QString name;
    QString index;
    // MurmurHash3 of the decimal revision of the data.
    uint32_t identity = 0;

    const ConvertedAttribute* attribute(int semantic) const
    {
        for (const ConvertedAttribute& a : attributes)
            if (a.semantic == semantic)
                return &a;
        return nullptr;
    }
};

using ConvertedMeshList = std::vector<ConvertedMesh>;

} // namespace Vrn::Baking
