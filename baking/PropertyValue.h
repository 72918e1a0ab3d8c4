#pragma once
// The value cell of a property and the small value types it can hold.

#include <string>
#include <variant>

namespace Ond::Baking {

// Two ints ordered component by component, for sizes and tiles.
struct ComparableInt2
{
    int x = 0;
    int y = 0;

    friend bool operator==(const ComparableInt2& a, const ComparableInt2& b) { return a.x == b.x && a.y == b.y; }
    friend bool operator!=(const ComparableInt2& a, const ComparableInt2& b) { return !(a == b); }
    // Component-wise: a <= b only if every component is.
    friend bool operator<=(const ComparableInt2& a, const ComparableInt2& b) { return a.x <= b.x && a.y <= b.y; }
    friend bool operator>=(const ComparableInt2& a, const ComparableInt2& b) { return b <= a; }
};

// A colour as four ints: red, green, blue, alpha.
struct ComparableColorInt4
{
    int r = 0;
    int g = 0;
    int b = 0;
    int a = 0;

    friend bool operator==(const ComparableColorInt4& p, const ComparableColorInt4& q)
    {
        return p.r == q.r && p.g == q.g && p.b == q.b && p.a == q.a;
    }
    friend bool operator!=(const ComparableColorInt4& p, const ComparableColorInt4& q) { return !(p == q); }
    friend bool operator<=(const ComparableColorInt4& p, const ComparableColorInt4& q)
    {
        return p.r <= q.r && p.g <= q.g && p.b <= q.b && p.a <= q.a;
    }
    friend bool operator>=(const ComparableColorInt4& p, const ComparableColorInt4& q) { return q <= p; }
};

// int for ints and enum indices, bool, float, the pair and colour types, and a
// UTF-8 path.
using PropertyValue = std::variant<int, ComparableInt2, ComparableColorInt4, float, bool, std::string>;

} // namespace Ond::Baking
