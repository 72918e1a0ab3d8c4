// Load of one mesh of about 1 M triangles written as OBJ, FBX and GLB, in
// one run: time and peak memory of each through the program's loaders, and
// for FBX and GLB the share of Assimp's own read in that time.
//
//   mesh_formats_load_bench [grid size n: 2 n^2 triangles, default 710] [folder to write and keep the files] [ascii]
//
// Times are the best of two loads; peak memory is the resident growth during
// the first load, after freed memory has been returned.
//
// The files come from Assimp's writers (OBJ, GLB) and, for FBX, from a small
// binary FBX 7.4 writer below: Assimp 5.2's binary FBX writer makes files its
// own reader refuses. With "ascii", Assimp's ASCII FBX is written and loaded
// as well, for comparison (slow to write, and it needs about 2 GiB to load).

#include "bench/BenchUtil.h"
#include "scene/fbx/AssimpSceneConverter.h"
#include "scene/graph/MeshDisplayComponent.h"
#include "scene/load/SceneLoaderMgr.h"

#include <assimp/Exporter.hpp>
#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

using ZmfBench::Clock;
using ZmfBench::procStatusBytes;
using ZmfBench::resetPeakRss;
using ZmfBench::seconds;

double mib(double bytes)
{
    return bytes / (1024.0 * 1024.0);
}

// A wavy height field of n x n quads as two triangles each, shared vertices
// with a normal and a UV each.
struct Grid
{
    std::vector<float> positions, normals, uvs;
    std::vector<uint32_t> indices;
};

Grid makeGrid(int n)
{
    Grid g;
    const int side = n + 1;
    for (int j = 0; j < side; ++j)
        for (int i = 0; i < side; ++i) {
            const float x = float(i) / float(n), y = float(j) / float(n);
            const float dx = 0.6f * std::cos(12.0f * x) * std::cos(9.0f * y);
            const float dy = -0.45f * std::sin(12.0f * x) * std::sin(9.0f * y);
            const float length = std::sqrt(dx * dx + 1.0f + dy * dy);
            g.positions.insert(g.positions.end(), {x, 0.05f * std::sin(12.0f * x) * std::cos(9.0f * y), y});
            g.normals.insert(g.normals.end(), {-dx / length, 1.0f / length, -dy / length});
            g.uvs.insert(g.uvs.end(), {x, y});
        }
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            const uint32_t a = uint32_t(j * side + i), b = a + 1, c = a + uint32_t(side), d = c + 1;
            g.indices.insert(g.indices.end(), {a, c, b, b, c, d});
        }
    return g;
}

std::unique_ptr<aiScene> toAiScene(const Grid& g)
{
    auto scene = std::make_unique<aiScene>();
    scene->mNumMaterials = 1;
    scene->mMaterials = new aiMaterial*[1]{new aiMaterial};
    const aiString name("grid_material");
    scene->mMaterials[0]->AddProperty(&name, AI_MATKEY_NAME);
    auto* mesh = new aiMesh;
    mesh->mName = aiString("grid");
    const unsigned count = unsigned(g.positions.size() / 3);
    mesh->mNumVertices = count;
    mesh->mVertices = new aiVector3D[count];
    mesh->mNormals = new aiVector3D[count];
    mesh->mTextureCoords[0] = new aiVector3D[count];
    mesh->mNumUVComponents[0] = 2;
    for (unsigned v = 0; v < count; ++v) {
        mesh->mVertices[v] = aiVector3D(g.positions[3 * v], g.positions[3 * v + 1], g.positions[3 * v + 2]);
        mesh->mNormals[v] = aiVector3D(g.normals[3 * v], g.normals[3 * v + 1], g.normals[3 * v + 2]);
        mesh->mTextureCoords[0][v] = aiVector3D(g.uvs[2 * v], g.uvs[2 * v + 1], 0.0f);
    }
    mesh->mNumFaces = unsigned(g.indices.size() / 3);
    mesh->mFaces = new aiFace[mesh->mNumFaces];
    for (unsigned f = 0; f < mesh->mNumFaces; ++f) {
        mesh->mFaces[f].mNumIndices = 3;
        mesh->mFaces[f].mIndices = new unsigned[3]{g.indices[3 * f], g.indices[3 * f + 1], g.indices[3 * f + 2]};
    }
    mesh->mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
    scene->mNumMeshes = 1;
    scene->mMeshes = new aiMesh*[1]{mesh};
    scene->mRootNode = new aiNode("root");
    auto* node = new aiNode("grid");
    node->mNumMeshes = 1;
    node->mMeshes = new unsigned[1]{0};
    scene->mRootNode->addChildren(1, &node);
    return scene;
}

