// What the Assimp importer builds: a small scene with a node tree, two
// materials, a quad, two UV sets, colours and tangents, written by Assimp's
// own exporters and read back; the load flags; FBX units and axes.

#include "common/TestPaths.h"
#include "scene/fbx/AssimpSceneConverter.h"
#include "scene/fbx/FBXSceneImporter.h"
#include "scene/graph/MaterialDefinition.h"
#include "scene/graph/MeshDisplayComponent.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include <Eigen/Geometry>

#include <assimp/Exporter.hpp>
#include <assimp/scene.h>

#include <memory>

using namespace Ond::SceneGraph;
using namespace Ond::SceneLoad;

namespace {

aiMatrix4x4 translationOf(float x, float y, float z)
{
    aiMatrix4x4 m;
    return aiMatrix4x4::Translation(aiVector3D(x, y, z), m);
}

aiMaterial* material(const char* name)
{
    auto* m = new aiMaterial;
    const aiString text(name);
    m->AddProperty(&text, AI_MATKEY_NAME);
    return m;
}

// A square in z = 0 (one quad, or two triangles) or one triangle, with
// normals +z, two UV sets (the second one shifted by 1 in u), colours and
// tangents +x / bitangents +y.
aiMesh* mesh(bool square, unsigned materialIndex, float z)
{
    auto* m = new aiMesh;
    m->mName = aiString(square ? "square" : "triangle");
    m->mMaterialIndex = materialIndex;
    const aiVector3D corners[4] = {{0, 0, z}, {1, 0, z}, {1, 1, z}, {0, 1, z}};
    const unsigned n = square ? 4 : 3;
    m->mNumVertices = n;
    m->mVertices = new aiVector3D[n];
    m->mNormals = new aiVector3D[n];
    m->mTangents = new aiVector3D[n];
    m->mBitangents = new aiVector3D[n];
    m->mColors[0] = new aiColor4D[n];
    for (unsigned uvSet = 0; uvSet < 2; ++uvSet) {
        m->mTextureCoords[uvSet] = new aiVector3D[n];
        m->mNumUVComponents[uvSet] = 2;
    }
    for (unsigned i = 0; i < n; ++i) {
        m->mVertices[i] = corners[i];
        m->mNormals[i] = aiVector3D(0, 0, 1);
        m->mTangents[i] = aiVector3D(1, 0, 0);
        m->mBitangents[i] = aiVector3D(0, 1, 0);
        m->mColors[0][i] = aiColor4D(0.25f * float(i), 0.5f, 1.0f, 1.0f);
        m->mTextureCoords[0][i] = aiVector3D(corners[i].x * 0.5f, corners[i].y * 0.5f, 0);
        m->mTextureCoords[1][i] = aiVector3D(corners[i].x * 0.5f + 1.0f, corners[i].y * 0.5f, 0);
    }
    m->mNumFaces = 1;
    m->mFaces = new aiFace[1];
    m->mFaces[0].mNumIndices = n;
    m->mFaces[0].mIndices = new unsigned[n];
    for (unsigned i = 0; i < n; ++i)
        m->mFaces[0].mIndices[i] = i;
    m->mPrimitiveTypes = square ? aiPrimitiveType_POLYGON : aiPrimitiveType_TRIANGLE;
    return m;
}

aiNode* node(const char* name, const aiMatrix4x4& transform, std::vector<unsigned> meshes = {})
{
    auto* n = new aiNode(name);
    n->mTransformation = transform;
    if (!meshes.empty()) {
        n->mNumMeshes = unsigned(meshes.size());
        n->mMeshes = new unsigned[meshes.size()];
        std::copy(meshes.begin(), meshes.end(), n->mMeshes);
    }
    return n;
}

// top (bare) -> group (scale 2) -> part (meshes 0, 1; x + 1)
//            -> copy (meshes 0, 1; z + 5)
std::unique_ptr<aiScene> sampleScene()
{
    auto scene = std::make_unique<aiScene>();
    scene->mNumMaterials = 2;
    scene->mMaterials = new aiMaterial*[2]{material("red"), material("blue")};
    scene->mNumMeshes = 2;
    scene->mMeshes = new aiMesh*[2]{mesh(true, 0, 0.0f), mesh(false, 1, 0.5f)};
    aiMatrix4x4 scale;
    aiMatrix4x4::Scaling(aiVector3D(2, 2, 2), scale);
    scene->mRootNode = node("top", aiMatrix4x4());
    aiNode* group = node("group", scale);
    aiNode* part = node("part", translationOf(1, 0, 0), {0, 1});
    aiNode* copy = node("copy", translationOf(0, 0, 5), {0, 1});
    group->addChildren(1, &part);
    aiNode* children[2] = {group, copy};
    scene->mRootNode->addChildren(2, children);
    return scene;
}

QString exportSample(const char* formatId, const QString& fileName)
{
    const QString path = QDir(ZmfTest::makeTempDir()).filePath(fileName);
    const std::unique_ptr<aiScene> scene = sampleScene();
    Assimp::Exporter exporter;
    EXPECT_EQ(exporter.Export(scene.get(), formatId, QFile::encodeName(path).constData()), AI_SUCCESS)
        << exporter.GetErrorString();
    return path;
}

std::unique_ptr<Scene> importFile(const QString& path, uint32_t flags)
{
    FBXSceneImporter importer(path, QFileInfo(path).suffix().toLatin1());
    return std::unique_ptr<Scene>(importer.import(SceneLoadOptions(flags), nullptr));
}

Eigen::Vector3f globalPoint(const Entity& entity, const Eigen::Vector3f& local)
{
    return (entity.getLocation()->getGlobalTransform() * local.homogeneous()).head<3>();
}

} // namespace

