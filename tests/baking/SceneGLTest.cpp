// The GL image of a scene: planar vertex layout, the two cache slots and
// when they are rebuilt; read-back by pixel format; the GLSL texts with the
// interpolateTangent splice.

#include "LowPolyBakeTestUtil.h"

#include "baking/lowpoly/GLProgram.h"
#include "baking/lowpoly/GLSLSource.h"
#include "baking/lowpoly/GLTileTarget.h"
#include "baking/lowpoly/SceneGL.h"

#include <GL/glew.h>

using namespace LowPolyTest;
using namespace Ond::Baking;
using Ond::Surfaces::PixelFormat;
using Ond::Surfaces::Surface;
using Ond::Surfaces::SurfaceDesc;

namespace {

SceneSPtr quadScene()
{
    return makeQuad(Eigen::Vector3f(0, 0, 1), Eigen::Vector3f(1, 0, 0), Eigen::Vector3f(0, 1, 0));
}

} // namespace

TEST(SceneGL, UploadsFivePlanarAttributesPerMesh)
{
    const SceneSPtr scene = quadScene();
    inGL([&] {
        const SceneGL gl(*scene, 0);
        ASSERT_EQ(gl.meshes().size(), 1u);
        const MeshGL& mesh = gl.meshes()[0];
        EXPECT_EQ(mesh.vertexCount, 4u);
        EXPECT_EQ(mesh.indexCount, 6u);
        EXPECT_EQ(mesh.selectionMask, 3u);
        ASSERT_EQ(mesh.attributes.size(), 5u);
        const uint32_t order[5] = {6, 1, 2, 3, 4};
        const uint64_t offsets[5] = {0, 4 * 2 * 4, 4 * 5 * 4, 4 * 8 * 4, 4 * 11 * 4};
        for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(mesh.attributes[size_t(i)].semantic, order[i]);
            EXPECT_EQ(mesh.attributes[size_t(i)].offset, offsets[i]);
            EXPECT_EQ(mesh.attributes[size_t(i)].stride, mesh.attributes[size_t(i)].components * 4);
        }
        std::vector<float> buffer(4 * 14);
        glBindBuffer(GL_ARRAY_BUFFER, mesh.vertexBuffer);
        glGetBufferSubData(GL_ARRAY_BUFFER, 0, GLsizeiptr(buffer.size() * sizeof(float)), buffer.data());
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        // UVs of the four corners, then their positions.
        EXPECT_EQ(std::vector<float>(buffer.begin(), buffer.begin() + 8),
                  (std::vector<float>{0, 0, 1, 0, 0, 1, 1, 1}));
        EXPECT_EQ(std::vector<float>(buffer.begin() + 8, buffer.begin() + 20),
                  (std::vector<float>{0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0}));
    });
}

TEST(SceneGLCache, KeepsASlotUntilItsSceneOrUvSetChanges)
{
    const SceneSPtr scene = quadScene();
    inGL([&] {
        SceneGLCache::clear();
        const SceneGL* first = &SceneGLCache::acquire(*scene, 0, 0);
        EXPECT_EQ(&SceneGLCache::acquire(*scene, 0, 0), first);
        // The other slot is independent.
        const SceneGL* other = &SceneGLCache::acquire(*scene, 0, 1);
        EXPECT_NE(other, first);
        EXPECT_EQ(&SceneGLCache::acquire(*scene, 0, 0), first);

        const uint64_t stamp = first->sceneStamp();
        EXPECT_EQ(SceneGLCache::acquire(*scene, 1, 0).uvSet(), 1u);
        EXPECT_EQ(SceneGLCache::acquire(*scene, 0, 0).sceneStamp(), stamp);

        // New mesh data (tangents recomputed, say) makes the slot stale.
        const Mesh::SPtr mesh = scene->getMeshes().front();
        mesh->setData(mesh->getData()->clone());
        EXPECT_NE(SceneGLCache::acquire(*scene, 0, 0).sceneStamp(), stamp);
        SceneGLCache::clear();
    });
}

TEST(GLTileTarget, ReadsBackByPixelFormatAndRefusesOthers)
{
    inGL([&] {
        GLTileTarget target(4, 2);
        ASSERT_TRUE(target.isValid());
        target.bind();
        glClearColor(0.25f, 0.5f, 0.75f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        GLTileTarget::release();

        Surface rgba(SurfaceDesc(4, 2, PixelFormat::RGBA32F));
        ASSERT_TRUE(readBack(target.framebuffer(), rgba));
        EXPECT_EQ(rgba.readPixel(3, 1), Eigen::Vector4f(0.25f, 0.5f, 0.75f, 1.0f));

        Surface grey(SurfaceDesc(4, 2, PixelFormat::L32F));
        ASSERT_TRUE(readBack(target.framebuffer(), grey));
        EXPECT_FLOAT_EQ(*grey.pixel<float>(2, 0), 0.25f);

        Surface bytes(SurfaceDesc(4, 2, PixelFormat::BGRA8));
        ASSERT_TRUE(readBack(target.framebuffer(), bytes));
        EXPECT_EQ(bytes.pixel<uint8_t>(0, 0)[0], 191); // blue first

        Surface rgb(SurfaceDesc(4, 2, PixelFormat::RGB8));
        std::fill(rgb.data(), rgb.data() + 24, uint8_t(7));
        EXPECT_FALSE(readBack(target.framebuffer(), rgb));
        EXPECT_EQ(rgb.data()[5], 7);
    });
}

TEST(GLSLSource, TangentCodeIsSplicedBetweenPreambleAndBody)
{
    const std::string code = "    bitangent = cross(normal, tangent);\n";
    const std::string text = GLSLSource::fragmentTextWithTangent("normalws.frag.glsl", code);
    const size_t version = text.find("#version 330\n");
    const size_t define = text.find("#define PER_FRAG_BINORMAL 1\n");
    const size_t function =
        text.find("void interpolateTangent(inout vec3 normal, inout vec3 tangent, inout vec3 bitangent)\n{\n" + code + "}\n");
    const size_t body = text.find("uniform int per_frag_binormal;");
    EXPECT_EQ(version, 0u);
    ASSERT_NE(define, std::string::npos);
    ASSERT_NE(function, std::string::npos);
    ASSERT_NE(body, std::string::npos);
    EXPECT_LT(define, function);
    EXPECT_LT(function, body);
    EXPECT_EQ(GLSLSource::fragmentTextWithTangent("normalws.frag.glsl", "").find("PER_FRAG_BINORMAL 1"),
              std::string::npos);

    // Both forms build, and the program cache hands out one program per text.
    inGL([&] {
        const std::string vertex = GLSLSource::vertexText("normalws.vert.glsl");
        const GLProgramSPtr spliced = GLProgramCache::instance().program(vertex, text);
        ASSERT_TRUE(spliced);
        EXPECT_TRUE(spliced->hasUniform("per_frag_binormal"));
        EXPECT_EQ(GLProgramCache::instance().program(vertex, text), spliced);
        const GLProgramSPtr plain = GLProgramCache::instance().program(
            vertex, GLSLSource::fragmentTextWithTangent("normalws.frag.glsl", ""));
        ASSERT_TRUE(plain);
        EXPECT_FALSE(plain->hasUniform("per_frag_binormal"));
    });
}