// --- A binary FBX 7.4 writer: the node records, properties and arrays that
// a mesh with normals and UVs per polygon vertex needs, as modelling tools
// write them.
class FbxWriter
{
public:
    explicit FbxWriter(const std::string& path) : m_out(path, std::ios::binary)
    {
        static const char magic[] = "Kaydara FBX Binary  ";
        m_out.write(magic, 20);
        m_out.put('\0');
        m_out.put('\x1a');
        m_out.put('\0');
        putU32(7400);
    }

    // Begins a node: properties follow through the add functions, then
    // children, then end().
    void begin(const char* name)
    {
        if (!m_open.empty())
            m_open.back().hasChildren = true;
        Open open;
        open.start = m_out.tellp();
        putU32(0); // end offset
        putU32(0); // property count
        putU32(0); // property list length
        m_out.put(char(std::strlen(name)));
        m_out.write(name, std::streamsize(std::strlen(name)));
        open.propertiesStart = m_out.tellp();
        open.propertiesEnd = open.propertiesStart;
        m_open.push_back(open);
    }
    void addInt(int32_t v) { prop('I', &v, 4); }
    void addLong(int64_t v) { prop('L', &v, 8); }
    void addDouble(double v) { prop('D', &v, 8); }
    void addString(const std::string& s)
    {
        startProperty();
        m_out.put('S');
        putU32(uint32_t(s.size()));
        m_out.write(s.data(), std::streamsize(s.size()));
        m_open.back().propertiesEnd = m_out.tellp();
    }
    template <typename T>
    void addArray(char type, const std::vector<T>& values)
    {
        startProperty();
        m_out.put(type);
        putU32(uint32_t(values.size()));
        putU32(0); // not compressed
        putU32(uint32_t(values.size() * sizeof(T)));
        m_out.write(reinterpret_cast<const char*>(values.data()), std::streamsize(values.size() * sizeof(T)));
        m_open.back().propertiesEnd = m_out.tellp();
    }
    void end()
    {
        Open open = m_open.back();
        m_open.pop_back();
        if (open.hasChildren)
            m_out.write(std::string(13, '\0').data(), 13); // null record closing the children
        const auto here = m_out.tellp();
        m_out.seekp(open.start);
        putU32(uint32_t(here));
        putU32(open.propertyCount);
        putU32(uint32_t(open.propertiesEnd - open.propertiesStart));
        m_out.seekp(here);
    }
    void finish()
    {
        m_out.write(std::string(13, '\0').data(), 13);
        m_out.close();
    }

    // A leaf node holding a single value.
    void leaf(const char* name, int32_t v)
    {
        begin(name);
        addInt(v);
        end();
    }
    void leaf(const char* name, const std::string& v)
    {
        begin(name);
        addString(v);
        end();
    }

private:
    struct Open
    {
        std::streampos start, propertiesStart, propertiesEnd;
        uint32_t propertyCount = 0;
        bool hasChildren = false;
    };

    void putU32(uint32_t v) { m_out.write(reinterpret_cast<const char*>(&v), 4); }
    void startProperty() { ++m_open.back().propertyCount; }
    void prop(char type, const void* data, int bytes)
    {
        startProperty();
        m_out.put(type);
        m_out.write(static_cast<const char*>(data), bytes);
        m_open.back().propertiesEnd = m_out.tellp();
    }

    std::ofstream m_out;
    std::vector<Open> m_open;
};

