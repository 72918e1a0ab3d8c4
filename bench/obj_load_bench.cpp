// OBJ load benchmark: writes a grid mesh of about 2 M triangles with UVs and
// normals (over 150 MB) to a temporary folder, loads it with the OBJ importer
// and with Assimp for reference, and prints throughput and peak memory.
//
//   obj_load_bench [grid size, default 1000] [runs, default 3] [file to write and keep]

#include "bench/BenchUtil.h"
#include "scene/graph/MeshDisplayComponent.h"
#include "scene/load/SceneImporter.h"
#include "scene/obj/OBJSceneLoader.h"

#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <thread>

namespace {

using ZmfBench::Clock;
using ZmfBench::procStatusBytes;
using ZmfBench::resetPeakRss;
using ZmfBench::seconds;

long currentRss() { return procStatusBytes("VmRSS"); }
long peakRss() { return procStatusBytes("VmHWM"); }

void appendFloat(std::string& out, float value)
{
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value, std::chars_format::fixed, 6);
    out.append(buffer, result.ptr);
}

void appendCorner(std::string& out, uint32_t index)
{
    char buffer[16];
    const auto result = std::to_chars(buffer, buffer + sizeof(buffer), index);
    for (int i = 0; i < 3; ++i) {
        out.append(buffer, result.ptr);
        out += i < 2 ? '/' : ' ';
    }
}

// A wavy height field of n x n quads, two triangles each, every vertex with
// its own UV and normal (v/vt/vn share the index, as many exporters write).
uint64_t writeGrid(const std::string& path, int n)
{
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        return 0;
    std::string chunk;
    uint64_t bytes = 0;
    auto flush = [&](bool force) {
        if (force || chunk.size() > (8u << 20)) {
            std::fwrite(chunk.data(), 1, chunk.size(), file);
            bytes += chunk.size();
            chunk.clear();
        }
    };
    chunk += "# obj_load_bench grid\no grid\n";
    const int side = n + 1;
    auto height = [](float x, float y) { return 0.05f * std::sin(12.0f * x) * std::cos(9.0f * y); };
    for (int j = 0; j < side; ++j) {
        for (int i = 0; i < side; ++i) {
            const float x = float(i) / float(n), y = float(j) / float(n);
            chunk += "v ";
            appendFloat(chunk, x);
            chunk += ' ';
            appendFloat(chunk, height(x, y));
            chunk += ' ';
            appendFloat(chunk, y);
            chunk += '\n';
            flush(false);
        }
    }
    for (int j = 0; j < side; ++j) {
        for (int i = 0; i < side; ++i) {
            chunk += "vt ";
            appendFloat(chunk, float(i) / float(n));
            chunk += ' ';
            appendFloat(chunk, float(j) / float(n));
            chunk += '\n';
            flush(false);
        }
    }
    for (int j = 0; j < side; ++j) {
        for (int i = 0; i < side; ++i) {
            const float x = float(i) / float(n), y = float(j) / float(n);
            const float dx = 0.6f * std::cos(12.0f * x) * std::cos(9.0f * y);
            const float dy = -0.45f * std::sin(12.0f * x) * std::sin(9.0f * y);
            const float length = std::sqrt(dx * dx + 1.0f + dy * dy);
            chunk += "vn ";
            appendFloat(chunk, -dx / length);
            chunk += ' ';
            appendFloat(chunk, 1.0f / length);
            chunk += ' ';
            appendFloat(chunk, -dy / length);
            chunk += '\n';
            flush(false);
        }
    }
    chunk += "s 1\n";
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) {
            const uint32_t a = uint32_t(j * side + i + 1), b = a + 1, c = a + uint32_t(side), d = c + 1;
            chunk += "f ";
            appendCorner(chunk, a);
            appendCorner(chunk, c);
            appendCorner(chunk, b);
            chunk.back() = '\n';
            chunk += "f ";
            appendCorner(chunk, b);
            appendCorner(chunk, c);
            appendCorner(chunk, d);
            chunk.back() = '\n';
            flush(false);
        }
    }
    flush(true);
    std::fclose(file);
    return bytes;
}

struct MeshFigures
{
    uint64_t vertices = 0;
    uint64_t triangles = 0;
    uint64_t bufferBytes = 0;
};

