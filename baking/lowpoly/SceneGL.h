#pragma once
// The GPU image of one scene for one UV set: per mesh a vertex array over
// one planar vertex buffer and one index buffer, with the mesh's transform
// and selection bits. Two of them are cached between bakes, so that the
// tiles of a map and successive bakers of a run upload the scene once.
// Everything here belongs to the current GL context.

#include "baking/lowpoly/GLBakeParameters.h"
#include "scene/graph/Scene.h"

#include <Eigen/Core>

#include <cstdint>
#include <vector>

namespace Ond::Baking {

class GLProgram;
class GLTileTarget;

// Semantic ids of the mesh attributes, which are also their locations.
enum MeshSemantic : uint32_t {
    SemanticPosition = 1,
    SemanticNormal = 2,
    SemanticTangent = 3,
    SemanticBitangent = 4,
    SemanticUv0 = 6,
    SemanticNone = 14,
};

struct MeshGLAttribute
{
    uint32_t semantic = SemanticNone;
    uint32_t components = 0;
    uint64_t offset = 0; // bytes into the vertex buffer
    uint32_t stride = 0;
};

// Indices of one part, drawn only if its selection bits pass the filter.
struct MeshGLRange
{
    uint32_t firstIndex = 0;
    uint32_t count = 0;
    uint32_t selectionMask = 0;
};

struct MeshGL
{
    uint32_t selectionMask = 0;
    uint32_t vertexCount = 0;
    uint32_t indexCount = 0;
    uint32_t vertexOffset = 0;
    uint32_t indexOffset = 0;
    Eigen::Matrix4f transform = Eigen::Matrix4f::Identity();
    Eigen::Matrix3f normalMatrix = Eigen::Matrix3f::Identity();
    unsigned vertexArray = 0;
    unsigned vertexBuffer = 0;
    unsigned indexBuffer = 0;
    std::vector<MeshGLAttribute> attributes;
    std::vector<MeshGLRange> ranges;
};

class SceneGL
{
public:
    // Uploads the scene's meshes; on a GL failure no mesh is kept.
    SceneGL(const SceneGraph::Scene& scene, uint32_t uvSet);
    ~SceneGL();
    SceneGL(const SceneGL&) = delete;
    SceneGL& operator=(const SceneGL&) = delete;

    uint32_t uvSet() const { return m_uvSet; }
    uint64_t sceneStamp() const { return m_sceneStamp; }
    uint64_t vertexTotal() const { return m_vertexTotal; }
    uint64_t indexTotal() const { return m_indexTotal; }
    const std::vector<MeshGL>& meshes() const { return m_meshes; }

    // Draws the parts that pass `mask`, setting `normalMatrix` and `model`
    // for each mesh.
    void draw(GLProgram& program, uint32_t mask) const;

    // The attributes uploaded for every mesh, in buffer order.
    static const std::vector<uint32_t>& uploadedSemantics();
    // Changes whenever the scene's entities or any mesh's data change.
    static uint64_t stampOf(const SceneGraph::Scene& scene);

    // Drops the GL names without deleting them, for objects of a context
    // that is not current.
    void forget();

private:
    void releaseAll();

    uint32_t m_uvSet = 0;
    uint64_t m_sceneStamp = 0;
    uint64_t m_vertexTotal = 0;
    uint64_t m_indexTotal = 0;
    std::vector<MeshGL> m_meshes;
};

// The two cache slots. A slot is rebuilt when its scene or UV set differ
// from the request, or when it was filled in another context.
namespace SceneGLCache {
const SceneGL& acquire(const SceneGraph::Scene& scene, uint32_t uvSet, int slot);
// Releases both slots; the context must be current.
void clear();
} // namespace SceneGLCache

// How the vertex text maps UV to clip space: (uv - xy) * zw, or uv * zw - xy.
enum class UvWindowForm { Difference, Product };

// One tile: binds the target, clears it, sets `uvWindow` and the source
// window uniform (if named), binds `sourceTexture` on unit 0 to
// `samplerName` (if not 0), draws the scene with depth test, culling and
// blending off, releases the target. The program must be bound. The scene
// comes from the cache, or with `cached` false through GLFilteredDrawVisitor.
void drawSceneTile(const GLBakeParameters& parameters, const SceneGraph::Scene& scene, GLProgram& program,
                   GLTileTarget& target, UvWindowForm form = UvWindowForm::Difference,
                   const char* sourceWindowName = nullptr, unsigned sourceTexture = 0,
                   const char* samplerName = nullptr, bool cached = true);

} // namespace Ond::Baking