void writeBinaryFbx(const std::string& path, const Grid& g)
{
    FbxWriter w(path);
    std::vector<double> vertices(g.positions.begin(), g.positions.end());
    std::vector<int32_t> polygon(g.indices.size());
    for (size_t i = 0; i < g.indices.size(); ++i)
        polygon[i] = i % 3 == 2 ? ~int32_t(g.indices[i]) : int32_t(g.indices[i]);
    std::vector<double> normals, uvs;
    std::vector<int32_t> uvIndex(g.indices.begin(), g.indices.end());
    normals.reserve(g.indices.size() * 3);
    for (uint32_t index : g.indices)
        for (int c = 0; c < 3; ++c)
            normals.push_back(g.normals[3 * index + c]);
    uvs.assign(g.uvs.begin(), g.uvs.end());

    w.begin("FBXHeaderExtension");
    w.leaf("FBXHeaderVersion", 1003);
    w.leaf("FBXVersion", 7400);
    w.end();
    w.leaf("Creator", std::string("mesh_formats_load_bench"));
    w.begin("GlobalSettings");
    w.leaf("Version", 1000);
    w.begin("Properties70");
    auto intProperty = [&](const char* name, int32_t value) {
        w.begin("P");
        w.addString(name);
        w.addString("int");
        w.addString("Integer");
        w.addString("");
        w.addInt(value);
        w.end();
    };
    intProperty("UpAxis", 1);
    intProperty("UpAxisSign", 1);
    intProperty("FrontAxis", 2);
    intProperty("FrontAxisSign", 1);
    intProperty("CoordAxis", 0);
    intProperty("CoordAxisSign", 1);
    w.begin("P");
    w.addString("UnitScaleFactor");
    w.addString("double");
    w.addString("Number");
    w.addString("");
    w.addDouble(100.0);
    w.end();
    w.end();
    w.end();

    w.begin("Objects");
    w.begin("Geometry");
    w.addLong(1000);
    w.addString(std::string("grid\0\1Geometry", 14));
    w.addString("Mesh");
    w.begin("Vertices");
    w.addArray('d', vertices);
    w.end();
    w.begin("PolygonVertexIndex");
    w.addArray('i', polygon);
    w.end();
    w.leaf("GeometryVersion", 124);
    w.begin("LayerElementNormal");
    w.addInt(0);
    w.leaf("Version", 101);
    w.leaf("Name", std::string());
    w.leaf("MappingInformationType", std::string("ByPolygonVertex"));
    w.leaf("ReferenceInformationType", std::string("Direct"));
    w.begin("Normals");
    w.addArray('d', normals);
    w.end();
    w.end();
    w.begin("LayerElementUV");
    w.addInt(0);
    w.leaf("Version", 101);
    w.leaf("Name", std::string("UVMap"));
    w.leaf("MappingInformationType", std::string("ByPolygonVertex"));
    w.leaf("ReferenceInformationType", std::string("IndexToDirect"));
    w.begin("UV");
    w.addArray('d', uvs);
    w.end();
    w.begin("UVIndex");
    w.addArray('i', uvIndex);
    w.end();
    w.end();
    w.begin("Layer");
    w.addInt(0);
    w.leaf("Version", 100);
    for (const char* type : {"LayerElementNormal", "LayerElementUV"}) {
        w.begin("LayerElement");
        w.leaf("Type", std::string(type));
        w.leaf("TypedIndex", 0);
        w.end();
    }
    w.end();
    w.end(); // Geometry
    w.begin("Model");
    w.addLong(2000);
    w.addString(std::string("grid\0\1Model", 11));
    w.addString("Mesh");
    w.leaf("Version", 232);
    w.end();
    w.begin("Material");
    w.addLong(3000);
    w.addString(std::string("grid_material\0\1Material", 23));
    w.addString("");
    w.leaf("Version", 102);
    w.leaf("ShadingModel", std::string("phong"));
    w.end();
    w.end(); // Objects

    w.begin("Connections");
    auto connect = [&](int64_t child, int64_t parent) {
        w.begin("C");
        w.addString("OO");
        w.addLong(child);
        w.addLong(parent);
        w.end();
    };
    connect(1000, 2000);
    connect(3000, 2000);
    connect(2000, 0);
    w.end();
    w.finish();
}

struct Figures
{
    double seconds = 0.0;
    double peakMib = 0.0;
    uint64_t vertices = 0;
    uint64_t triangles = 0;
};

Figures loadWithProgram(const QString& path)
{
    const auto loaders = Ond::SceneLoad::createSceneLoaderMgr();
    // Memory freed by the previous load goes back first, so that this
    // load's peak is its own.
    malloc_trim(0);
    const long before = procStatusBytes("VmRSS");
    resetPeakRss();
    const auto start = Clock::now();
    std::shared_ptr<Ond::SceneGraph::Scene> scene =
        loaders->load(path, QFileInfo(path).suffix().toLatin1(),
                      Ond::SceneLoad::SceneLoadOptions(Ond::SceneLoad::BakeLoadFlags), nullptr);
    Figures f;
    f.seconds = seconds(start);
    f.peakMib = mib(double(procStatusBytes("VmHWM") - before));
    if (scene)
        for (const auto& entity : scene->getEntities())
            if (entity->getMeshDisplay() && entity->getMeshDisplay()->getMesh()) {
                const auto data = entity->getMeshDisplay()->getMesh()->getData();
                f.vertices += data->getVertexCount();
                for (const auto& sub : data->getSubMeshes())
                    f.triangles += sub.primitiveCount;
            }
    return f;
}

