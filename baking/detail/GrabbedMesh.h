#pragma once
// The high scene flattened into world space for the ray tracers: one index
// list over all parts, per-triangle mesh ids and culling marks, and the
// vertex attributes the job asks for. Every array is 16-byte aligned and
// owned by the mesh.

#include "baking/detail/DetailBakeJob.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace Ond::Baking {

// A 16-byte aligned array; allocation failure throws ErrorCode::OutOfMemory.
template <typename T>
class AlignedArray
{
public:
    AlignedArray() = default;
    explicit AlignedArray(size_t count) { allocate(count); }

    void allocate(size_t count)
    {
        m_data.reset();
        m_count = 0;
        if (count == 0)
            return;
        // Rounded up so that a 16-byte load at the last element stays inside.
        const size_t bytes = ((count * sizeof(T) + 15) / 16 + 1) * 16;
        void* p = std::aligned_alloc(16, bytes);
        if (!p)
            throw ErrorCode::OutOfMemory;
        m_data.reset(static_cast<T*>(p));
        m_count = count;
    }

    T* data() { return m_data.get(); }
    const T* data() const { return m_data.get(); }
    T& operator[](size_t i) { return m_data.get()[i]; }
    const T& operator[](size_t i) const { return m_data.get()[i]; }
    size_t size() const { return m_count; }
    bool empty() const { return m_count == 0; }

private:
    struct Free
    {
        void operator()(T* p) const { std::free(p); }
    };
    std::unique_ptr<T, Free> m_data;
    size_t m_count = 0;
};

struct GrabbedMesh
{
    unsigned vertexCount = 0;
    unsigned triangleCount = 0;
    AlignedArray<uint32_t> indices;    // 3 per triangle
    AlignedArray<float> positions;     // 4 per vertex, w = 1
    AlignedArray<uint32_t> ids;        // per triangle
    AlignedArray<uint32_t> culling;    // per triangle, 1 = cull back faces
    AlignedArray<float> normals;       // 3 per vertex
    AlignedArray<float> colors;        // 3 per vertex (colour source 0) or per triangle
    AlignedArray<float> tangents;      // 4 per vertex
    AlignedArray<float> binormals;     // 4 per vertex
    AlignedArray<float> uvs;           // 2 per vertex
};

// Walks the scene twice, counting then writing, and applies the winding
// fix. Throws ErrorCode 1 when out of memory and 3 when a part lacks an
// attribute the flags ask for (after one log line per attribute).
std::unique_ptr<GrabbedMesh> grabMesh(SceneGraph::Scene& scene, uint32_t flags, BakeJobKind kind,
                                      int32_t colorSource, int32_t highUvSet);

// Puts every triangle in the order of its vertex normals, so that a back
// face is one seen against them whatever the file's winding.
void fixWinding(GrabbedMesh& mesh);

} // namespace Ond::Baking