// The formats that keep a node tree, materials and several UV sets.
class FBXSceneImporterRoundTrip : public ::testing::TestWithParam<const char*>
{
};

TEST_P(FBXSceneImporterRoundTrip, NodesMaterialsAndUvSetsComeBack)
{
    const QString suffix = QString::fromLatin1(GetParam()).section(':', 1, 1);
    const QString path = exportSample(QString::fromLatin1(GetParam()).section(':', 0, 0).toLatin1().constData(),
                                      "sample." + suffix);
    const std::unique_ptr<Scene> scene = importFile(path, 255);
    ASSERT_TRUE(scene) << path.toStdString();

    const Entity::SPtr root = scene->getEntities().front();
    EXPECT_EQ(root->getName(), "root");
    const Entity::SPtr group = scene->findEntityByName("group");
    const Entity::SPtr part = scene->findEntityByName("part");
    const Entity::SPtr copy = scene->findEntityByName("copy");
    ASSERT_TRUE(group && part && copy);
    EXPECT_EQ(part->getLocation()->getParent(), group->getLocation());
    EXPECT_EQ(group->getLocation()->getParent()->getEntity()->getName(), "root");

    // Local and global transforms: the group's scale reaches its child.
    EXPECT_TRUE(globalPoint(*part, {0, 0, 0}).isApprox(Eigen::Vector3f(2, 0, 0), 1e-5f))
        << globalPoint(*part, {0, 0, 0}).transpose();
    EXPECT_TRUE(globalPoint(*copy, {1, 1, 0}).isApprox(Eigen::Vector3f(1, 1, 5), 1e-5f));

    const MeshDisplayComponent* display = part->getMeshDisplay();
    ASSERT_TRUE(display && display->getMesh());
    // Two nodes that use the same meshes share one Mesh.
    EXPECT_EQ(display->getMesh(), copy->getMeshDisplay()->getMesh());
    const auto data = display->getMesh()->getData();
    ASSERT_EQ(data->getSubMeshCount(), 2u);
    const SubMesh* square = data->getSubMesh(0);
    const SubMesh* triangle = data->getSubMesh(1);
    EXPECT_EQ(square->primitiveType, PrimitiveType::Triangles);
    EXPECT_EQ(square->primitiveCount, 2u); // the quad, triangulated
    EXPECT_EQ(triangle->primitiveCount, 1u);
    EXPECT_EQ(std::dynamic_pointer_cast<UserMaterialDefinition>(square->material)->name, "red");
    EXPECT_EQ(std::dynamic_pointer_cast<UserMaterialDefinition>(triangle->material)->name, "blue");
    EXPECT_EQ(data->findSubMeshByMaterialName("blue"), 1);
    EXPECT_EQ(data->getVertexCount(), 7u);

    ASSERT_EQ(data->getUvSetCount(), 2u);
    ASSERT_TRUE(data->getNormals());
    for (size_t i = 0; i < data->getVertexCount(); ++i) {
        const Eigen::Vector3f p = (*data->getPositions())[i];
        const Eigen::Vector2f uv0 = (*data->getUvSet(0))[i];
        const Eigen::Vector2f uv1 = (*data->getUvSet(1))[i];
        EXPECT_NEAR(uv0.x(), p.x() * 0.5f, 1e-6f);
        EXPECT_NEAR(uv0.y(), p.y() * 0.5f, 1e-6f);
        EXPECT_NEAR(uv1.x(), p.x() * 0.5f + 1.0f, 1e-6f);
        EXPECT_TRUE((*data->getNormals())[i].isApprox(Eigen::Vector3f(0, 0, 1), 1e-5f));
    }
}

