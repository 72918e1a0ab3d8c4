#include "baking/detail/CurvatureMesh.h"

#include "baking/lowpoly/CurvatureComputation.h"
#include "baking/lowpoly/WeldedMesh.h"

#include <new>

namespace Ond::Baking {

std::shared_ptr<GrabbedMesh> weldGrabbedMesh(const GrabbedMesh& mesh)
{
    try {
        const WeldedMesh welded = WeldedMesh::weld(mesh.positions.data(), mesh.normals.data(), mesh.vertexCount,
                                                   mesh.indices.data(), mesh.triangleCount);
        auto out = std::make_shared<GrabbedMesh>();
        out->vertexCount = unsigned(welded.positions.size());
        out->triangleCount = mesh.triangleCount;
        out->indices.allocate(size_t(mesh.triangleCount) * 3);
        out->positions.allocate(size_t(out->vertexCount) * 4);
        out->normals.allocate(size_t(out->vertexCount) * 3);
        out->ids.allocate(mesh.triangleCount);
        out->culling.allocate(mesh.triangleCount);
        std::copy(welded.indices.begin(), welded.indices.begin() + std::min(welded.indices.size(), out->indices.size()),
                  out->indices.data());
        for (size_t i = 0; i < out->vertexCount; ++i) {
            for (int c = 0; c < 3; ++c) {
                out->positions[i * 4 + c] = welded.positions[i][c];
                out->normals[i * 3 + c] = welded.normals[i][c];
            }
            out->positions[i * 4 + 3] = 1.0f;
        }
        std::copy_n(mesh.ids.data(), mesh.triangleCount, out->ids.data());
        std::copy_n(mesh.culling.data(), mesh.triangleCount, out->culling.data());
        return out;
    } catch (const std::bad_alloc&) {
        throw ErrorCode::OutOfMemory;
    }
}

std::vector<float> vertexCurvatureOf(const GrabbedMesh& mesh)
{
    if (mesh.vertexCount == 0 || mesh.triangleCount == 0)
        return std::vector<float>(mesh.vertexCount, 0.0f);
    try {
        const WeldedMesh welded = WeldedMesh::weld(mesh.positions.data(), mesh.normals.data(), mesh.vertexCount,
                                                   mesh.indices.data(), mesh.triangleCount);
        const std::vector<float> values = CurvatureComputation::ofWeldedMesh(
            welded, CurvatureComputation::normalizingScale(welded.positions), CurvatureComputation::ChunkSize);
        std::vector<float> out(mesh.vertexCount, 0.0f);
        for (size_t i = 0; i < out.size() && i < welded.weldedVertex.size(); ++i) {
            const uint32_t w = welded.weldedVertex[i];
            if (w < values.size())
                out[i] = values[w];
        }
        return out;
    } catch (const std::bad_alloc&) {
        throw ErrorCode::OutOfMemory;
    }
}

} // namespace Ond::Baking