// Assimp's own read with the loader's steps, then the conversion into the
// program's scene, timed apart.
std::pair<double, double> assimpReadAndConvertSeconds(const QString& path)
{
    Assimp::Importer importer;
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false);
    importer.SetPropertyInteger(AI_CONFIG_PP_SBP_REMOVE, aiPrimitiveType_POINT | aiPrimitiveType_LINE);
    const auto start = Clock::now();
    const aiScene* scene = importer.ReadFile(QFile::encodeName(path).constData(),
                                             aiProcess_Triangulate | aiProcess_SortByPType
                                                 | aiProcess_ValidateDataStructure);
    const double read = seconds(start);
    if (!scene)
        return {-1.0, -1.0};
    const auto convertStart = Clock::now();
    const QByteArray suffix = QFileInfo(path).suffix().toLatin1();
    std::unique_ptr<Ond::SceneGraph::Scene> converted(Ond::SceneLoad::convertScene(
        *scene, Ond::SceneLoad::fileToSceneTransform(*scene, suffix),
        Ond::SceneLoad::SceneLoadOptions(Ond::SceneLoad::BakeLoadFlags), QStringLiteral("grid"), nullptr));
    return {read, seconds(convertStart)};
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int n = argc > 1 ? std::max(1, std::atoi(argv[1])) : 710;
    QTemporaryDir temp;
    const QString dir = argc > 2 && argv[2][0] ? QString::fromLocal8Bit(argv[2]) : temp.path();
    const bool ascii = argc > 3 && std::strcmp(argv[3], "ascii") == 0;
    QDir().mkpath(dir);

    const auto writeStart = Clock::now();
    const Grid grid = makeGrid(n);
    {
        const std::unique_ptr<aiScene> scene = toAiScene(grid);
        Assimp::Exporter exporter;
        for (const auto& [id, name] : {std::pair<const char*, const char*>{"objnomtl", "grid.obj"},
                                      {"glb2", "grid.glb"},
                                      {"fbxa", "grid_ascii.fbx"}}) {
            if (std::strcmp(id, "fbxa") == 0 && !ascii)
                continue;
            if (exporter.Export(scene.get(), id, QFile::encodeName(dir + '/' + name).constData()) != AI_SUCCESS)
                std::printf("export %s failed: %s\n", id, exporter.GetErrorString());
        }
    }
    writeBinaryFbx(QFile::encodeName(dir + "/grid.fbx").toStdString(), grid);
    std::printf("grid %d x %d: %zu triangles, files written in %.1f s to %s\n", n, n, grid.indices.size() / 3,
                seconds(writeStart), qPrintable(dir));

    double objSeconds = 0.0;
    for (const char* name : {"grid.obj", "grid.fbx", "grid.glb", "grid_ascii.fbx"}) {
        const QString path = dir + '/' + name;
        if (!QFileInfo::exists(path))
            continue;
        // Time: best of two, the first load also pays for warming the
        // allocator. Memory: the first, which had to obtain it.
        Figures f = loadWithProgram(path);
        f.seconds = std::min(f.seconds, loadWithProgram(path).seconds);
        if (objSeconds == 0.0)
            objSeconds = f.seconds;
        std::printf("%-15s %7.1f MiB file: load %6.3f s (%4.1fx OBJ), peak memory +%6.1f MiB, %llu vertices, "
                    "%llu triangles",
                    name, mib(double(QFileInfo(path).size())), f.seconds, f.seconds / objSeconds, f.peakMib,
                    (unsigned long long)f.vertices, (unsigned long long)f.triangles);
        if (QFileInfo(path).suffix() != QLatin1String("obj")) {
            const auto [read, convert] = assimpReadAndConvertSeconds(path);
            std::printf("; apart: Assimp's read %.3f s, conversion %.3f s", read, convert);
        }
        std::printf("\n");
    }
    return 0;
}
