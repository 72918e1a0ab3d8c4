// Whole-process bakes from a generated huge high mesh. Writes a wavy terrain
// of about N million triangles (positions and faces only, as sculpting tools
// export them, so the reader computes the normals) over a flat low mesh of
// 3.9 k triangles to a temporary folder, runs the real binary on a
// pseudo-terminal, and splits its wall time by the stages its progress line
// shows, with the peak resident memory of the process.
//
//   huge_mesh_bench [million triangles, default 1] [map side exponent, default 11] [AO rays, default 64, 0: none]
//   huge_mesh_bench 16        normal-from-mesh and ambient occlusion at 2048², 16 M triangles
//   huge_mesh_bench 100 12    normal-from-mesh at 4096² on 100 M triangles, skipped with a line when the
//                             disk or the memory cannot hold it
//   ZMF_BENCH_BINARY=/path/to/zmfbaker huge_mesh_bench 16    the same with another build
//
// The stages: loading (reading, parsing, normals, reindexing, mesh
// processing), preparing the high mesh for the ray tracer, building its
// scene, the tiles (seeds and rays), post-processing; what follows the last
// stage is writing the file and leaving.

#include "BenchUtil.h"
#include "TerrainScene.h"

#include <QCoreApplication>
#include <QDir>
#include <QStorageInfo>
#include <QTemporaryDir>

#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <poll.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace {

using ZmfBench::now;

// Fast text output: the 100 M file is about 4 GB.
class ObjWriter
{
public:
    explicit ObjWriter(const std::string& path) : m_file(std::fopen(path.c_str(), "wb")) {}
    ~ObjWriter() { close(); }
    bool ok() const { return m_file != nullptr; }
    void text(const char* s) { m_buffer.append(s); }
    void number(float v)
    {
        char b[32];
        m_buffer.append(b, std::to_chars(b, b + sizeof b, v, std::chars_format::general, 7).ptr);
    }
    void number(uint32_t v)
    {
        char b[16];
        m_buffer.append(b, std::to_chars(b, b + sizeof b, v).ptr);
    }
    void flush(bool force = false)
    {
        if (m_file && (force || m_buffer.size() > (16u << 20))) {
            m_bytes += std::fwrite(m_buffer.data(), 1, m_buffer.size(), m_file);
            m_buffer.clear();
        }
    }
    bool close()
    {
        if (!m_file)
            return false;
        flush(true);
        const bool good = std::fclose(m_file) == 0;
        m_file = nullptr;
        return good;
    }
    uint64_t bytes() const { return m_bytes; }

private:
    std::FILE* m_file;
    std::string m_buffer;
    uint64_t m_bytes = 0;
};

uint64_t writeTerrain(const std::string& path, unsigned n)
{
    ObjWriter out(path);
    if (!out.ok())
        return 0;
    out.text("o terrain_high\n");
    for (unsigned y = 0; y < n; ++y)
        for (unsigned x = 0; x < n; ++x) {
            Eigen::Vector3f p, normal;
            ZmfBench::terrainVertex(n, x, y, p, normal);
            out.text("v ");
            out.number(p.x());
            out.text(" ");
            out.number(p.y());
            out.text(" ");
            out.number(p.z());
            out.text("\n");
            out.flush();
        }
    ZmfBench::forEachGridTriangle(n, [&](uint32_t a, uint32_t b, uint32_t c) {
        out.text("f ");
        out.number(a + 1);
        out.text(" ");
        out.number(b + 1);
        out.text(" ");
        out.number(c + 1);
        out.text("\n");
        out.flush();
    });
    return out.close() ? out.bytes() : 0;
}

long availableMemoryBytes()
{
    std::ifstream meminfo("/proc/meminfo");
    std::string key;
    long value = 0;
    std::string unit;
    while (meminfo >> key >> value >> unit)
        if (key == "MemAvailable:")
            return value * 1024L;
    return -1;
}

struct Interval
{
    std::string key;
    double seconds = 0.0;
};

