#include "scene/graph/Revision.h"

#include <atomic>

namespace Ond::SceneGraph {

namespace {
// Relaxed: values are compared for equality only, and no order across
// threads is promised.
std::atomic<uint64_t> revisionCounter{0};
}

uint64_t nextRevision()
{
    return revisionCounter.fetch_add(1, std::memory_order_relaxed) + 1;
}

uint64_t currentRevision()
{
    return revisionCounter.load(std::memory_order_relaxed);
}

} // namespace Ond::SceneGraph
