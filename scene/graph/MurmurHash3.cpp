#include "scene/graph/MurmurHash3.h"

#include <cstring>

namespace Ond::SceneGraph {

namespace {

inline uint32_t rotl32(uint32_t x, int r)
{
    return (x << r) | (x >> (32 - r));
}

inline uint32_t fmix32(uint32_t h)
{
    h ^= h >> 16;
    h *= 0x85ebca6bu;
    h ^= h >> 13;
    h *= 0xc2b2ae35u;
    h ^= h >> 16;
    return h;
}

} // namespace

uint32_t murmurHash3_x86_32(const void* data, size_t length, uint32_t seed)
{
    const auto* bytes = static_cast<const unsigned char*>(data);
    const size_t blockCount = length / 4;
    constexpr uint32_t c1 = 0xcc9e2d51u;
    constexpr uint32_t c2 = 0x1b873593u;

    uint32_t h1 = seed;
    for (size_t i = 0; i < blockCount; ++i) {
        // Blocks are read in little-endian order, whatever the machine.
        const unsigned char* p = bytes + i * 4;
        uint32_t k1 = uint32_t(p[0]) | (uint32_t(p[1]) << 8) | (uint32_t(p[2]) << 16) | (uint32_t(p[3]) << 24);
        k1 *= c1;
        k1 = rotl32(k1, 15);
        k1 *= c2;
        h1 ^= k1;
        h1 = rotl32(h1, 13);
        h1 = h1 * 5 + 0xe6546b64u;
    }

    const unsigned char* tail = bytes + blockCount * 4;
    uint32_t k1 = 0;
    switch (length & 3) {
    case 3:
        k1 ^= uint32_t(tail[2]) << 16;
        [[fallthrough]];
    case 2:
        k1 ^= uint32_t(tail[1]) << 8;
        [[fallthrough]];
    case 1:
        k1 ^= uint32_t(tail[0]);
        k1 *= c1;
        k1 = rotl32(k1, 15);
        k1 *= c2;
        h1 ^= k1;
    }

    // The length is mixed in as the published code does: as a 32-bit value.
    h1 ^= uint32_t(length);
    return fmix32(h1);
}

} // namespace Ond::SceneGraph
