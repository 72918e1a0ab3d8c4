#pragma once
// Whether a bake of a given map size can fit in the memory the process may
// still use, asked before anything is allocated: past that point the kernel
// would end the process without a word.

#include <QString>

#include <cstdint>

namespace ProgramCommand {

// Bytes a bake of a 2^widthExponent by 2^heightExponent map needs at its
// peak, as measured on the bakers: the float result, its post-process copies
// and the written image. Saturates instead of overflowing.
double bakeMemoryEstimate(int widthExponent, int heightExponent);

// Bytes the process may still allocate: the smallest of the memory the
// system has available (with swap), the address-space and data limits, and
// the limit of the process's control group. Zero if none can be read.
uint64_t availableMemory();

// Empty if the map fits; otherwise the error text for the log.
QString checkBakeMemory(int widthExponent, int heightExponent, uint64_t available);

} // namespace ProgramCommand
