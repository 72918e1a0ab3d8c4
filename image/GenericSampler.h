#pragma once
// The GenericSampler family: a fetch policy (nearest or bilinear, with an
// addressing rule and a decoder) and a converter to the (r, g, b, a) result.
// Everything here is inlined into the per-hit paths of the ray kernels: no
// division, modulo, allocation or virtual call below sample().

#include "image/IGenericSampler.h"
#include "image/ONDHalf16.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <immintrin.h>
#include <type_traits>

// __m128 as a template argument drops its alignment attribute; harmless here
// as the vectors never live in containers.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-attributes"

namespace Ond::Surfaces {

// ---- Addressing -------------------------------------------------------

// Power-of-two sizes, repeat, row 0 at the bottom of the image.
struct Log2RepeatBottomLeft
{
    static uint32_t column(int x, uint32_t maskX) { return uint32_t(x) & maskX; }
    static uint32_t row(int y, uint32_t maskY) { return ~uint32_t(y) & maskY; }
    // Truncation towards zero, minus 1 for a negative product.
    static int floorToInt(float p)
    {
        int i = int(p);
        if (p < 0.0f)
            i -= 1;
        return i;
    }
};

// ---- Component traits -------------------------------------------------

template <typename T> struct ComponentTraits;
template <> struct ComponentTraits<uint8_t>
{
    static float toFloat(uint8_t v) { return float(v) * (1.0f / 255.0f); }
};
template <> struct ComponentTraits<uint16_t>
{
    static float toFloat(uint16_t v) { return float(v) * (1.0f / 65535.0f); }
};
template <> struct ComponentTraits<ONDHalf16>
{
    static float toFloat(ONDHalf16 v) { return ONDHalf16::toFloat(v.bits); }
};
template <> struct ComponentTraits<float>
{
    static float toFloat(float v) { return v; }
};

// ---- Decoders: texel address to fetched value ---------------------------

struct SamplerDecoderPassthru
{
    template <typename R, typename T> static R decode(const T* p)
    {
        R r;
        std::memcpy(r.data(), p, sizeof(R));
        return r;
    }
};

struct SamplerDecoderToFloat
{
    template <typename R, typename T> static float decode(const T* p) { return ComponentTraits<T>::toFloat(*p); }
};

// Four components into one 128-bit vector, storage order kept.
struct SamplerDecoderToVector4f
{
    template <typename R, typename T> static __m128 decode(const T* p);
};

template <> inline __m128 SamplerDecoderToVector4f::decode<__m128, uint8_t>(const uint8_t* p)
{
    int32_t v;
    std::memcpy(&v, p, 4);
    const __m128i zero = _mm_setzero_si128();
    const __m128i b = _mm_cvtsi32_si128(v);
    const __m128i i32 = _mm_unpacklo_epi16(_mm_unpacklo_epi8(b, zero), zero);
    return _mm_mul_ps(_mm_cvtepi32_ps(i32), _mm_set1_ps(1.0f / 255.0f));
}

template <> inline __m128 SamplerDecoderToVector4f::decode<__m128, uint16_t>(const uint16_t* p)
{
    const __m128i w = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
    const __m128i i32 = _mm_unpacklo_epi16(w, _mm_setzero_si128());
    return _mm_mul_ps(_mm_cvtepi32_ps(i32), _mm_set1_ps(1.0f / 65535.0f));
}

template <> inline __m128 SamplerDecoderToVector4f::decode<__m128, float>(const float* p)
{
    return _mm_loadu_ps(p);
}

// ---- Fetch policies ---------------------------------------------------

// The state every fetch needs, copied out of the sampler.
struct SamplerState
{
    const uint8_t* pixels;
    uint32_t maskX;
    uint32_t maskY;
    int64_t strideComponents;
    float width;
    float height;
};

template <typename T, uint32_t N, typename Addressing>
inline const T* texelAddress(const SamplerState& s, int x, int y)
{
    const T* base = reinterpret_cast<const T*>(s.pixels);
    return base + int64_t(Addressing::row(y, s.maskY)) * s.strideComponents
        + int64_t(Addressing::column(x, s.maskX)) * N;
}

template <typename R, typename Addressing, typename T, uint32_t N, typename Decoder = SamplerDecoderPassthru>
struct SurfaceSamplerNearest
{
    using Result = R;
    static R fetch(const SamplerState& s, int x, int y)
    {
        return Decoder::template decode<R, T>(texelAddress<T, N, Addressing>(s, x, y));
    }
    static R fetch(const SamplerState& s, float u, float v)
    {
        return fetch(s, Addressing::floorToInt(u * s.width), Addressing::floorToInt(v * s.height));
    }
};

template <typename R> struct BilinearMix;
template <> struct BilinearMix<float>
{
    static float mix(float a, float b, float f) { return a + (b - a) * f; }
};
template <> struct BilinearMix<__m128>
{
    static __m128 mix(__m128 a, __m128 b, __m128 f) { return _mm_add_ps(a, _mm_mul_ps(_mm_sub_ps(b, a), f)); }
    static __m128 mix(__m128 a, __m128 b, float f) { return mix(a, b, _mm_set1_ps(f)); }
};

template <typename R, typename Addressing, typename T, typename Decoder, uint32_t N = 1>
struct SurfaceSamplerBilinear
{
    using Result = R;
    static R texel(const SamplerState& s, int x, int y)
    {
        return Decoder::template decode<R, T>(texelAddress<T, N, Addressing>(s, x, y));
    }
    static R fetch(const SamplerState& s, int x, int y) { return texel(s, x, y); }
    static R fetch(const SamplerState& s, float u, float v)
    {
        const float px = u * s.width - 0.5f;
        const float py = v * s.height - 0.5f;
        const int ix = Addressing::floorToInt(px);
        const int iy = Addressing::floorToInt(py);
        const float fx = px - float(ix);
        const float fy = py - float(iy);
        const R t00 = texel(s, ix, iy);
        const R t10 = texel(s, ix + 1, iy);
        const R t01 = texel(s, ix, iy + 1);
        const R t11 = texel(s, ix + 1, iy + 1);
        const R r0 = BilinearMix<R>::mix(t00, t10, fx);
        const R r1 = BilinearMix<R>::mix(t01, t11, fx);
        return BilinearMix<R>::mix(r0, r1, fy);
    }
};

// ---- Converters: fetched value to (r, g, b, a) --------------------------

template <PixelFormat F> struct NearestSamplingConverter
{
    template <typename T, size_t N> static Eigen::Vector4f convert(const std::array<T, N>& c)
    {
        using Tr = ComponentTraits<T>;
        if constexpr (N == 1) {
            const float g = Tr::toFloat(c[0]);
            return {g, g, g, 1.0f};
        } else if constexpr (N == 2) {
            const float g = Tr::toFloat(c[0]);
            return {g, g, g, Tr::toFloat(c[1])};
        } else {
            const float a = N == 4 ? Tr::toFloat(c[N - 1]) : 1.0f;
            if constexpr (isBGR(F))
                return {Tr::toFloat(c[2]), Tr::toFloat(c[1]), Tr::toFloat(c[0]), a};
            else
                return {Tr::toFloat(c[0]), Tr::toFloat(c[1]), Tr::toFloat(c[2]), a};
        }
    }
};

struct FloatBilinearSamplingConverter
{
    static Eigen::Vector4f convert(float g) { return {g, g, g, 1.0f}; }
};

template <PixelFormat F> struct __m128BilinearSamplingConverter
{
    static __m128 order(__m128 v)
    {
        if constexpr (isBGR(F))
            return _mm_shuffle_ps(v, v, _MM_SHUFFLE(3, 0, 1, 2));
        else
            return v;
    }
    static Eigen::Vector4f convert(__m128 v)
    {
        Eigen::Vector4f out;
        _mm_storeu_ps(out.data(), order(v));
        return out;
    }
};

// ---- The sampler ------------------------------------------------------

template <PixelFormat F, typename Sampler, typename Converter>
class GenericSampler final : public IGenericSampler
{
public:
    explicit GenericSampler(const SurfaceSPtr& surface)
        : IGenericSampler(surface)
        , m_state{m_pixels, m_maskX, m_maskY, m_strideComponents, m_scale.x(), m_scale.y()}
    {
    }

