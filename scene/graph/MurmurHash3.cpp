#include "scene/graph/MurmurHash3.h"

namespace Ond::SceneGraph {

namespace {

constexpr uint32_t c1 = 0xcc9e2d51u;
constexpr uint32_t c2 = 0x1b873593u;

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

// Blocks are read in little-endian order, whatever the machine.
inline uint32_t readBlock(const unsigned char* p)
{
    return uint32_t(p[0]) | (uint32_t(p[1]) << 8) | (uint32_t(p[2]) << 16) | (uint32_t(p[3]) << 24);
}

inline uint32_t mixBlock(uint32_t h1, uint32_t k1)
{
    k1 *= c1;
    k1 = rotl32(k1, 15);
    k1 *= c2;
    h1 ^= k1;
    h1 = rotl32(h1, 13);
    return h1 * 5 + 0xe6546b64u;
}

} // namespace

void MurmurHash3x86_32::update(const void* data, size_t length)
{
    const auto* bytes = static_cast<const unsigned char*>(data);
    m_length += length;

    // Complete a block left over from the previous piece.
    while (m_pendingSize > 0 && m_pendingSize < 4 && length > 0) {
        m_pending[m_pendingSize++] = *bytes++;
        --length;
    }
    if (m_pendingSize == 4) {
        m_h1 = mixBlock(m_h1, readBlock(m_pending));
        m_pendingSize = 0;
    }

    const size_t blockCount = length / 4;
    uint32_t h1 = m_h1;
    for (size_t i = 0; i < blockCount; ++i)
        h1 = mixBlock(h1, readBlock(bytes + i * 4));
    m_h1 = h1;

    for (size_t i = blockCount * 4; i < length; ++i)
        m_pending[m_pendingSize++] = bytes[i];
}

uint32_t MurmurHash3x86_32::finish() const
{
    uint32_t h1 = m_h1;
    uint32_t k1 = 0;
    switch (m_pendingSize) {
    case 3:
        k1 ^= uint32_t(m_pending[2]) << 16;
        [[fallthrough]];
    case 2:
        k1 ^= uint32_t(m_pending[1]) << 8;
        [[fallthrough]];
    case 1:
        k1 ^= uint32_t(m_pending[0]);
        k1 *= c1;
        k1 = rotl32(k1, 15);
        k1 *= c2;
        h1 ^= k1;
    }
    // The length is mixed in as the published code does: as a 32-bit value.
    h1 ^= uint32_t(m_length);
    return fmix32(h1);
}

uint32_t murmurHash3_x86_32(const void* data, size_t length, uint32_t seed)
{
    MurmurHash3x86_32 hash(seed);
    hash.update(data, length);
    return hash.finish();
}

} // namespace Ond::SceneGraph
