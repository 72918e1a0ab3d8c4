// Figures of the per-hit surface reads of the ray kernels: bilinear and
// nearest sampling of a 1024² surface, through the virtual interface and
// through the concrete member. Prints nanoseconds per sample.

#include "image/GenericSampler.h"

#include <chrono>
#include <cstdio>
#include <memory>
#include <random>
#include <vector>

using namespace Ond::Surfaces;

namespace {

SurfaceSPtr makeSurface(PixelFormat f)
{
    auto s = SurfaceSPtr::create(SurfaceDesc(1024, 1024, f));
    for (uint32_t y = 0; y < 1024; ++y)
        for (uint32_t x = 0; x < 1024; ++x)
            s->writePixel(x, y, Eigen::Vector4f(x / 1024.0f, y / 1024.0f, 0.5f, 1.0f));
    return s;
}

template <typename Fn> double timePerSample(const std::vector<float>& uv, Fn&& sample)
{
    Eigen::Vector4f sum = Eigen::Vector4f::Zero();
    const auto start = std::chrono::steady_clock::now();
    for (size_t i = 0; i + 1 < uv.size(); i += 2)
        sum += sample(uv[i], uv[i + 1]);
    const auto end = std::chrono::steady_clock::now();
    volatile float sink = sum.sum(); // keeps the loop
    (void)sink;
    return std::chrono::duration<double, std::nano>(end - start).count() / double(uv.size() / 2);
}

} // namespace

int main()
{
    // Random: every sample misses the caches, as scattered hits do.
    // Coherent: neighbouring texels, as the hits of one tile mostly are.
    std::mt19937 rng(7);
    std::uniform_real_distribution<float> dist(-1.0f, 2.0f);
    std::vector<float> randomUV(2 * 4000000), coherentUV(2 * 4000000);
    for (float& v : randomUV)
        v = dist(rng);
    for (size_t i = 0; i < coherentUV.size() / 2; ++i) {
        coherentUV[2 * i] = float(i % 2048) / 2048.0f;
        coherentUV[2 * i + 1] = float(i / 2048) / 2048.0f;
    }

    for (const auto* pattern : {&randomUV, &coherentUV}) {
        const char* name = pattern == &randomUV ? "random" : "coherent";
        for (PixelFormat f : {PixelFormat::RGBA32F, PixelFormat::RGBA8, PixelFormat::L32F}) {
            const auto surface = makeSurface(f);
            for (bool bilinear : {false, true}) {
                std::unique_ptr<IGenericSampler> s(createSampler(surface, bilinear));
                const double ns = timePerSample(*pattern, [&](float u, float v) { return s->sample(u, v); });
                std::printf("%-8s %-8s %-9s virtual   %6.2f ns/sample\n", name, pixelFormatName(f),
                            bilinear ? "bilinear" : "nearest", ns);
            }
        }
        const auto surface = makeSurface(PixelFormat::RGBA32F);
        RGBABilinearSampler<PixelFormat::RGBA32F> direct(surface);
        const double ns = timePerSample(*pattern, [&](float u, float v) { return direct.sampleUV(u, v); });
        std::printf("%-8s %-8s %-9s concrete  %6.2f ns/sample\n", name, "RGBA32F", "bilinear", ns);
    }
    return 0;
}
