#pragma once
// A bit set over an integer. Render flags use it: importers set 0x40000000,
// the bakers mark selected parts with bit 31, and a filter of all ones means
// "no filter".

#include <type_traits>

namespace Ond::SceneGraph {

template <typename T>
class BitField
{
    static_assert(std::is_integral<T>::value, "BitField needs an integer type");

public:
    constexpr BitField(T value = T(0)) : m_value(value) {}

    constexpr T value() const { return m_value; }
    constexpr operator T() const { return m_value; }

    constexpr bool isAllOnes() const { return m_value == T(~T(0)); }
    constexpr bool testAny(T mask) const { return (m_value & mask) != T(0); }
    constexpr bool testAll(T mask) const { return (m_value & mask) == mask; }

    void set(T mask, bool on = true) { m_value = on ? T(m_value | mask) : T(m_value & ~mask); }

    constexpr bool operator==(BitField other) const { return m_value == other.m_value; }
    constexpr bool operator!=(BitField other) const { return m_value != other.m_value; }

private:
    T m_value;
};

// What an importer or a generator gives a new part.
constexpr int DefaultRenderFlags = 0x40000000;
// The bakers mark selected parts with the sign bit.
constexpr int SelectedRenderFlag = int(0x80000000u);
// A filter that lets everything through.
constexpr int AllRenderFlags = ~0;

} // namespace Ond::SceneGraph