INSTANTIATE_TEST_SUITE_P(Exporters, FBXSceneImporterRoundTrip,
                         ::testing::Values("glb2:glb", "gltf2:gltf", "collada:dae"));

// Assimp's FBX writer (ASCII: its binary writer makes files its own reader
// refuses) declares centimetres and gives each mesh of a node a child node.
TEST(FBXSceneImporter, FbxFromAssimpComesBackInMetres)
{
    const std::unique_ptr<Scene> scene = importFile(exportSample("fbxa", "sample.fbx"), 255);
    ASSERT_TRUE(scene);
    const Entity::SPtr part = scene->findEntityByName("part");
    const Entity::SPtr square = scene->findEntityByName("square");
    const Entity::SPtr triangle = scene->findEntityByName("triangle");
    ASSERT_TRUE(part && square && triangle);
    EXPECT_EQ(square->getLocation()->getParent(), part->getLocation());
    EXPECT_TRUE(globalPoint(*square, {1, 1, 0}).isApprox(Eigen::Vector3f(0.04f, 0.02f, 0), 1e-5f))
        << globalPoint(*square, {1, 1, 0}).transpose();
    const auto data = square->getMeshDisplay()->getMesh()->getData();
    ASSERT_EQ(data->getSubMeshCount(), 1u);
    EXPECT_EQ(data->getSubMesh(0)->primitiveCount, 2u);
    EXPECT_EQ(data->findSubMeshByMaterialName("red"), 0);
    EXPECT_EQ(data->getUvSetCount(), 2u);
    EXPECT_EQ(triangle->getMeshDisplay()->getMesh()->getData()->findSubMeshByMaterialName("blue"), 0);
}

TEST(FBXSceneImporter, LoadFlagsChooseTheAttributes)
{
    const QString path = exportSample("glb2", "sample.glb");
    {
        const std::unique_ptr<Scene> scene = importFile(path, KeepNormals | KeepTangents | KeepUvSets | KeepColors);
        ASSERT_TRUE(scene);
        const auto data = scene->findEntityByName("part")->getMeshDisplay()->getMesh()->getData();
        ASSERT_TRUE(data->getColors());
        EXPECT_TRUE((*data->getColors())[0].isApprox(Eigen::Vector4f(0, 0.5f, 1, 1)))
            << (*data->getColors())[0].transpose();
        // Assimp's glTF writer leaves tangents out.
        EXPECT_FALSE(data->getTangents());
    }
    {
        // Nothing kept: positions and triangles alone.
        const std::unique_ptr<Scene> scene = importFile(path, 0);
        ASSERT_TRUE(scene);
        const auto data = scene->findEntityByName("part")->getMeshDisplay()->getMesh()->getData();
        EXPECT_FALSE(data->getNormals());
        EXPECT_FALSE(data->getTangents());
        EXPECT_FALSE(data->getColors());
        EXPECT_EQ(data->getUvSetCount(), 0u);
        EXPECT_EQ(data->getVertexCount(), 7u);
    }
    {
        // Normals dropped, then computed by the importer as the OBJ reader
        // does: the plane's unit normal.
        const std::unique_ptr<Scene> scene = importFile(path, ImporterComputesNormals);
        ASSERT_TRUE(scene);
        const auto data = scene->findEntityByName("part")->getMeshDisplay()->getMesh()->getData();
        ASSERT_TRUE(data->getNormals());
        for (size_t i = 0; i < data->getVertexCount(); ++i)
            EXPECT_TRUE((*data->getNormals())[i].isApprox(Eigen::Vector3f(0, 0, 1), 1e-5f));
    }
}