    Eigen::Vector4f sample(int x, int y) const override { return sampleTexel(x, y); }
    Eigen::Vector4f sample(float u, float v) const override { return sampleUV(u, v); }

    // Non-virtual forms for callers that know the member.
    Eigen::Vector4f sampleTexel(int x, int y) const { return Converter::convert(Sampler::fetch(m_state, x, y)); }
    Eigen::Vector4f sampleUV(float u, float v) const { return Converter::convert(Sampler::fetch(m_state, u, v)); }
    // The raw fetched value: for the four-channel bilinear members the
    // 128-bit vector before it leaves the register (storage order).
    typename Sampler::Result fetch(float u, float v) const { return Sampler::fetch(m_state, u, v); }

private:
    SamplerState m_state;
};

// ---- Family members ---------------------------------------------------

template <PixelFormat F> using ComponentOf =
    std::conditional_t<componentType(F) == ComponentType::UInt8, uint8_t,
    std::conditional_t<componentType(F) == ComponentType::UInt16, uint16_t,
    std::conditional_t<componentType(F) == ComponentType::Half, ONDHalf16, float>>>;

template <PixelFormat F>
using NearestSampler = GenericSampler<F,
    SurfaceSamplerNearest<std::array<ComponentOf<F>, channelCount(F)>, Log2RepeatBottomLeft,
                          ComponentOf<F>, channelCount(F), SamplerDecoderPassthru>,
    NearestSamplingConverter<F>>;

// One channel, bilinear, float result.
template <PixelFormat F>
using GreyBilinearSampler = GenericSampler<F,
    SurfaceSamplerBilinear<float, Log2RepeatBottomLeft, ComponentOf<F>, SamplerDecoderToFloat, 1>,
    FloatBilinearSamplingConverter>;

// Four channels (8-bit, 16-bit, float), bilinear in one 128-bit vector.
template <PixelFormat F>
using RGBABilinearSampler = GenericSampler<F,
    SurfaceSamplerBilinear<__m128, Log2RepeatBottomLeft, ComponentOf<F>, SamplerDecoderToVector4f, 4>,
    __m128BilinearSamplingConverter<F>>;

} // namespace Ond::Surfaces

#pragma GCC diagnostic pop