struct RunFigures
{
    int exitCode = -1;
    double wall = 0.0;
    double peakGiB = 0.0;
    double cpu = 0.0; // user and system time of the process, all threads
    std::vector<Interval> stages; // in order of first appearance
    double lastStageEnd = 0.0;
};

// The stage part of a drawn line: what comes before the percentage.
std::string stageKey(const std::string& segment)
{
    const size_t end = segment.find("\x1b[K");
    std::string line = segment.substr(0, end);
    const size_t percent = line.find('%');
    if (percent == std::string::npos)
        return line;
    size_t cut = line.rfind("  ", percent);
    return cut == std::string::npos ? line : line.substr(0, cut);
}

// Runs the binary on a pseudo-terminal; a stage lasts from its first
// drawing to the next stage or clear, which the program draws at once.
RunFigures runStaged(const QString& program, const QStringList& args)
{
    RunFigures figures;
    std::vector<QByteArray> storage{program.toLocal8Bit()};
    for (const QString& a : args)
        storage.push_back(a.toLocal8Bit());
    std::vector<char*> argv;
    for (QByteArray& s : storage)
        argv.push_back(s.data());
    argv.push_back(nullptr);

    termios raw{};
    cfmakeraw(&raw);
    winsize size{};
    size.ws_col = 200;
    size.ws_row = 50;
    int master = -1;
    const double start = now();
    const pid_t pid = forkpty(&master, nullptr, &raw, &size);
    if (pid < 0)
        return figures;
    if (pid == 0) {
        ::execv(argv[0], argv.data());
        _exit(127);
    }

    std::map<std::string, size_t> index;
    const std::string between = "(no stage shown)";
    std::string current = "start-up (display, GL context, options)";
    double currentSince = start;
    std::string pending;
    auto switchTo = [&](std::string key, double t) {
        if (key.empty())
            key = between;
        if (key == current)
            return;
        auto found = index.find(current);
        if (found == index.end()) {
            found = index.emplace(current, figures.stages.size()).first;
            figures.stages.push_back({current, 0.0});
        }
        figures.stages[found->second].seconds += t - currentSince;
        if (current != between)
            figures.lastStageEnd = t - start;
        current = key;
        currentSince = t;
    };
    std::string log;
    for (;;) {
        pollfd fd{master, POLLIN, 0};
        if (::poll(&fd, 1, 1000) <= 0)
            continue;
        char buffer[8192];
        const ssize_t got = ::read(master, buffer, sizeof buffer);
        if (got <= 0)
            break;
        const double t = now();
        pending.append(buffer, size_t(got));
        // Whole segments only: each starts at a carriage return.
        size_t pos = 0;
        for (;;) {
            const size_t cr = pending.find('\r', pos);
            if (cr == std::string::npos)
                break;
            const size_t next = pending.find("\x1b[K", cr);
            if (next == std::string::npos)
                break;
            log.append(pending, pos, cr - pos);
            switchTo(stageKey(pending.substr(cr + 1, next + 3 - cr - 1)), t);
            pos = next + 3;
        }
        pending.erase(0, pos);
    }
    log += pending;
    // What follows the last stage is told apart below.
    if (current != between)
        switchTo(between, now());
    ::close(master);
    int status = 0;
    rusage usage{};
    ::wait4(pid, &status, 0, &usage);
    figures.wall = now() - start;
    figures.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    figures.peakGiB = double(usage.ru_maxrss) * 1024.0 / double(1ull << 30);
    figures.cpu = double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
                  + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    if (!log.empty())
        std::printf("  log: %s\n", log.c_str());
    return figures;
}

