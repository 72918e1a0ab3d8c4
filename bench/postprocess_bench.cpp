// Times the post-process of a baked map: a 4096² RGBA float map with UV
// islands, dilation 16 and diffusion, on the compute and the fragment path.
// Usage: postprocess_bench [size] [dilation width] [repetitions]
#include "baking/lowpoly/PostProcess.h"
#include "bench/BenchGL.h"
#include "opengl/OglContextData.h"
#include "opengl/OglUtils.h"

#include <GL/glew.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>

using Ond::Baking::DilationPath;
using Ond::Surfaces::PixelFormat;
using Ond::Surfaces::Surface;
using Ond::Surfaces::SurfaceDesc;
using Ond::Surfaces::SurfaceSPtr;

namespace {

// Rectangular islands of random colour over about half of the map, with
// empty gutters between them as a packed UV layout has.
SurfaceSPtr bakedMap(uint32_t size)
{
    auto surface = SurfaceSPtr::create(SurfaceDesc(size, size, PixelFormat::RGBA32F));
    std::fill_n(reinterpret_cast<float*>(surface->data()), size_t(size) * size * 4, 0.0f);
    std::mt19937 random(1);
    const uint32_t cell = std::max(size / 32, 4u);
    for (uint32_t cy = 0; cy + cell <= size; cy += cell) {
        for (uint32_t cx = 0; cx + cell <= size; cx += cell) {
            const uint32_t w = cell / 2 + random() % (cell / 3);
            const uint32_t h = cell / 2 + random() % (cell / 3);
            const float r = float(random() % 256) / 255.0f, g = float(random() % 256) / 255.0f;
            for (uint32_t y = cy + 2; y < cy + 2 + h && y < size; ++y)
                for (uint32_t x = cx + 2; x < cx + 2 + w && x < size; ++x) {
                    float* texel = surface->pixel<float>(x, y);
                    texel[0] = r;
                    texel[1] = g;
                    texel[2] = 0.5f;
                    texel[3] = 1.0f;
                }
        }
    }
    return surface;
}

double timeRun(const SurfaceSPtr& source, uint32_t width, bool diffusion, DilationPath path, int repetitions)
{
    double best = 1e30;
    for (int i = 0; i < repetitions; ++i) {
        SurfaceSPtr surface = SurfaceSPtr::create(source->clone());
        glFinish();
        const auto start = std::chrono::steady_clock::now();
        Ond::Baking::postProcess(surface, width, diffusion, path);
        const auto end = std::chrono::steady_clock::now();
        best = std::min(best, std::chrono::duration<double, std::milli>(end - start).count());
    }
    return best;
}

} // namespace

int main(int argc, char** argv)
{
    const uint32_t size = argc > 1 ? uint32_t(std::atoi(argv[1])) : 4096;
    const uint32_t width = argc > 2 ? uint32_t(std::atoi(argv[2])) : 16;
    const int repetitions = argc > 3 ? std::max(std::atoi(argv[3]), 1) : 1;

    ZmfBench::BenchGL gl(argc, argv);
    if (!gl.ready())
        return 1;
    Ond::OpenGLUtils::QGLManager& manager = gl.manager();

    return manager.runInContext(true, [&](Ond::OglUtils::OglContextData&) {
        std::printf("renderer: %s, GL %s\n", reinterpret_cast<const char*>(glGetString(GL_RENDERER)),
                    reinterpret_cast<const char*>(glGetString(GL_VERSION)));
        std::printf("map %u x %u RGBA32F, dilation %u, best of %d\n", size, size, width, repetitions);
        const SurfaceSPtr source = bakedMap(size);
        const bool compute = Ond::Baking::dilationUsesCompute(PixelFormat::RGBA32F);
        if (!compute)
            std::printf("compute path unavailable: both rows use the fragment path\n");
        const struct { const char* name; DilationPath path; } paths[] = {
            {"compute", DilationPath::Compute}, {"fragment", DilationPath::Fragment}};
        for (const auto& p : paths) {
            const double dilation = timeRun(source, width, false, p.path, repetitions);
            const double both = timeRun(source, width, true, p.path, repetitions);
            std::printf("%-8s  dilation: %9.1f ms   dilation + diffusion: %9.1f ms\n", p.name, dilation, both);
        }
        const double diffusion = timeRun(source, 0, true, DilationPath::Automatic, repetitions);
        const double transfer = timeRun(source, 1, false, DilationPath::Compute, repetitions);
        std::printf("diffusion alone: %.1f ms; upload, one compute step and download: %.1f ms\n", diffusion, transfer);
        std::fflush(stdout);
        return 0;
    });
}
