#pragma once
// MurmurHash3, x86 32-bit variant, as published. Used for file content
// hashes and for mesh ids (the hash of an entity's name stem, seed 0).

#include <cstddef>
#include <cstdint>

namespace Ond::SceneGraph {

uint32_t murmurHash3_x86_32(const void* data, size_t length, uint32_t seed = 0);

} // namespace Ond::SceneGraph
