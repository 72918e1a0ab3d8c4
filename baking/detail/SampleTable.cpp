#include "baking/detail/SampleTable.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Ond::Baking {

float SampleTable::azimuth(unsigned i)
{
    // The fraction of i times the golden ratio, as the mantissa of a float
    // in [1, 2).
    const uint32_t k = uint32_t(i) * 0x9E3779B9u;
    const uint32_t bits = (k >> 9) | 0x3F800000u;
    float f;
    std::memcpy(&f, &bits, sizeof f);
    return (f - 1.0f) * 6.2831855f;
}

SampleTable::SampleTable(SampleDistribution distribution, float spreadAngle, unsigned count)
    : m_count(count), m_samples(size_t(std::max(count, 1u)) * 4)
{
    const float half = spreadAngle * 3.1415927f / 360.0f;
    const float c = std::cos(half);
    const float n = float(count);
    for (unsigned i = 0; i < count; ++i) {
        const float phi = azimuth(i);
        float r, z;
        if (distribution == SampleDistribution::Cosine) {
            const float q = (float(i) + 0.5f) * (1.0f - c * c) / n + c * c;
            r = std::sqrt(std::max(0.0f, 1.0f - q));
            z = std::sqrt(q);
        } else {
            z = (float(i) + 0.5f) * (1.0f - c) / n + c;
            r = std::sqrt(std::max(0.0f, 1.0f - z * z));
        }
        float* s = m_samples.data() + size_t(i) * 4;
        s[0] = r * std::cos(phi);
        s[1] = r * std::sin(phi);
        s[2] = z;
        s[3] = 0.0f;
    }
}

} // namespace Ond::Baking
