#pragma once
// The low mesh or the cage as the seed rasterizer draws it: per mesh part a
// vertex array in object space with its transforms and mesh id, and the
// names of the parts that lack an attribute the draw needs. Kept between
// bakes while its key matches. Belongs to the current GL context.

#include "scene/graph/Scene.h"

#include <Eigen/Core>
#include <QStringList>

#include <cstdint>
#include <vector>

namespace Ond::Baking {

class GLProgram;

class MeshDrawList
{
public:
    // Attribute locations; the first three are the mesh semantics of the
    // low-poly programs, the smoothed normal takes a free one.
    static constexpr unsigned PositionLocation = 1;
    static constexpr unsigned NormalLocation = 2;
    static constexpr unsigned SmoothNormalLocation = 5;
    static constexpr unsigned UvLocation = 6;

    struct Record
    {
        unsigned vertexArray = 0;
        unsigned vertexBuffer = 0;
        unsigned indexBuffer = 0;
        uint32_t indexCount = 0;
        Eigen::Matrix3f normalMatrix = Eigen::Matrix3f::Identity();
        Eigen::Matrix4f model = Eigen::Matrix4f::Identity();
        uint32_t meshId = 0;
    };

    struct Key
    {
        uint64_t sceneStamp = 0;
        int32_t uvSet = 0;
        uint32_t flags = 0;
        // Vertex arrays are not shared between contexts.
        const void* context = nullptr;
        bool operator==(const Key& other) const
        {
            return sceneStamp == other.sceneStamp && uvSet == other.uvSet && flags == other.flags
                   && context == other.context;
        }
    };

    MeshDrawList() = default;
    ~MeshDrawList();
    MeshDrawList(const MeshDrawList&) = delete;
    MeshDrawList& operator=(const MeshDrawList&) = delete;

    static Key keyOf(const SceneGraph::Scene& scene, int32_t uvSet, uint32_t flags);

    // True when the list already holds `key`.
    bool matches(const Key& key) const { return m_built && m_key == key; }
    // Uploads every enabled mesh part of the scene. Parts lacking
    // positions, normals or the UV set are listed, not drawn.
    // `normalsRequired` off: parts without normals are drawn with zero normals
    // instead of being reported (the cage is drawn by position only).
    void build(const SceneGraph::Scene& scene, const Key& key, bool smoothNormals, bool normalsRequired = true);
    void release();
    // Drops the GL names without deleting them, when they belong to a
    // context that is not current.
    void forget();
    const Key& key() const { return m_key; }

    bool isMissingData() const
    {
        return !m_noPositions.isEmpty() || !m_noNormals.isEmpty() || !m_noUvs.isEmpty();
    }
    const QStringList& lackingPositions() const { return m_noPositions; }
    const QStringList& lackingNormals() const { return m_noNormals; }
    const QStringList& lackingUvs() const { return m_noUvs; }
    // One warning per missing attribute; `meshLabel` is "low poly " or "cage ".
    void reportMissing(const QString& meshLabel) const;

    const std::vector<Record>& records() const { return m_records; }
    // Sets `model`, `meshIdColor` and, unless `positionOnly`, `normalMatrix`
    // for each part and draws its triangles. The program must be bound.
    void draw(GLProgram& program, bool positionOnly) const;

    // The four bytes of a mesh id as an 8-bit colour, least significant in
    // red, so that the read-back bytes are the id again.
    static Eigen::Vector4f idColor(uint32_t id);

private:
    std::vector<Record> m_records;
    QStringList m_noPositions;
    QStringList m_noNormals;
    QStringList m_noUvs;
    Key m_key;
    bool m_built = false;
};

} // namespace Ond::Baking
