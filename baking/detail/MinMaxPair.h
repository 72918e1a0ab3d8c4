#pragma once
// The value range of the red channel over the closed texels of a bake,
// reduced strip by strip. A texel without hit counts as 0, so the maximum
// never falls below 0.

#include <algorithm>

namespace Ond::Baking {

struct MinMaxPair
{
    float min = 3.4028235e+38f;
    float max = 0.0f;

    void add(float value)
    {
        min = std::min(min, value);
        max = std::max(max, value);
    }
    void merge(const MinMaxPair& other)
    {
        min = std::min(min, other.min);
        max = std::max(max, other.max);
    }
    static void reduce(MinMaxPair& total, const MinMaxPair& part) { total.merge(part); }
};

} // namespace Ond::Baking