// OBJ's way of computing missing normals: unit face normals, the same weight
// for every face whatever its area, summed over the faces at a position,
// also across a UV seam (two vertices at one position get one normal).
TEST(FBXSceneImporter, ComputedNormalsWeighFacesAlikeAcrossSeams)
{
    const QString dir = ZmfTest::makeTempDir();
    const QString path = QDir(dir).filePath("fold.ply");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    // A large face in z = 0 and a small one in x = 0 meeting at the edge
    // x = 0; vertex 4 repeats vertex 0's position with another UV.
    file.write("ply\nformat ascii 1.0\nelement vertex 6\nproperty float x\nproperty float y\nproperty float z\n"
               "property float s\nproperty float t\nelement face 2\nproperty list uchar int vertex_indices\n"
               "end_header\n"
               "0 0 0 0 0\n0 1 0 0 1\n10 0 0 1 0\n0 0 0 0.5 0.5\n0 1 0 0.5 1\n0 0 0.1 1 1\n"
               "3 0 2 1\n3 3 4 5\n");
    file.close();
    const std::unique_ptr<Scene> scene = importFile(path, ImporterComputesNormals | KeepUvSets);
    ASSERT_TRUE(scene);
    const auto data = scene->getMeshes().front()->getData();
    ASSERT_TRUE(data->getNormals());
    const Eigen::Vector3f shared = Eigen::Vector3f(1, 0, 1).normalized();
    int atEdge = 0;
    for (size_t i = 0; i < data->getVertexCount(); ++i) {
        const Eigen::Vector3f p = (*data->getPositions())[i];
        const Eigen::Vector3f n = (*data->getNormals())[i];
        if (p.x() == 0.0f && p.z() == 0.0f) {
            ++atEdge;
            EXPECT_TRUE(n.isApprox(shared, 1e-5f)) << n.transpose();
        }
    }
    EXPECT_EQ(atEdge, 4); // (0,0,0) and (0,1,0), each on both sides of the seam
}

// FBX states centimetres per unit and its axes; the program's space is
// metres, Y up. A Z-up file's (x, y, z) is (x, z, -y).
TEST(FBXSceneImporter, FbxUnitsAndAxesBecomeMetresAndYUp)
{
    auto transformFor = [](int up, int upSign, int front, int frontSign, int coord, int coordSign, double unit) {
        aiScene scene;
        scene.mMetaData = aiMetadata::Alloc(7);
        scene.mMetaData->Set(0, "UpAxis", int32_t(up));
        scene.mMetaData->Set(1, "UpAxisSign", int32_t(upSign));
        scene.mMetaData->Set(2, "FrontAxis", int32_t(front));
        scene.mMetaData->Set(3, "FrontAxisSign", int32_t(frontSign));
        scene.mMetaData->Set(4, "CoordAxis", int32_t(coord));
        scene.mMetaData->Set(5, "CoordAxisSign", int32_t(coordSign));
        scene.mMetaData->Set(6, "UnitScaleFactor", unit);
        return fileToSceneTransform(scene, "FBX");
    };
    const Eigen::Vector4f p(1, 2, 3, 1);
    // Y up, centimetres (the FBX defaults).
    EXPECT_TRUE((transformFor(1, 1, 2, 1, 0, 1, 1.0) * p).isApprox(Eigen::Vector4f(0.01f, 0.02f, 0.03f, 1)));
    // Z up, front -Y, metres.
    EXPECT_TRUE((transformFor(2, 1, 1, -1, 0, 1, 100.0) * p).isApprox(Eigen::Vector4f(1, 3, -2, 1)))
        << (transformFor(2, 1, 1, -1, 0, 1, 100.0) * p).transpose();
    // A left-handed system would mirror: only the unit is applied.
    EXPECT_TRUE((transformFor(1, 1, 2, -1, 0, 1, 100.0) * p).isApprox(p));
    // Nonsense settings change nothing but the unit.
    EXPECT_TRUE((transformFor(1, 1, 1, 1, 0, 1, 2.54) * p).isApprox(Eigen::Vector4f(0.0254f, 0.0508f, 0.0762f, 1)));
    // Other formats are taken as they are.
    aiScene plain;
    EXPECT_TRUE(fileToSceneTransform(plain, "glb").isIdentity());
}

