#pragma once
// The process-wide revision counter. Each mutation of a Mesh::Data and each
// change of a Scene's entity lists stores a new value, which caches compare
// to decide whether a derived result is still valid. Values are only
// compared for equality; nothing relies on them increasing across threads.

#include <cstdint>

namespace Ond::SceneGraph {

// Advances the counter and returns the new value.
uint64_t nextRevision();
// The last value handed out.
uint64_t currentRevision();

} // namespace Ond::SceneGraph
