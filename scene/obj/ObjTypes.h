#pragma once
// Plain records shared by the OBJ reader's stages: the block scan, the
// parallel statement parser, the in-order merge and the re-indexing.

#include <QString>
#include <QStringList>

#include <Eigen/Core>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Ond::SceneLoad {

// C++17 allocation honours Eigen's alignment, so plain vectors can be moved
// straight into the mesh buffers.
using ObjVector2List = std::vector<Eigen::Vector2f>;
using ObjVector3List = std::vector<Eigen::Vector3f>;
using ObjVector4List = std::vector<Eigen::Vector4f>;

// One face corner. Indices are 1-based; 0 means absent and points at the
// zero-filled slot 0 of each attribute array.
struct ObjFaceVertex
{
    int32_t position = 0;
    int32_t texcoord = 0;
    int32_t normal = 0;
};

struct ObjTriangle
{
    ObjFaceVertex corners[3];
};

// One block of the file as found by the scan.
struct ObjChunk
{
    uint64_t offset = 0;
    uint64_t firstLine = 0;
    uint64_t size = 0;
    uint64_t vertexBase = 0;   // "v" lines before this block
    uint64_t normalBase = 0;   // "vn" lines before this block
    uint64_t texcoordBase = 0; // "vt" lines before this block
    uint64_t faceLines = 0;    // "f" lines inside this block, to size the face list once
};

// Names in force from `firstFace` (a triangle index within its block) on.
struct ObjGroupRecord
{
    static constexpr uint16_t NoId16 = 0xFFFF;
    static constexpr uint32_t NoId32 = 0xFFFFFFFF;

    uint64_t firstFace = 0;
    std::string material;
    std::string group;
    std::string object;
    uint16_t materialId = NoId16;
    uint16_t groupId = NoId16;
    uint32_t objectId = NoId32;
};

// (first triangle index within the block, smoothing group)
using ObjSmoothingRun = std::pair<uint64_t, int32_t>;

struct ObjParseResult
{
    ObjVector3List positions;
    ObjVector2List texcoords;
    ObjVector3List normals;
    ObjVector4List colors;
    QStringList materials;
    QStringList groups;
    QStringList objects;
    bool hasNormals = false;
    bool hasTexcoords = false;
};

struct ObjSubMesh
{
    QString group;
    QString material;
    std::vector<uint32_t> indices;
};

struct ObjMesh
{
    QString name;
    ObjVector3List positions;
    ObjVector2List texcoords;
    ObjVector3List normals;
    ObjVector4List colors;
    std::vector<ObjSubMesh> subMeshes;
};

struct ObjError
{
    enum Kind : int { Open = 0, Parsing = 1, InvalidData = 2 };

    int kind = Parsing;
    QString text;
};

} // namespace Ond::SceneLoad