// One triangle in z = 0 with normals, UVs and tangents (w = -1: the
// bitangent is -(n x t)), as a glTF file with its buffer inline.
TEST(FBXSceneImporter, TangentsOfTheFileAreKeptWhenAsked)
{
    QByteArray buffer;
    auto put = [&](std::initializer_list<float> values) {
        for (float v : values)
            buffer.append(reinterpret_cast<const char*>(&v), sizeof(float));
    };
    put({0, 0, 0, 1, 0, 0, 0, 1, 0});                 // positions, 0
    put({0, 0, 1, 0, 0, 1, 0, 0, 1});                 // normals, 36
    put({1, 0, 0, -1, 1, 0, 0, -1, 1, 0, 0, -1});     // tangents, 72
    put({0, 0, 1, 0, 0, 1});                          // UVs, 120
    const QByteArray json =
        QByteArray(R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],)"
                   R"("nodes":[{"name":"tri","mesh":0}],)"
                   R"("meshes":[{"name":"tri","primitives":[{"attributes":{"POSITION":0,"NORMAL":1,"TANGENT":2,"TEXCOORD_0":3}}]}],)"
                   R"("buffers":[{"byteLength":144,"uri":"data:application/octet-stream;base64,)")
        + buffer.toBase64()
        + R"("}],"bufferViews":[{"buffer":0,"byteOffset":0,"byteLength":36},{"buffer":0,"byteOffset":36,"byteLength":36},)"
          R"({"buffer":0,"byteOffset":72,"byteLength":48},{"buffer":0,"byteOffset":120,"byteLength":24}],)"
          R"("accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3","min":[0,0,0],"max":[1,1,0]},)"
          R"({"bufferView":1,"componentType":5126,"count":3,"type":"VEC3"},)"
          R"({"bufferView":2,"componentType":5126,"count":3,"type":"VEC4"},)"
          R"({"bufferView":3,"componentType":5126,"count":3,"type":"VEC2"}]})";
    ASSERT_EQ(buffer.size(), 144);
    const QString path = QDir(ZmfTest::makeTempDir()).filePath("tri.gltf");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(json);
    file.close();

    const std::unique_ptr<Scene> kept = importFile(path, KeepNormals | KeepTangents | KeepUvSets);
    ASSERT_TRUE(kept);
    const auto data = kept->findEntityByName("tri")->getMeshDisplay()->getMesh()->getData();
    ASSERT_TRUE(data->getTangents() && data->getBinormals());
    EXPECT_TRUE((*data->getTangents())[0].isApprox(Eigen::Vector3f(1, 0, 0), 1e-5f));
    EXPECT_TRUE((*data->getBinormals())[0].isApprox(Eigen::Vector3f(0, -1, 0), 1e-5f))
        << (*data->getBinormals())[0].transpose();

    const std::unique_ptr<Scene> dropped = importFile(path, KeepNormals | KeepUvSets);
    ASSERT_TRUE(dropped);
    EXPECT_FALSE(dropped->findEntityByName("tri")->getMeshDisplay()->getMesh()->getData()->getTangents());
}
