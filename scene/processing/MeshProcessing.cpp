#include "scene/processing/MeshProcessing.h"

#include "scene/processing/TangentSpaceGenerator.h"

#include <Eigen/Geometry>

#include <vector>

namespace Ond::SceneGraph::MeshProcessing {

namespace {

bool isTriangleList(const SubMesh& subMesh)
{
    return subMesh.primitiveType == PrimitiveType::Triangles && subMesh.indices;
}

// What the plugin's callbacks read and write for one SubMesh.
struct TangentSubMesh
{
    const Eigen::Vector3f* positions = nullptr;
    const Eigen::Vector3f* normals = nullptr; // null: face normals stand in
    const Eigen::Vector2f* uvs = nullptr;
    const uint32_t* indices = nullptr;
    size_t vertexCount = 0;
    int faceCount = 0;
    Eigen::Vector3f* tangents = nullptr;
    Eigen::Vector3f* binormals = nullptr;

    // Indices beyond the buffers read vertex 0 rather than stray memory.
    uint32_t vertex(int face, int corner) const
    {
        const uint32_t v = indices[size_t(face) * 3 + size_t(corner)];
        return v < vertexCount ? v : 0;
    }
    Eigen::Vector3f normal(int face, int corner) const
    {
        if (normals)
            return normals[vertex(face, corner)];
        const Eigen::Vector3f& a = positions[vertex(face, 0)];
        return (positions[vertex(face, 1)] - a).cross(positions[vertex(face, 2)] - a).normalized();
    }
};

const TangentSubMesh& subMeshOf(const TangentSpaceContext* context)
{
    return *static_cast<const TangentSubMesh*>(context->subMesh);
}

int getFaceCount(const TangentSpaceContext* context)
{
    return subMeshOf(context).faceCount;
}

void getPosition(const TangentSpaceContext* context, float out[3], int face, int corner)
{
    const Eigen::Vector3f& p = subMeshOf(context).positions[subMeshOf(context).vertex(face, corner)];
    out[0] = p.x();
    out[1] = p.y();
    out[2] = p.z();
}

void getNormal(const TangentSpaceContext* context, float out[3], int face, int corner)
{
    const Eigen::Vector3f n = subMeshOf(context).normal(face, corner);
    out[0] = n.x();
    out[1] = n.y();
    out[2] = n.z();
}

void getTexCoord(const TangentSpaceContext* context, float out[2], int face, int corner)
{
    const Eigen::Vector2f& uv = subMeshOf(context).uvs[subMeshOf(context).vertex(face, corner)];
    out[0] = uv.x();
    out[1] = uv.y();
}

void setTangent(const TangentSpaceContext* context, const float tangent[3], float sign, int face, int corner)
{
    const TangentSubMesh& s = subMeshOf(context);
    const uint32_t v = s.vertex(face, corner);
    const Eigen::Vector3f t(tangent[0], tangent[1], tangent[2]);
    s.tangents[v] = t;
    s.binormals[v] = sign * s.normal(face, corner).cross(t);
}

const TangentSpaceCallbacks callbacks = {getFaceCount, getPosition, getNormal, getTexCoord, setTangent, nullptr};

} // namespace

bool hasTriangles(const Mesh::Data& data)
{
    for (const SubMesh& s : data.getSubMeshes())
        if (isTriangleList(s))
            return true;
    return false;
}

bool canComputeTangentSpace(const Mesh::Data& data)
{
    return data.getVertexCount() > 0 && data.getUvSetCount() > 0 && data.getUvSet(0)
           && data.getUvSet(0)->size() == data.getVertexCount() && hasTriangles(data);
}

void computeVertexNormalBuffer(Mesh::Data& data)
{
    if (!hasTriangles(data) || !data.getPositions())
        return;
    const Vec3Buffer& positions = *data.getPositions();
    const size_t vertexCount = positions.size();
    std::vector<Eigen::Vector3f> normals(vertexCount, Eigen::Vector3f::Zero());
    for (const SubMesh& s : data.getSubMeshes()) {
        if (!isTriangleList(s))
            continue;
        const uint32_t* idx = s.indices->data();
        const size_t count = s.indices->size() / 3 * 3;
        for (size_t k = 0; k < count; k += 3) {
            const uint32_t a = idx[k], b = idx[k + 1], c = idx[k + 2];
            if (a >= vertexCount || b >= vertexCount || c >= vertexCount)
                continue;
            const Eigen::Vector3f n = (positions[b] - positions[a]).cross(positions[c] - positions[a]);
            normals[a] += n;
            normals[b] += n;
            normals[c] += n;
        }
    }
    for (Eigen::Vector3f& n : normals) {
        const float len = n.norm();
        if (len > 1e-7f)
            n /= len;
    }
    data.setNormals(makeBuffer(std::move(normals)));
}

bool computeTangentSpace(Mesh::Data& data, const TangentSpaceGenerator* generator)
{
    if (!generator || !generator->isValid() || !canComputeTangentSpace(data))
        return false;
    const size_t vertexCount = data.getVertexCount();
    std::vector<Eigen::Vector3f> tangents(vertexCount, Eigen::Vector3f::Zero());
    std::vector<Eigen::Vector3f> binormals(vertexCount, Eigen::Vector3f::Zero());
    const Vec3Buffer* normals = data.getNormals();

    TangentSubMesh subMesh;
    subMesh.positions = data.getPositions()->data();
    subMesh.normals = normals && normals->size() == vertexCount ? normals->data() : nullptr;
    subMesh.uvs = data.getUvSet(0)->data();
    subMesh.vertexCount = vertexCount;
    subMesh.tangents = tangents.data();
    subMesh.binormals = binormals.data();
    const TangentSpaceContext context{&callbacks, &subMesh};

    for (const SubMesh& s : data.getSubMeshes()) {
        if (!isTriangleList(s) || s.indices->size() < 3)
            continue;
        subMesh.indices = s.indices->data();
        subMesh.faceCount = int(s.indices->size() / 3);
        generator->generate(&context);
    }
    data.setTangents(makeBuffer(std::move(tangents)), makeBuffer(std::move(binormals)));
    return true;
}

void computeBoundingBox(Mesh::Data& data, bool force)
{
    if (force)
        data.resetBoundingBox();
    data.getBoundingBox();
}

} // namespace Ond::SceneGraph::MeshProcessing
