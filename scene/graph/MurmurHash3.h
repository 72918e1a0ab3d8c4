#pragma once
// MurmurHash3, x86 32-bit variant, as published. Used for file content
// hashes and for mesh ids (the hash of an entity's name stem, seed 0).

#include <cstddef>
#include <cstdint>

namespace Ond::SceneGraph {

uint32_t murmurHash3_x86_32(const void* data, size_t length, uint32_t seed = 0);

// The same hash fed in pieces of any size, so that a large file need not be
// held in memory whole. The result equals murmurHash3_x86_32 over the
// concatenated pieces.
class MurmurHash3x86_32
{
public:
    explicit MurmurHash3x86_32(uint32_t seed = 0) : m_h1(seed) {}

    void update(const void* data, size_t length);
    uint32_t finish() const;

private:
    uint32_t m_h1;
    uint64_t m_length = 0;
    unsigned char m_pending[4] = {0, 0, 0, 0};
    size_t m_pendingSize = 0;
};

} // namespace Ond::SceneGraph