MeshFigures figuresOf(const Ond::SceneGraph::Scene& scene)
{
    MeshFigures figures;
    for (const auto& entity : scene.getEntities()) {
        const auto* display = entity->getMeshDisplay();
        if (!display || !display->getMesh())
            continue;
        const auto data = display->getMesh()->getData();
        figures.vertices += data->getVertexCount();
        figures.bufferBytes += data->getVertexCount() * sizeof(Eigen::Vector3f);
        if (data->getNormals())
            figures.bufferBytes += data->getNormals()->size() * sizeof(Eigen::Vector3f);
        if (data->getColors())
            figures.bufferBytes += data->getColors()->size() * sizeof(Eigen::Vector4f);
        for (size_t i = 0; i < data->getUvSetCount(); ++i)
            figures.bufferBytes += data->getUvSet(i)->size() * sizeof(Eigen::Vector2f);
        for (const auto& subMesh : data->getSubMeshes()) {
            figures.triangles += subMesh.primitiveCount;
            figures.bufferBytes += subMesh.indices ? subMesh.indices->size() * sizeof(uint32_t) : 0;
        }
    }
    return figures;
}

double mib(double bytes) { return bytes / (1024.0 * 1024.0); }

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int gridSize = argc > 1 ? std::max(1, std::atoi(argv[1])) : 1000;
    const int runs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 3;

    QTemporaryDir dir;
    const std::string path = argc > 3 ? std::string(argv[3]) : dir.path().toStdString() + "/grid.obj";
    auto start = Clock::now();
    // A kept file from an earlier run is reused as it stands.
    const QFileInfo existing(QString::fromStdString(path));
    const uint64_t fileBytes = existing.size() > 0 ? uint64_t(existing.size()) : writeGrid(path, gridSize);
    if (fileBytes == 0) {
        std::fprintf(stderr, "cannot write %s\n", path.c_str());
        return 1;
    }
    std::printf("file: %s, %.1f MB, %llu triangles, written in %.2f s\n", path.c_str(), fileBytes / 1e6,
                2ull * gridSize * gridSize, seconds(start));
    std::printf("threads: %u\n", std::thread::hardware_concurrency());

    // The bake commands' flags: normals, UVs and colours kept.
    const Ond::SceneLoad::SceneLoadOptions options(63 & ~0x04u);
    Ond::SceneLoad::OBJSceneLoader loader;
    double best = 1e30;
    MeshFigures figures;
    long firstPeakIncrease = 0;
    for (int run = 0; run < runs; ++run) {
        const long baseline = currentRss();
        resetPeakRss();
        start = Clock::now();
        std::unique_ptr<Ond::SceneLoad::SceneImporter> importer(
            loader.createImporter(QString::fromStdString(path), "obj"));
        std::unique_ptr<Ond::SceneGraph::Scene> scene(importer->import(options, nullptr));
        const double elapsed = seconds(start);
        const long peak = peakRss();
        if (!scene) {
            std::fprintf(stderr, "import failed\n");
            return 1;
        }
        figures = figuresOf(*scene);
        if (run == 0)
            firstPeakIncrease = peak - baseline;
        best = std::min(best, elapsed);
        std::printf("zmf run %d: %.3f s, peak RSS %.0f MiB over a baseline of %.0f MiB\n", run + 1, elapsed,
                    mib(peak - baseline), mib(baseline));
    }
    std::printf("zmf: best %.3f s, %.0f MB/s, %.2f M triangles/s, %llu vertices\n", best, fileBytes / 1e6 / best,
                figures.triangles / 1e6 / best, static_cast<unsigned long long>(figures.vertices));
    // Later runs in the same process also count memory that the allocator
    // kept from the run before; the first run is the one a command sees.
    std::printf("zmf memory: final mesh buffers %.1f MiB, first load's peak above baseline %.1f MiB (%.2fx)\n",
                mib(figures.bufferBytes), mib(firstPeakIncrease),
                double(firstPeakIncrease) / double(figures.bufferBytes));

    auto runAssimp = [&](unsigned flags, const char* label) {
        Assimp::Importer importer;
        const long baseline = currentRss();
        resetPeakRss();
        start = Clock::now();
        const aiScene* scene = importer.ReadFile(path, flags);
        const double elapsed = seconds(start);
        const long peak = peakRss();
        if (!scene) {
            std::printf("assimp (%s): failed: %s\n", label, importer.GetErrorString());
            return 0.0;
        }
        unsigned long long vertices = 0, faces = 0;
        for (unsigned i = 0; i < scene->mNumMeshes; ++i) {
            vertices += scene->mMeshes[i]->mNumVertices;
            faces += scene->mMeshes[i]->mNumFaces;
        }
        std::printf("assimp (%s): %.3f s, %.0f MB/s, %llu vertices, %llu faces, peak increase %.0f MiB; "
                    "zmf is %.1fx faster\n",
                    label, elapsed, fileBytes / 1e6 / elapsed, vertices, faces, mib(peak - baseline),
                    elapsed / best);
        return elapsed;
    };
    runAssimp(0, "plain");
    runAssimp(aiProcess_JoinIdenticalVertices, "joined vertices");
    return 0;
}