void report(const char* label, const RunFigures& f)
{
    // CPU time tells more than wall time on a machine that others load.
    std::printf("%s: %.2f s wall, %.2f s CPU, peak RSS %.2f GiB, exit %d\n", label, f.wall, f.cpu, f.peakGiB,
                f.exitCode);
    for (const Interval& stage : f.stages)
        std::printf("  %-52s %8.2f s\n", stage.key.c_str(), stage.seconds);
    std::printf("  %-52s %8.2f s\n", "after the last stage: writing the file, leaving", f.wall - f.lastStageEnd);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const double millions = argc > 1 ? std::max(0.01, std::atof(argv[1])) : 1.0;
    const int exponent = argc > 2 ? std::clamp(std::atoi(argv[2]), 5, 14) : 11;
    const int rays = argc > 3 ? std::max(1, std::atoi(argv[3])) : 64;

    // 2 (n - 1)^2 triangles.
    const unsigned n = unsigned(std::lround(std::sqrt(millions * 1e6 / 2.0))) + 1;
    const double triangles = 2.0 * double(n - 1) * double(n - 1);
    const QString tempRoot = QDir::tempPath();
    // About 43 bytes of text per triangle; a normal map peaked at 142 bytes
    // per triangle at 16 M (mesh, the ray tracer's copy, Embree's compact
    // tree). A quarter more stays free: the machine is shared.
    const double diskNeeded = triangles * 43.0 + 64e6;
    const double memoryNeeded = (triangles * 150.0 + 2e9) * 1.25;
    const double diskFree = double(QStorageInfo(tempRoot).bytesAvailable());
    const double memoryFree = double(availableMemoryBytes());
    std::printf("high mesh: %.1f M triangles (%u x %u vertices), map %d x %d; needs about %.1f GB of disk (%.1f free "
                "under %s) and %.1f GiB of memory with headroom (%.1f available)\n",
                triangles / 1e6, n, n, 1 << exponent, 1 << exponent, diskNeeded / 1e9, diskFree / 1e9,
                qPrintable(tempRoot), memoryNeeded / double(1ull << 30), memoryFree / double(1ull << 30));
    if (diskFree < diskNeeded || memoryFree < memoryNeeded) {
        std::printf("SKIPPED: this machine cannot hold the %.0f M-triangle case (%s)\n", triangles / 1e6,
                    diskFree < diskNeeded ? "disk" : "memory");
        return 0;
    }

    QTemporaryDir dir;
    const std::string high = dir.filePath(QStringLiteral("terrain_high.obj")).toStdString();
    const std::string low = dir.filePath(QStringLiteral("terrain_low.obj")).toStdString();
    double t0 = now();
    const uint64_t bytes = writeTerrain(high, n);
    if (bytes == 0 || !ZmfBench::writePlaneObj(low, 45)) {
        std::printf("could not write the meshes under %s\n", qPrintable(dir.path()));
        return 1;
    }
    std::printf("wrote %.2f GB of OBJ in %.1f s\n", double(bytes) / 1e9, now() - t0);
    std::fflush(stdout);

    // ZMF_BENCH_BINARY runs another build, e.g. an older one for comparison:
    // a binary without the progress line gives the totals only.
    const QString program = qEnvironmentVariableIsSet("ZMF_BENCH_BINARY")
                                ? qEnvironmentVariable("ZMF_BENCH_BINARY")
                                : ZmfBench::programPath();
    const QStringList common = ZmfBench::detailBakeOptions(QString::fromStdString(low), QString::fromStdString(high),
                                                           QString::number(exponent), dir.path());

    const RunFigures normal = runStaged(program, QStringList{QStringLiteral("normal-from-mesh")} << common);
    report("normal-from-mesh", normal);
    // The 100 M case is about memory: one bake is enough.
    if (triangles > 50e6 || (argc > 3 && std::atoi(argv[3]) == 0))
        return 0;
    const RunFigures ao = runStaged(program, QStringList{QStringLiteral("ambient-occlusion-from-mesh")}
                                                 << common << QStringLiteral("--nb-second-rays") << QString::number(rays)
                                                 << QStringLiteral("--max-dist-relative-scale")
                                                 << QStringLiteral("false") << QStringLiteral("--max-dist")
                                                 << QStringLiteral("0.1"));
    report(qPrintable(QStringLiteral("ambient-occlusion-from-mesh, %1 rays").arg(rays)), ao);
    return 0;
}
